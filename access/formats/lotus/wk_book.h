// access/formats/lotus/wk_book.h - a worksheet file in memory: its sheets with their cells, the
// names of ranges, the formats of rows. All but cells, names and formats stays in the file.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "access/formats/lotus/wk_format.h"
#include "access/formats/lotus/wk_records.h"
#include "access/formats/sheet/sheet_table.h"

namespace velnor::lotus {

/// The programs whose files these are, by the version word of BOF.
enum class WkVersion : std::uint16_t {
    Wks = 0x0404,
    Symphony = 0x0405,
    Wk1 = 0x0406,
    Wk3 = 0x1000,
    Wk4 = 0x1002,
    Lotus97 = 0x1003,
    Millennium = 0x1005,
};
/// "1-2-3 Release 4 and 5 (WK4)".
const char* versionWords(WkVersion version);

struct WkRange {
    std::string name;
    std::uint8_t sheet = 0;
    sheet::Area area;
    std::size_t record = 0;  ///< place among the records that name ranges
};

struct WkSheet {
    std::shared_ptr<sheet::Sheet> cells;
    std::string name;     ///< empty: it goes by its letter
    bool listed = false;  ///< it has a cell or a name
};

struct WkBook {
    WkVersion version = WkVersion::Wk4;
    std::uint8_t group = 1;  ///< of the file's plain high characters
    bool complete = false;   ///< EOF was there
    std::uint64_t bytes = 0;
    std::uint64_t tailBytes = 0;  ///< behind EOF
    std::size_t records = 0;
    std::map<std::uint8_t, WkSheet> sheets;  ///< sheet 0 is always there
    std::vector<WkRange> ranges;
    FormatTable formats;
    sheet::TextPool texts;

    bool old() const { return version < WkVersion::Wk3; }
    bool writeable() const { return version == WkVersion::Wk3 || version == WkVersion::Wk4; }
    std::uint32_t rows() const { return version > WkVersion::Wk4 ? 65536 : 8192; }
    WkSheet& sheet(std::uint8_t number);
    /// "Orders:", "B:".
    std::string tableName(std::uint8_t number) const;
};

/// Reads a file from end to end. 3274 for what is no worksheet, 3161 for an encrypted one.
std::unique_ptr<WkBook> readBook(File& file, const std::string& path);

// Parts of readBook.
void readOldBook(File& file, WkBook& book);
std::string_view textOf(const Record& record, std::size_t from);

}  // namespace velnor::lotus
