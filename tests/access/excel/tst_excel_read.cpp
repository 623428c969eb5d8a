// Workbooks as tables: which cells make a table, what its fields are called and of which type,
// which words of the connect string change that; formulas, names, damage, passwords.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/access/excel/excel_testing.h"

using namespace velnor;
using namespace velnor::excel_testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

/// A drive with one workbook.
class FilesWith {
public:
    explicit FilesWith(const Bytes& bytes) { files_.put(kFile, bytes); }
    operator FileSystem&() { return files_; }
    MemoryFileSystem* operator->() { return &files_; }

private:
    MemoryFileSystem files_;
};

/// Formats 16 a date, 17 money, 18 a moment; 15 is a plain one.
BookFile book(int version = 8)
{
    BookFile file(version);
    file.formats(19, {14, 7, 22});
    return file;
}

Bytes corpusFile(const std::string& name)
{
    const char* corpus = std::getenv("VELNOR_CORPUS");
    if (!corpus)
        return {};
    std::ifstream in(std::filesystem::path(corpus) / "xls" / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

TEST(ExcelRead, aTableBeginsAtTheFirstCellAndItsHeaderNamesTheFields)
{
    FilesWith files(book()
                        .text(2, 1, "NAME")
                        .text(2, 2, "AMOUNT")
                        .text(3, 1, "one")
                        .number(3, 2, 1.5)
                        .text(5, 1, "two")
                        .end());
    const auto store = openStore(files, true);
    EXPECT_THAT(tablesOf(*store), ElementsAre("Sheet1$"));
    EXPECT_THAT(fieldsOf(*store, "sheet1$"), ElementsAre("NAME Text", "AMOUNT Double"));
    EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre("'one' 1.5", "- -", "'two' -"));
    EXPECT_EQ(store->layout("Sheet1$").fields[0].size, 255);
    EXPECT_THAT(faultsOf(*store), ElementsAre());
    EXPECT_EQ(errorOf([&] { store->layout("Sheet2$"); }), 3078);
}

TEST(ExcelRead, headersBecomeNamesThatAFieldCanHave)
{
    FilesWith files(book()
                        .text(0, 0, "a.b!c[d]e`f")
                        .text(0, 1, " line\r\nbreak ")
                        .text(0, 2, "A#B$C(D)E'F")  // taken, blind to case
                        .number(0, 3, 2004)
                        .number(0, 4, 38046, 16)
                        .text(0, 6, std::string(70, 'x'))
                        .text(1, 6, "end")
                        .end());
    const auto store = openStore(files, true);
    EXPECT_THAT(fieldsOf(*store, "Sheet1$"),
                ElementsAre("a#b$c(d)e'f Text", "line break Text", "F3 Text", "2004 Text",
                            "2004-02-29 Text", "F6 Text", std::string(64, 'x') + " Text"));
}

TEST(ExcelRead, theKindOfMostCellsIsTheTypeAndTiesGoToNumbersFirst)
{
    BookFile file = book();
    for (unsigned c = 0; c < 6; ++c)
        file.text(0, c, std::string(1, static_cast<char>('A' + c)));
    for (unsigned r = 1; r <= 9; ++r) {
        if (r % 2)  // numbers and texts alternate: five to four in eight rows
            file.number(r, 0, r);
        else
            file.text(r, 0, "t");
        file.number(r, 1, 38046 + r, 16);
        file.number(r, 2, r, r == 1 ? 17 : 15);
        if (r == 9)
            file.text(r, 3, std::string(256, 'm'));
        else
            file.text(r, 3, "short");
        file.record(0x205, words({r, 4, 15, r % 2}));  // a Boolean
    }
    FilesWith files(file.end());
    const auto store = openStore(files, true);
    EXPECT_THAT(fieldsOf(*store, "Sheet1$"),
                ElementsAre("A Double", "B Date", "C Double", "D Memo", "E Boolean", "F Text"));
    EXPECT_EQ(rowsOf(*store, "Sheet1$")[0], "1 2004-03-01 1 'short' True -");
    EXPECT_EQ(rowsOf(*store, "Sheet1$")[1], "- 2004-03-02 2 'short' False -");
    EXPECT_EQ(store->recordCount("Sheet1$"), 9);
}

TEST(ExcelRead, connectWordsChangeHeaderSampleAndMixedColumns)
{
    BookFile file = book();
    file.text(0, 0, "N");
    for (unsigned r = 1; r <= 20; ++r)
        if (r <= 8)
            file.number(r, 0, r + 0.5);
        else
            file.text(r, 0, "text");
    const Bytes bytes = file.end();
    FilesWith files(bytes);
    EXPECT_THAT(fieldsOf(*openStore(files, true), "Sheet1$"), ElementsAre("N Double"));
    EXPECT_THAT(fieldsOf(*openStore(files, true, "TypeGuessRows=0"), "Sheet1$"),
                ElementsAre("N Text"));
    const auto noHeader = openStore(files, true, "HDR=No");
    EXPECT_THAT(fieldsOf(*noHeader, "Sheet1$"), ElementsAre("F1 Double"));
    EXPECT_EQ(noHeader->recordCount("Sheet1$"), 21);
    const auto mixed = openStore(files, true, "IMEX=1;TypeGuessRows=0");
    EXPECT_THAT(fieldsOf(*mixed, "Sheet1$"), ElementsAre("N Text"));
    EXPECT_EQ(rowsOf(*mixed, "Sheet1$")[0], "'1.5'");
    const auto cells = openStore(files, true, "cells=yes");
    EXPECT_THAT(fieldsOf(*cells, "Sheet1$"), ElementsAre("A Text"));
    EXPECT_EQ(rowsOf(*cells, "Sheet1$")[1], "'1.5'");
    EXPECT_EQ(errorOf([&] { openStore(files, true, "TypeGuessRows=17"); }), 3001);
    EXPECT_EQ(errorOf([&] { openStore(files, true, "HDR=perhaps"); }), 3001);
}

TEST(ExcelRead, aNameForAnAreaIsATableOfItsOwn)
{
    FilesWith files(book()
                        .name("Prices", 1, 3, 1, 2)
                        .text(0, 0, "title")
                        .text(1, 1, "ITEM")
                        .text(1, 2, "PRICE")
                        .text(2, 1, "tea")
                        .number(2, 2, 3, 17)
                        .end());
    const auto store = openStore(files, true);
    EXPECT_THAT(tablesOf(*store), ElementsAre("Sheet1$", "Prices"));
    EXPECT_THAT(fieldsOf(*store, "prices"), ElementsAre("ITEM Text", "PRICE Currency"));
    EXPECT_THAT(rowsOf(*store, "Prices"), ElementsAre("'tea' 3", "- -"));  // the range's own extent
    EXPECT_THAT(rowsOf(*store, "Sheet1$B2:C3"), ElementsAre("'tea' 3"));
}

TEST(ExcelRead, formulasShowTheirResults)
{
    BookFile file = book();
    file.text(0, 0, "R").text(0, 1, "T").formula(1, 0, 42);
    Bytes textFormula = words({1, 1, 15, 0, 0, 0, 0xFFFF, 0, 0, 0, 3});
    textFormula.insert(textFormula.end(), {0x1E, 1, 0});
    file.record(6, textFormula);
    Bytes result = words({5});
    result.insert(result.end(), {0, 'h', 'e', 'l', 'l', 'o'});
    file.record(0x207, result);
    FilesWith files(file.end());
    const auto store = openStore(files, true);
    EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre("42 'hello'"));
}

