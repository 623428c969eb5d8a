// Worksheets as tables: sheets, names, cells of every kind, older and newer files.
#include "tests/access/lotus/lotus_testing.h"

using namespace velnor;
using namespace velnor::lotus_testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class LotusRead : public ::testing::Test {
protected:
    Store& open(const Bytes& bytes, std::string options = {})
    {
        files.put(kFile, bytes);
        store = openStore(files, true, std::move(options));
        return *store;
    }
    Lines read(const Bytes& bytes, std::string_view table = "A:")
    {
        return rowsOf(open(bytes), table);
    }
    MemoryFileSystem files;
    std::unique_ptr<Store> store;
};

/// A header in row 0: A, B, C ... over `columns`.
WkFile headed(unsigned columns, unsigned version = 0x1002)
{
    WkFile file(version);
    for (unsigned i = 0; i < columns; ++i)
        file.label(0, i, std::string(1, static_cast<char>('A' + i)));
    return file;
}

constexpr std::uint8_t kRepeat = 0xC0, kPlain = 0x40;

}  // namespace

TEST_F(LotusRead, cellsOfEveryKind)
{
    WkFile file = headed(6);
    file.label(1, 0, "text").whole(1, 1, -5).cell(0x17, 1, 2, real(1.25));
    file.cell(0x25, 1, 3, {0x12, 0x32, 0x09, 0x00}).cell(0x27, 1, 4, doubleBytes(2.5));
    file.cell(0x28, 1, 5, doubleBytes(3.5));
    file.cell(0x14, 2, 1, {}).cell(0x15, 2, 2, {}).cell(0x19, 2, 3, real(7));
    EXPECT_EQ(read(file.end()), (Lines{"'text' -5 1.25 94.16 2.5 3.5", "- - - 7 - -"}));
    EXPECT_THAT(findingsOf(*store),
                ElementsAre("cell A:B1: it is outside the area that the file tells"));
}

TEST_F(LotusRead, textsOfFormulasBelongToThem)
{
    Bytes textMark(10), ones(10, 0xFF), errorMark(10);
    textMark[7] = 0xE0;
    textMark[8] = textMark[9] = errorMark[8] = errorMark[9] = 0xFF;
    errorMark[7] = 0xC0;
    WkFile file = headed(4);
    file.cell(0x19, 1, 0, textMark).cell(0x1A, 1, 0, {'o', 'n', 'e', 0});
    file.cell(0x19, 1, 1, ones).cell(0x1A, 1, 1, {'t', 'w', 'o', 0});
    file.cell(0x19, 1, 2, textMark).cell(0x19, 1, 3, errorMark);
    EXPECT_EQ(read(file.end()), (Lines{"'one' 'two' - -"}));
}

TEST_F(LotusRead, sheetsAndNamedRangesAreTables)
{
    WkFile file;
    file.sheetName(0, "First").sheetName(2, "Third one");
    file.range("BLOCK", 1, 2, 1, 3, 2).range("ONEROW", 1, 2, 1, 2, 2).range("\\M", 1, 2, 1, 9, 2);
    file.label(0, 0, "A").whole(1, 0, 1);
    file.label(2, 1, "X", 1).label(2, 2, "Y", 1).whole(3, 1, 7, 1).whole(3, 2, 8, 1);
    file.whole(9, 9, 9, 1);
    EXPECT_EQ(tablesOf(open(file.end())), (Lines{"First:", "B:", "Third one:", "BLOCK"}));
    EXPECT_EQ(rowsOf(*store, "block"), (Lines{"7 8"}));
    EXPECT_EQ(rowsOf(*store, "First"), (Lines{"1"}));
    EXPECT_THAT(store->layout("Third one:").fields, IsEmpty());
    EXPECT_EQ(errorOf([&] { store->layout("A:"); }), 3078);
    EXPECT_EQ(errorOf([&] { store->layout("ONEROW"); }), 3078);
}

