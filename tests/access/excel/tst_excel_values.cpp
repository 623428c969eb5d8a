// The pieces below the sheets: numbers, formats, dates, texts across records, the grid of cells.
#include <cmath>
#include <map>
#include <random>

#include "access/formats/excel/biff_text.h"
#include "access/formats/excel/cell_records.h"
#include "access/formats/excel/digest.h"
#include "access/formats/excel/number_format.h"
#include "access/formats/excel/shared_strings.h"
#include "access/formats/excel/sheet_read.h"
#include "access/formats/sheet/cell_grid.h"
#include "access/formats/sheet/serial_date.h"
#include "tests/access/excel/excel_testing.h"

using namespace velnor;
using namespace velnor::excel_testing;
using excel::classOfBuiltInFormat, excel::classOfFormat, excel::numberOfRk, excel::rkOfNumber;
using excel::Digest, excel::md5, excel::Rc4;
using excel::extendSharedStrings, excel::readSharedStrings, excel::RecordList, excel::SharedStrings,
    excel::UnicodeReader;
using sheet::Cell;
using sheet::CellKind;

TEST(ExcelValues, smallNumbersAreKeptInFourBytesExactlyOrNotAtAll)
{
    std::mt19937 random(5);
    std::vector<double> numbers{0,      1,       -1,        0.01,       123.45,      -536870912.0,
                                1e300,  0.1,     1.0 / 3,   536870911,  536870912.0, 5368709.11,
                                -0.005, 1234567, 9999999.5, 1073741824, 0.5,         -12.25};
    for (int i = 0; i < 20000; ++i)
        numbers.push_back(static_cast<double>(random()) / (i % 2 ? 100.0 : 65536.0));
    int kept = 0;
    for (const double number : numbers)
        if (const auto rk = rkOfNumber(number)) {
            EXPECT_EQ(numberOfRk(*rk), number);
            ++kept;
        }
    EXPECT_GT(kept, 100);
    EXPECT_TRUE(rkOfNumber(12.5));
    EXPECT_TRUE(rkOfNumber(1.01));
    EXPECT_FALSE(rkOfNumber(1.0 / 3));
    EXPECT_EQ(numberOfRk(0xFFFFFFFE), -1);    // an integer, all bits set
    EXPECT_EQ(numberOfRk(0x3FF00001), 0.01);  // 1.0, divided by 100
    EXPECT_TRUE(std::signbit(numberOfRk(*rkOfNumber(-0.0))));
}

TEST(ExcelValues, formatsAreToldApartByTheirText)
{
    const auto kind = [](std::string_view text) { return classOfFormat(text).kind; };
    for (const char* text :
         {"yyyy-mm-dd", "d/m/yy", "h:mm AM/PM", "[h]:mm", "mm:ss.0", "[$-409]d-mmm-yy;@",
          "yyyy\"year\"", "dddd, mmmm dd, yyyy", "[Red]m/d/yyyy", "hh:mm:ss.000"})
        EXPECT_EQ(kind(text), CellKind::Date) << text;
    for (const char* text : {"0.00", "#,##0", "General", "0.00E+00", "@", "# ?/?", "\"dd\"0",
                             "0\\d", "0_d", "[Red]0", "0 \"years\"", "0.0 \"h\"", ""})
        EXPECT_EQ(kind(text), CellKind::Number) << text;
    for (const char* text : {"$#,##0.00", "\"$\"0", "\\$0", "[$\xE2\x82\xAC-407]0.00", "0 \xC2\xA3",
                             "0;-\xE2\x82\xAC 0"})
        EXPECT_EQ(kind(text), CellKind::Currency) << text;
    EXPECT_TRUE(classOfFormat("yyyy h:mm").time);
    EXPECT_FALSE(classOfFormat("yyyy-mm-dd").time);
    EXPECT_EQ(classOfBuiltInFormat(14).kind, CellKind::Date);
    EXPECT_EQ(classOfBuiltInFormat(7).kind, CellKind::Currency);
    EXPECT_EQ(classOfBuiltInFormat(4).kind, CellKind::Number);
}

TEST(ExcelValues, datesOfBothSystemsComeAndGo)
{
    const auto iso = [](double serial, bool date1904) {
        std::string text;
        if (const auto date = sheet::dateOfSerial(serial, date1904))
            appendIsoDate(text, *date);
        return text;
    };
    EXPECT_EQ(iso(1, false), "1900-01-01");
    EXPECT_EQ(iso(59, false), "1900-02-28");
    EXPECT_EQ(iso(60, false), "1900-02-28");  // a day that never was
    EXPECT_EQ(iso(61, false), "1900-03-01");
    EXPECT_EQ(iso(37986.5, false), "2003-12-31 12:00:00");
    EXPECT_EQ(iso(0, true), "1904-01-01");
    EXPECT_EQ(iso(0.5, false), "1899-12-30 12:00:00");
    EXPECT_EQ(iso(37985.9999999, false), "2003-12-31");  // the last moment of a day is the next one
    EXPECT_EQ(iso(-1, false), "");
    EXPECT_EQ(iso(2958466, false), "");
    for (const bool date1904 : {false, true})
        for (const char* text : {"1904-01-01", "2004-02-29 23:59:59", "9999-12-31", "1950-06-01"}) {
            const auto serial = sheet::serialOfDate(parseDate(text).value(), date1904);
            ASSERT_TRUE(serial) << text;
            EXPECT_EQ(iso(*serial, date1904), text);
        }
    for (const char* text : {"1900-01-01", "1900-02-28", "1900-03-01"})
        EXPECT_EQ(iso(sheet::serialOfDate(parseDate(text).value(), false).value(), false), text);
    EXPECT_FALSE(sheet::serialOfDate(parseDate("1899-12-31").value(), false));
    EXPECT_FALSE(sheet::serialOfDate(parseDate("1850-01-01").value(), false));
    EXPECT_FALSE(sheet::serialOfDate(parseDate("1903-12-31").value(), true));
}