TEST(ExcelRead, aSheetWithoutCellsHasNoFields)
{
    FilesWith files(book().end());
    const auto store = openStore(files, true);
    EXPECT_TRUE(store->layout("Sheet1$").fields.empty());
    EXPECT_EQ(store->recordCount("Sheet1$"), 0);
    EXPECT_FALSE(store->cursor("Sheet1$", std::nullopt)->first());
}

TEST(ExcelRead, aCursorComesBackFromBothEnds)
{
    BookFile file = book();
    file.text(0, 0, "N");
    for (unsigned r = 1; r <= 3; ++r)
        file.number(r, 0, r);
    FilesWith files(file.end());
    const auto store = openStore(files, true);
    const auto cursor = store->cursor("Sheet1$", std::nullopt);
    ASSERT_TRUE(cursor->last());
    EXPECT_FALSE(cursor->next());
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(shown(cursor->field(0)), "3");
    ASSERT_TRUE(cursor->moveToOrdinal(1));
    EXPECT_EQ(cursor->ordinal(), 1);
    const RowId second = cursor->row();
    ASSERT_TRUE(cursor->first());
    EXPECT_FALSE(cursor->previous());
    ASSERT_TRUE(cursor->next());
    ASSERT_TRUE(cursor->moveTo(second));
    EXPECT_EQ(shown(cursor->field(0)), "2");
    EXPECT_FALSE(cursor->moveTo(0));
    EXPECT_FALSE(cursor->moveToOrdinal(3));
    EXPECT_EQ(errorOf([&] { store->cursor("Sheet1$", "X"); }), 3015);
}

