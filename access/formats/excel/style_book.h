// access/formats/excel/style_book.h - the cell formats (XF) of a workbook that is written: finds or
// adds the one for a value.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "access/formats/excel/globals.h"
#include "access/formats/excel/record_list.h"
#include "access/layout.h"

namespace velnor::excel {

class StyleBook {
public:
    explicit StyleBook(const Globals& globals);

    /// The format of a cell that was never formatted.
    std::uint16_t plain() const { return plain_; }
    /// `base`, or a format like it that shows a cell's value as what it is: a date as a date (with
    /// its time when it has one), money with its sign, a number not as a date.
    std::uint16_t suited(std::uint16_t base, const sheet::Cell& cell);
    /// The format of blank cells below the header of a new table: it tells the field's type while
    /// the table holds no value.
    std::uint16_t blankOf(FieldType type);
    /// The field type that such a format stands for; nothing for a format that says none.
    static std::optional<FieldType> typeOfBlank(const Globals& globals, std::uint16_t xf);

    /// Adds what is new behind the old FORMAT and XF records.
    void addTo(RecordList& globals) const;

private:
    std::uint16_t withoutMark(std::uint16_t base, const sheet::Cell& cell);
    std::uint16_t withFormat(std::uint16_t base, int format);
    int formatOf(const std::string& text);
    int moneyFormat() const;
    int knownOr(const std::string& text, int builtIn) const;

    struct NewFormat {
        int index;
        std::string text;
    };

    const Globals& globals_;
    std::uint16_t plain_ = 0;
    std::vector<std::vector<std::uint8_t>> newXfs_;
    std::vector<FormatClass> newClasses_;
    std::vector<NewFormat> newFormats_;
    std::vector<bool> marks_;  // by XF: a mark of a blank cell, not to be seen on values
    std::map<std::pair<std::uint16_t, int>, std::uint16_t> made_;  // base and format: the XF

    Bytes xf(std::size_t index) const;
    FormatClass classOf(std::size_t index) const;
    FormatClass classOfFormatIndex(int format) const;
};

}  // namespace velnor::excel