TEST(ExcelValues, everySplitOfATextReadsBack)
{
    // Texts of every length and both widths, so that each kind of split comes.
    std::vector<std::string> texts;
    for (int i = 0; i < 3000; ++i) {
        std::string text;
        for (int n = 0; n < i % 601; ++n)
            text += i % 3 == 0 ? "\xD0\x96" : i % 3 == 1 ? "\xC3\xA4" : "x";
        if (i % 7 == 0)
            text += "\xF0\x9F\x98\x80";  // two units
        texts.push_back(text);
    }
    const std::vector<std::string_view> views(texts.begin(), texts.end());
    const auto whole = extendSharedStrings({}, 0, 3000, views);
    ASSERT_GT(whole.size(), 50u);
    std::vector<excel::Bytes> parts;
    for (const RecordList::Entry& entry : whole) {
        parts.push_back(entry.data());
        EXPECT_LE(entry.data().size(), 8224u);
    }
    sheet::TextPool pool;
    const SharedStrings read = readSharedStrings(parts, pool);
    ASSERT_EQ(read.count, texts.size());
    EXPECT_FALSE(read.cutOff);
    for (std::uint32_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(pool.text(i), texts[i]) << i;

    // The same added in two steps: old bytes stay, the numbers go on.
    const auto first = extendSharedStrings({}, 0, 10, std::span(views).first(1000));
    std::vector<excel::Bytes> firstParts;
    for (const RecordList::Entry& entry : first)
        firstParts.push_back(entry.data());
    const auto both = extendSharedStrings(firstParts, 1000, 10, std::span(views).subspan(1000));
    parts.clear();
    for (const RecordList::Entry& entry : both)
        parts.push_back(entry.data());
    sheet::TextPool again;
    ASSERT_EQ(readSharedStrings(parts, again).count, texts.size());
    for (std::uint32_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(again.text(i), texts[i]) << i;
}

TEST(ExcelValues, aTextMayChangeItsWidthInTheMiddle)
{
    const Bytes first{4, 0, 0, 'a', 'b'};
    const Bytes second{1, 0x16, 0x04, 0x17, 0x04};
    UnicodeReader reader({first, second}, 0);
    std::string_view text;
    ASSERT_TRUE(reader.next(text));
    EXPECT_EQ(text, "ab\xD0\x96\xD0\x97");
    EXPECT_FALSE(reader.next(text));
    EXPECT_FALSE(reader.cutOff());

    const Bytes cut{9, 0, 0, 'a'};
    UnicodeReader broken({cut}, 0);
    EXPECT_FALSE(broken.next(text));
    EXPECT_TRUE(broken.cutOff());
}

TEST(ExcelValues, digestsAreThoseOfTheStandard)
{
    const auto hex = [](std::string_view text) {
        const Digest digest =
            md5({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        std::string out;
        appendHex(out, digest);
        return out;
    };
    EXPECT_EQ(hex(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hex("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(
        hex("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
        "57edf4a22be3c955ac49da2e2107b67a");
    const std::uint8_t key[] = {'K', 'e', 'y'};
    Rc4 cipher(key);
    EXPECT_EQ(cipher.next() ^ 'P', 0xBB);
    EXPECT_EQ(cipher.next() ^ 'l', 0xF3);
}

TEST(CellGrid, cellsPutInAnyOrderAreThoseOfAMap)
{
    std::mt19937 random(9);
    for (const unsigned rows : {1u, 5u, 400u}) {
        sheet::CellGrid grid;
        std::map<std::pair<std::uint32_t, std::uint16_t>, double> wanted;
        for (int i = 0; i < 6000; ++i) {
            const auto row = static_cast<std::uint32_t>(random() % rows);
            const auto column = static_cast<std::uint16_t>(random() % 60);
            grid.change(row, Cell::ofNumber(CellKind::Number, column, i));
            wanted[{row, column}] = i;
        }
        std::size_t met = 0;
        for (std::uint32_t row = 0; row < rows; ++row) {
            int last = -1;
            for (const Cell& cell : grid.row(row)) {
                EXPECT_GT(static_cast<int>(cell.column), last);
                last = cell.column;
                EXPECT_EQ(cell.number, wanted.at({row, cell.column}));
                ++met;
            }
        }
        EXPECT_EQ(met, wanted.size());
        ASSERT_EQ(grid.changes().size(), wanted.size());
        EXPECT_EQ(grid.find(rows, 0), nullptr);
        const auto used = grid.usedArea();
        ASSERT_TRUE(used);
        EXPECT_EQ(used->lastRow, wanted.rbegin()->first.first);
    }
}