TEST_F(LotusRead, datesAndAmountsAreToldByTheRowsFormats)
{
    WkFile file;
    // Row 1: default, date, currency, date, then nothing; row 2 copies it; row 3 has a format that
    // means the sheet's default, which is a date.
    file.record(0x13, {0, 0,      1,    0, 0xFF, 0,      0,    kPlain, 0xF9, 0,
                       0, kPlain, 0xA2, 0, 0,    kPlain, 0xFA, 0,      0,    kPlain});
    file.record(0x13, {0, 2, 2, 0, 0, 0, 1, 0});
    for (unsigned i = 0; i < 6; ++i)
        file.label(0, i, std::string(1, static_cast<char>('A' + i)));
    for (unsigned row = 1; row <= 2; ++row)
        for (unsigned i = 0; i < 6; ++i)
            file.whole(row, i, 100);
    const Lines rows{"100 1900-04-09 100 1900-04-09 100 100",
                     "100 1900-04-09 100 1900-04-09 100 100"};
    EXPECT_EQ(read(file.end()), rows);
    EXPECT_EQ(fieldsOf(*store, "A:"),
              (Lines{"A Double", "B Date", "C Currency", "D Date", "E Double", "F Double"}));
}

TEST_F(LotusRead, repeatedEntriesAndTheSheetsDefault)
{
    WkFile file;
    file.record(0x13, {0, 1, 0, 0, 0x79, 0x40, 4, 0x40, 0x27, 0, 0, 0});  // default: dates
    file.record(0x13, {0, 0, 1, 0, 0xF1, 0, 0, kRepeat, 1, 0xFF, 0, 0, kPlain});
    for (unsigned i = 0; i < 4; ++i)
        file.label(0, i, std::string(1, static_cast<char>('A' + i))).whole(1, i, 60);
    EXPECT_EQ(read(file.end()), (Lines{"60 60 1900-02-28 1900-02-28"}));
}

TEST_F(LotusRead, formatsMayStandBehindTheirCells)
{
    WkFile file = headed(1);
    file.whole(1, 0, 61).record(0x13, {0, 0, 1, 0, 0xF2, 0, 0, kPlain});
    EXPECT_EQ(read(file.end()), (Lines{"1900-03-01"}));
}

TEST_F(LotusRead, cellsInAnyOrderTheLastOneCounts)
{
    WkFile file = headed(2);
    file.whole(2, 1, 4).whole(2, 0, 3).whole(1, 0, 1).whole(1, 1, 2).whole(2, 1, 9);
    EXPECT_EQ(read(file.end()), (Lines{"1 2", "3 9"}));
    EXPECT_THAT(findingsOf(*store),
                ::testing::Contains("cell A:B3: it is there twice; the last one counts"));
}

TEST_F(LotusRead, whatStandsBehindTheEndIsNotRead)
{
    Bytes bytes = headed(1).whole(1, 0, 1).end();
    const Bytes more = WkFile().whole(2, 0, 2).bytes;
    bytes.insert(bytes.end(), more.begin(), more.end());
    EXPECT_EQ(read(bytes), (Lines{"1"}));
}

TEST_F(LotusRead, aFileCutShortGivesWhatWasReadAndIsNotWritten)
{
    Bytes bytes = headed(1).whole(1, 0, 1).whole(2, 0, 2).bytes;
    bytes.pop_back();
    EXPECT_EQ(read(bytes), (Lines{"1"}));
    EXPECT_FALSE(store->layout("A:").updatable);
    EXPECT_THAT(findingsOf(*store), ::testing::Contains("file: its end is missing"));
    store.reset();
    const auto writing = openStore(files);
    EXPECT_EQ(errorOf([&] { writing->writer("A:"); }), 3027);
}

TEST_F(LotusRead, olderWorksheets)
{
    for (const unsigned version : {0x0404u, 0x0406u}) {
        WkFile file(version);
        file.record(0x0B, [] {
            Bytes name(24);
            std::memcpy(name.data(), "PART", 4);
            name[18] = 1;  // rows 1 to 2
            name[20] = 1;
            name[22] = 2;
            return name;
        }());
        for (unsigned i = 0; i < 4; ++i)
            file.oldCell(0x0F, 0xFF, 0, i, {'\'', static_cast<std::uint8_t>('A' + i), 0});
        file.oldCell(0x0D, 0x71, 1, 0, {0xFE, 0xFF}).oldCell(0x0E, 0xF2, 1, 1, doubleBytes(36526));
        file.oldCell(0x10, 0x22, 1, 2, doubleBytes(1.5)).oldCell(0x0F, 0xFF, 1, 3, {'"', 0x81, 0});
        file.oldCell(0x0C, 0xFF, 2, 0, {}).oldCell(0x10, 0xFF, 2, 3, doubleBytes(0.0 / 0.0));
        file.oldCell(0x33, 0xFF, 2, 3, {'f', 't', 0});
        EXPECT_EQ(read(file.end()), (Lines{"-2 2000-01-01 1.5 'ü'", "- - - 'ft'"}));
        EXPECT_EQ(tablesOf(*store), (Lines{"A:", "PART"}));
        EXPECT_FALSE(store->layout("A:").updatable);
    }
}