TEST(ExcelRead, bytesOfOlderWorkbooksAreReadByTheirCodePage)
{
    BookFile file(5);
    file.formats(16, {0}).global(0x42, words({1251}));
    file.text(0, 0, "N").text(1, 0, "\xC6\xF3\xEA");
    FilesWith files(file.end());
    EXPECT_THAT(rowsOf(*openStore(files, true), "Sheet1$"),
                ElementsAre("'\xD0\x96\xD1\x83\xD0\xBA'"));
}

TEST(ExcelRead, whatIsNoWorkbookIsNamed)
{
    const auto words = [](std::string_view content) {
        FilesWith files(Bytes(content.begin(), content.end()));
        try {
            openStore(files, true);
        } catch (const EngineError& error) {
            return std::to_string(error.number()) + " " + error.what();
        }
        return std::string("opened");
    };
    EXPECT_THAT(words("PK\x03\x04 and so on"), HasSubstr("ZIP"));
    EXPECT_THAT(words("  <html><table>"), HasSubstr("HTML"));
    EXPECT_THAT(words("<?xml version=\"1.0\"?>"), HasSubstr("XML"));
    EXPECT_THAT(words("{\\rtf1\\ansi}"), HasSubstr("RTF"));
    EXPECT_THAT(words("a\tb\r\n1\t2\r\n"), HasSubstr("plain text"));
    for (const char* content : {"", "x", "PK", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"})
        EXPECT_THAT(words(content), HasSubstr("3274 "));
}

TEST(ExcelRead, claimedSizesCostNoMemory)
{
    // Records that promise a billion texts and the last cell of the largest sheet.
    Bytes sst = words({0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF});
    sst.push_back(0);
    BookFile file = book();
    file.global(0xFC, sst).record(0x200, Bytes(14, 0xFF));
    file.number(65535, 255, 1).text(0, 0, "A");
    Bytes bytes = file.end();
    FilesWith files(bytes);
    const auto store = openStore(files, true);
    EXPECT_EQ(store->recordCount("Sheet1$"), 65535);
    EXPECT_EQ(store->layout("Sheet1$").fields.size(), 255u);
    EXPECT_FALSE(faultsOf(*store).empty());
}

TEST(ExcelRead, passwordsOpenWhatTheyMust)
{
    const Bytes silent = corpusFile("encrypted/poi_50833.xls");
    const Bytes asked = corpusFile("encrypted/sjs_password_2002_40_972000.xls");
    if (silent.empty() || asked.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    FilesWith files(silent);
    EXPECT_EQ(tablesOf(*openStore(files, true)).size(), 3u);
    EXPECT_EQ(tablesOf(*openStore(files, true, "", "whatever")).size(), 3u);
    EXPECT_FALSE(openStore(files)->layout("Sheet1$").updatable);
    files->put(kFile, asked);
    EXPECT_EQ(errorOf([&] { openStore(files, true); }), 3161);
    EXPECT_EQ(errorOf([&] { openStore(files, true, "", "wrong"); }), 3031);
    EXPECT_FALSE(tablesOf(*openStore(files, true, "", "password")).empty());
}

// A small file could claim the cells of its only sheet for thousands of others.
TEST(ExcelRead, ofSeveralSheetsAtOnePlace_theFirstHasTheCells)
{
    BookFile file;
    for (char c = 'A'; c <= 'Z'; ++c)
        file.global(0x85, {0, 0, 0, 0, 0, 0, 1, 0, static_cast<std::uint8_t>(c)});
    Bytes bytes = file.text(0, 0, "NAME").text(1, 0, "x").end();
    std::vector<std::size_t> bounds;
    for (std::size_t at = 0; at < bytes.size(); at += 4u + bytes[at + 2] + 256u * bytes[at + 3])
        if (bytes[at] == 0x85 && bytes[at + 1] == 0)
            bounds.push_back(at + 4);
    ASSERT_EQ(bounds.size(), 27u);
    for (const std::size_t at : bounds)
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(bounds.back()), 4,
                    bytes.begin() + static_cast<std::ptrdiff_t>(at));
    FilesWith files(bytes);
    const auto store = openStore(files, true);
    ASSERT_EQ(tablesOf(*store).size(), 27u);
    EXPECT_EQ(rowsOf(*store, "A$").size(), 1u);
    for (const char* other : {"B$", "Z$", "Sheet1$"})
        EXPECT_EQ(rowsOf(*store, other).size(), 0u) << other;
    EXPECT_GE(faultsOf(*store).size(), 26u);
}
