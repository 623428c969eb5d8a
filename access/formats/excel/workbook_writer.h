// access/formats/excel/workbook_writer.h - puts a workbook stream together anew from the old one.
//
// The only positions in a stream that others depend on are those of the sheets in BOUNDSHEET, of
// texts in EXTSST and of cells in INDEX and DBCELL. The first are set anew; the others, aids to
// speed, go.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "access/formats/excel/record_list.h"
#include "access/formats/excel/sheet_write.h"

namespace velnor::excel {

class WorkbookWriter {
public:
    /// `stream` and what `globals` views must stay. 3274 when the stream is damaged so that it
    /// could not be put together again.
    WorkbookWriter(Bytes stream, const Globals& globals);

    void edit(int sheet, SheetEdit& edit) { partOf(sheet).edit = &edit; }
    void clear(int sheet) { partOf(sheet).clear = true; }
    /// The texts of cells, and those that are new: they get the next numbers of the shared table.
    void texts(const TextNumbers& numbers, std::uint32_t oldCount,
               std::vector<std::string_view> added);
    /// Sets the last row of a name's area, which stands at `lastRowAt` of the old stream.
    void nameEnds(std::size_t lastRowAt, std::uint32_t row);
    void hideName(std::size_t lastRowAt);
    void addSheet(std::string_view name);
    void renameSheet(int sheet, std::string_view name);
    /// The sheet must be one that nothing refers to.
    void removeSheet(int sheet);
    /// Whether an area in a formula or a name may be on the sheet.
    bool refersTo(int sheet);

    /// Settles everything; returns the size of the stream, at least 4096.
    std::uint64_t plan();
    void write(StreamSink& sink);

private:
    struct Part {  // a substream behind the globals
        Bytes old;
        std::size_t at = 0;
        std::vector<std::uint8_t> made;
        SheetEdit* edit = nullptr;
        bool clear = false;
        bool gone = false;
        std::uint32_t position = 0;
    };

    Part& partOf(int sheet);
    RecordList::Entry& boundSheet(int sheet);
    RecordList::Entry& nameRecordAt(std::size_t place);
    void writePart(Part& part, StreamSink& sink, std::uint32_t& references);
    void placeSharedStrings(std::uint32_t references);
    std::vector<std::uint8_t> boundSheetData(std::string_view name) const;
    void countSheets(int change);
    void forgetSheetInNames(int sheet);
    void forgetSheetInPairs(int sheet);
    void keepWindowInRange();

    const Globals& globals_;
    StyleBook styles_;
    RecordList list_;
    std::vector<Part> parts_;
    std::vector<std::size_t> partOfSheet_;
    TextNumbers numbers_;
    std::uint32_t oldTexts_ = 0;
    std::vector<std::string_view> newTexts_;
    std::uint64_t size_ = 0;
};

/// A name that a sheet may have: 3125 for others.
void checkSheetName(std::string_view name);

}  // namespace velnor::excel
