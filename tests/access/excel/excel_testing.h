// tests/access/excel/excel_testing.h - workbooks put together record by record, and read through
// the driver.
#pragma once

#include <cstring>

#include "access/formats/excel/excel_driver.h"
#include "tests/access/support/store_testing.h"

namespace velnor::excel_testing {

using namespace store_testing;
using Row = std::vector<ValueView>;

inline constexpr const char* kFile = "C:\\T.XLS";

inline void word(Bytes& out, unsigned value)
{
    out.push_back(static_cast<std::uint8_t>(value));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}
inline Bytes words(std::initializer_list<unsigned> values)
{
    Bytes out;
    for (const unsigned value : values)
        word(out, value);
    return out;
}

/// A bare workbook stream of version 8 or 5 with one sheet "Sheet1".
class BookFile {
public:
    explicit BookFile(int version = 8) : eight_(version == 8) { bof(globals_, 5); }
    /// A record of the globals.
    BookFile& global(unsigned type, const Bytes& data)
    {
        put(globals_, type, data);
        return *this;
    }
    /// A record of the sheet.
    BookFile& record(unsigned type, const Bytes& data)
    {
        put(sheet_, type, data);
        return *this;
    }
    /// `count` cell formats; the last ones have these number formats.
    BookFile& formats(int count, const std::vector<unsigned>& last)
    {
        for (int i = 0; i < count; ++i) {
            const int n = i - (count - static_cast<int>(last.size()));
            Bytes xf(eight_ ? 20 : 16);
            if (n >= 0)
                xf[2] = static_cast<std::uint8_t>(last[static_cast<std::size_t>(n)]);
            xf[4] = i < 15 ? 0xF5 : 1;
            xf[5] = i < 15 ? 0xFF : 0;
            global(0xE0, xf);
        }
        return *this;
    }
    BookFile& text(unsigned row, unsigned column, std::string_view ascii, unsigned xf = 15)
    {
        Bytes data = words({row, column, xf, static_cast<unsigned>(ascii.size())});
        if (eight_)
            data.push_back(0);
        data.insert(data.end(), ascii.begin(), ascii.end());
        return record(0x204, data);
    }
    BookFile& number(unsigned row, unsigned column, double value, unsigned xf = 15)
    {
        Bytes data = words({row, column, xf});
        data.resize(14);
        std::memcpy(data.data() + 6, &value, 8);
        return record(0x203, data);
    }
    /// A formula with a number as its result; its tokens are the constant 1.
    BookFile& formula(unsigned row, unsigned column, double result)
    {
        Bytes data = words({row, column, 15});
        data.resize(14);
        std::memcpy(data.data() + 6, &result, 8);
        for (const unsigned value : {0u, 0u, 0u, 3u})
            word(data, value);
        data.insert(data.end(), {0x1E, 1, 0});
        return record(6, data);
    }
    /// A name for an area of the only sheet.
    BookFile& name(std::string_view text, unsigned firstRow, unsigned lastRow, unsigned firstColumn,
                   unsigned lastColumn)
    {
        global(0x1AE, {1, 0, 1, 4});        // SUPBOOK: this workbook, one sheet
        global(0x17, words({1, 0, 0, 0}));  // EXTERNSHEET: the sheet
        Bytes data = words({0, static_cast<unsigned>(text.size()) << 8, 11, 0, 0, 0, 0});
        data.push_back(0);
        data.insert(data.end(), text.begin(), text.end());
        data.push_back(0x3B);
        for (const unsigned value : {0u, firstRow, lastRow, firstColumn, lastColumn})
            word(data, value);
        return global(0x18, data);
    }
    Bytes end()
    {
        Bytes name{'S', 'h', 'e', 'e', 't', '1'};
        Bytes bound(6);
        bound.push_back(6);
        if (eight_)
            bound.push_back(0);
        bound.insert(bound.end(), name.begin(), name.end());
        const std::size_t position = globals_.size() + 4 + bound.size() + 4;
        for (int i = 0; i < 4; ++i)
            bound[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(position >> (8 * i));
        global(0x85, bound);
        put(globals_, 0x0A, {});
        Bytes all = globals_;
        bof(all, 0x10);
        all.insert(all.end(), sheet_.begin(), sheet_.end());
        put(all, 0x0A, {});
        return all;
    }

private:
    void bof(Bytes& out, unsigned kind) const
    {
        put(out, 0x809,
            eight_ ? words({0x600, kind, 0, 0, 0, 0, 0, 0}) : words({0x500, kind, 0, 0}));
    }
    static void put(Bytes& out, unsigned type, const Bytes& data)
    {
        word(out, type);
        word(out, static_cast<unsigned>(data.size()));
        out.insert(out.end(), data.begin(), data.end());
    }

    bool eight_;
    Bytes globals_, sheet_;
};

inline std::unique_ptr<Store> openStore(FileSystem& files, bool readOnly = false,
                                        std::string options = {}, std::string password = {})
{
    static const excel::ExcelDriver driver;
    OpenRequest request;
    request.name = kFile;
    request.connectWord = "Excel 8.0;";
    request.readOnly = readOnly;
    request.options = std::move(options);
    request.password = std::move(password);
    return driver.open(files, request);
}

inline void createFile(FileSystem& files, const char* word = "Excel 8.0;")
{
    CreateRequest request;
    request.name = kFile;
    request.connectWord = word;
    excel::ExcelDriver().create(files, request);
}

inline ValueView text(std::string_view t)
{
    return ValueView::text(t);
}
inline ValueView day(const char* iso)
{
    return ValueView::date(parseDate(iso).value());
}

}  // namespace velnor::excel_testing