TEST_F(LotusRead, newerFilesAreReadWithTheirSheetNames)
{
    WkFile file(0x1005);
    file.record(0x23, {0xB1, 0x36, 0, 0, 'X', 0});  // another kind of record
    file.record(0x23, {0xB0, 0x36, 1, 0, 'S', '2', 0});
    file.label(0, 0, "A").whole(40000, 0, 3).label(0, 0, "B", 1).whole(1, 0, 4, 1);
    EXPECT_EQ(tablesOf(open(file.end())), (Lines{"A:", "S2:"}));
    EXPECT_EQ(store->recordCount("A:"), 40000);
    EXPECT_EQ(rowsOf(*store, "S2:"), (Lines{"4"}));
    EXPECT_FALSE(store->layout("A:").updatable);
}

TEST_F(LotusRead, whatIsNoWorksheetIsRefused)
{
    EXPECT_EQ(errorOf([&] { open({}); }), 3274);
    EXPECT_EQ(errorOf([&] { open({0, 0, 26}); }), 3274);
    EXPECT_EQ(errorOf([&] { open({0, 0, 5, 0, 0, 0x10, 4, 0, 0}); }), 3274);
    EXPECT_EQ(errorOf([&] { open({0xFF, 0, 2, 0, 4, 4}); }), 3274);
    EXPECT_EQ(errorOf([&] { open(WkFile(0x8007).end()); }), 3274);
    EXPECT_EQ(errorOf([&] {
                  open({0, 0, 2, 0, 1, 0x10, 1, 0, 0, 0});
              }),
              3274);  // another program's
    EXPECT_EQ(errorOf([&] { open(WkFile().record(2, Bytes(16)).end()); }), 3161);
    EXPECT_EQ(errorOf([&] { open(WkFile(0x0406).record(0x4B, Bytes(4)).end()); }), 3161);
}

TEST_F(LotusRead, oddRecordsAreSteppedOver)
{
    WkFile file = headed(1);
    for (const unsigned type :
         {0x09u, 0x13u, 0x16u, 0x17u, 0x18u, 0x19u, 0x1Au, 0x1Bu, 0x1Fu, 0x25u})
        for (unsigned size = 0; size < 5; ++size)
            file.record(type, Bytes(size));
    file.whole(1, 0, 1).whole(9000, 0, 1);
    EXPECT_EQ(read(file.end()), (Lines{"1"}));
}

TEST_F(LotusRead, cellsShowTheWholeSheet)
{
    WkFile file;
    file.record(0x13, {0, 0, 1, 0, 0xFF, 0, 0, kPlain, 0xF9, 0, 0, kPlain});
    file.label(1, 2, "x").whole(1, 1, 61);
    open(file.end(), "cells=yes");
    EXPECT_EQ(rowsOf(*store, "A:"), (Lines{"- - -", "- '1900-03-01' 'x'"}));
    EXPECT_EQ(fieldsOf(*store, "A:"), (Lines{"A Text", "B Text", "C Text"}));
}

TEST_F(LotusRead, manyFormatsAndSheetsStayInBounds)
{
    WkFile file = headed(1);
    for (unsigned i = 0; i < 60000; ++i)  // each claims 256 columns in nine bytes
        file.record(0x13, {static_cast<std::uint8_t>(i), 0, static_cast<std::uint8_t>(i),
                           static_cast<std::uint8_t>(i >> 8), 0xF9, 0, 0, kRepeat, 255});
    for (unsigned sheet = 0; sheet < 256; ++sheet)
        file.whole(8191, 255, 1, sheet);
    open(file.end());
    EXPECT_EQ(tablesOf(*store).size(), 256u);
    EXPECT_EQ(store->recordCount("IV:"), 0);
}
