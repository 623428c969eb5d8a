// Text files as tables: lines, fields, types, characters.
#include "tests/access/text/text_testing.h"

using namespace velnor;
using namespace velnor::text_testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class TextRead : public ::testing::Test {
protected:
    Lines read(std::string_view content, std::string options = {}, std::string codePage = {})
    {
        files.put("C:\\T.CSV", bytesOf(content));
        store = openStore(files, true, std::move(options), std::move(codePage));
        return rowsOf(*store, "T.CSV");
    }
    Lines fields() { return fieldsOf(*store, "T.CSV"); }

    MemoryFileSystem files;
    std::unique_ptr<Store> store;
};

constexpr const char* kUtf16Mark = "\xFF\xFE";

std::string utf16(std::string_view ascii)
{
    std::string out;
    for (const char c : ascii) {
        out += c;
        out += '\0';
    }
    return out;
}

}  // namespace

TEST_F(TextRead, theFirstLineNamesTheFields)
{
    EXPECT_EQ(read("NAME,AGE\r\nAnn,30\r\nBob,\r\n"), (Lines{"'Ann' 30", "'Bob' -"}));
    EXPECT_EQ(fields(), (Lines{"NAME Text", "AGE Long"}));
    EXPECT_EQ(store->recordCount("T.CSV"), 2);
}

TEST_F(TextRead, anyLineEndWillDo)
{
    const Lines rows{"1 'x'", "2 'y'"};
    EXPECT_EQ(read("A,B\r\n1,x\r\n2,y\r\n"), rows);
    EXPECT_EQ(read("A,B\n1,x\n2,y"), rows);
    EXPECT_EQ(read("A,B\r1,x\r2,y\r"), rows);
    EXPECT_EQ(read("A,B\r\n1,x\n2,y\x1A"), rows);  // the closing mark of old programs
}

TEST_F(TextRead, quotesHoldDelimitersLineEndsAndQuotes)
{
    EXPECT_EQ(read("A,B\r\n\"one, two\",\"a \"\"b\"\" c\"\r\n\"l1\r\nl2\",\"\"\r\n"),
              (Lines{"'one, two' 'a \"b\" c'", "'l1\r\nl2' ''"}));
    EXPECT_EQ(read("A,B\n\"x\"y,z\n"), (Lines{"'xy' 'z'"}));
}

TEST_F(TextRead, aQuoteThatNothingClosesIsACharacter)
{
    EXPECT_EQ(read("A,B\n5\" pipe,1\n\"open,2\n"), (Lines{"'5\" pipe' 1", "'\"open' 2"}));
    EXPECT_THAT(faultsOf(*store, "T.CSV"), ElementsAre("record 2: a quote is not closed"));
}

TEST_F(TextRead, theDelimiterIsTheOneThatLinesShare)
{
    EXPECT_EQ(read("A;B\n1,5;x\n2,5;y\n"), (Lines{"'1,5' 'x'", "'2,5' 'y'"}));
    EXPECT_EQ(read("A\tB\na,b\tx\nc\ty\n"), (Lines{"'a,b' 'x'", "'c' 'y'"}));
    EXPECT_EQ(read("A|B\n1|2\n"), (Lines{"1 2"}));
    EXPECT_EQ(read("A;B\n1;2;\n3;4;\n5;6;\n7;8;\n"), (Lines{"1 2 -", "3 4 -", "5 6 -", "7 8 -"}));
    EXPECT_EQ(read("A,B,C\n1,2,3\n4,5\n6,7,8\n9,0,1\n"),
              (Lines{"1 2 3", "4 5 -", "6 7 8", "9 0 1"}));
}

TEST_F(TextRead, aTextWithoutDelimitersIsATableOfLines)
{
    files.put("C:\\Close.Txt", bytesOf("Nothing is open.\r\n\r\n\"Well,\" he said, and left.\r\n"));
    const auto lines = openStore(files, true);
    EXPECT_EQ(rowsOf(*lines, "Close.Txt"), (Lines{"-", "'\"Well,\" he said, and left.'"}));
    EXPECT_EQ(rowsOf(*lines, "close#txt").size(), 2u);
    EXPECT_EQ(fieldsOf(*lines, "Close.Txt"), (Lines{"Nothing is open# Text"}));
}

TEST_F(TextRead, aTypeIsThatOfEveryValue)
{
    read("L,D,T,F,W,X\n1,1.5,2004-02-29,True,007,1\n-2,2,1/31/2004 1:05:00 PM,false,8,x\n,,,,,\n");
    EXPECT_EQ(fields(), (Lines{"L Long", "D Double", "T Date", "F Boolean", "W Text", "X Text"}));
    EXPECT_EQ(rowsOf(*store, "T.CSV"),
              (Lines{"1 1.5 2004-02-29 True '007' '1'", "-2 2 2004-01-31 13:05:00 False '8' 'x'",
                     "- - - - - -"}));
    EXPECT_THAT(faultsOf(*store, "T.CSV"), IsEmpty());
}

TEST_F(TextRead, whatANumberWouldLoseStaysText)
{
    read("A,B,C,D,E,F\n1234567890123456,+49,1.,0.1234567890123456789,\"5\",-0\n");
    EXPECT_EQ(fields(), (Lines{"A Text", "B Text", "C Text", "D Text", "E Text", "F Text"}));
    read("A,B,C,D\n2147483648,1e300,-0.5,123456789012345\n");
    EXPECT_EQ(fields(), (Lines{"A Double", "B Double", "C Double", "D Double"}));
}

TEST_F(TextRead, daysBeforeMonthsAreNotGuessed)
{
    EXPECT_EQ(read("A\n01/02/2004\n13/02/2004\n"), (Lines{"'01/02/2004'", "'13/02/2004'"}));
    EXPECT_EQ(read("A\n01/02/2004\n13/02/2004\n", "DateTimeFormat=dd/mm/yyyy"),
              (Lines{"2004-02-01", "2004-02-13"}));
}

TEST_F(TextRead, longTextsMakeAMemo)
{
    const std::string longText(256, 'x');
    EXPECT_EQ(read("A\nshort\n" + longText + "\n"), (Lines{"'short'", "'" + longText + "'"}));
    EXPECT_EQ(fields(), (Lines{"A Memo"}));
    read("A\nshort\n" + std::string(255, 'x') + "\n");
    EXPECT_EQ(fields(), (Lines{"A Text"}));
}

TEST_F(TextRead, namesAreCleanAndDifferent)
{
    read("a.b,[c]!, ,A#B,x\n1,2,3,4,5,6\n");
    EXPECT_EQ(fields(),
              (Lines{"a#b Long", "(c)$ Long", "F3 Long", "F4 Long", "x Long", "F6 Long"}));
    EXPECT_EQ(read("NAME,AGE\nAnn,30\n", "HDR=No"), (Lines{"'NAME' 'AGE'", "'Ann' '30'"}));
    EXPECT_EQ(fields(), (Lines{"F1 Text", "F2 Text"}));
}

TEST_F(TextRead, utf16IsReadWithAndWithoutItsMark)
{
    const std::string plain = utf16("A,B\r\n\"x\r\n,\",2\r\n");
    const Lines rows{"'x\r\n,' 2"};
    EXPECT_EQ(read(kUtf16Mark + plain), rows);
    EXPECT_EQ(read(plain), rows);
    std::string big = "\xFE\xFF";
    for (std::size_t i = 0; i < plain.size(); i += 2)
        (big += plain[i + 1]) += plain[i];
    EXPECT_EQ(read(big), rows);
    const std::string pair("\x3D\xD8\x00\xDE", 4);
    EXPECT_EQ(read(kUtf16Mark + utf16("A\n") + pair + utf16("!\n")), (Lines{"'😀!'"}));
}

TEST_F(TextRead, eightBitTextsAreUtf8OrTheAnsiPage)
{
    EXPECT_EQ(read("A\nGrüße\n"), (Lines{"'Grüße'"}));
    EXPECT_EQ(read("\xEF\xBB\xBF"
                   "A\nGrüße\n"),
              (Lines{"'Grüße'"}));
    EXPECT_EQ(fields(), (Lines{"A Text"}));
    EXPECT_EQ(read("Gr\xFC\xDF"
                   "e\n\x80 5\n"),
              (Lines{"'€ 5'"}));
    EXPECT_EQ(fields(), (Lines{"Grüße Text"}));
    EXPECT_EQ(read("A\n\x8F\xE0\xA8\n", "", "866"), (Lines{"'При'"}));
    EXPECT_EQ(errorOf([&] { read("A\n1\n", "", "no such"); }), 3001);
}

TEST_F(TextRead, emptyLinesAreNoRecordsBesideSeveralColumns)
{
    EXPECT_EQ(read("\nA,B\n\n1,2\n\n3,4\n\n"), (Lines{"1 2", "3 4"}));
    EXPECT_EQ(read("A\n\n1\n\n"), (Lines{"-", "1", "-"}));
}

TEST_F(TextRead, anEmptyFileHasNoFields)
{
    EXPECT_THAT(read(""), IsEmpty());
    EXPECT_THAT(fields(), IsEmpty());
    EXPECT_FALSE(store->layout("T.CSV").updatable);
    EXPECT_THAT(read("A,B\r\n"), IsEmpty());
    EXPECT_EQ(fields(), (Lines{"A Text", "B Text"}));
    EXPECT_FALSE(store->cursor("T.CSV", std::nullopt)->last());
}

TEST_F(TextRead, moreThan255FieldsAreCutAndTold)
{
    std::string line = "c";
    for (int i = 1; i < 300; ++i)
        line += ",c";
    read(line + "\n" + line + "\n");
    EXPECT_EQ(fields().size(), 255u);
    EXPECT_THAT(faultsOf(*store, "T.CSV"),
                ElementsAre("record 1: the line has 300 fields, 255 are shown"));
}

TEST_F(TextRead, everyWayToARecordLeadsToTheSame)
{
    std::string content = "N,TEXT\r\n";
    constexpr int kRows = 3000;
    for (int i = 0; i < kRows; ++i)
        content += std::to_string(i) + ",\"" + std::string(static_cast<std::size_t>(i % 90), 'x') +
                   (i % 7 ? "\"\r\n" : "\n,\"\r\n");
    for (const bool wide : {false, true}) {
        const Lines forth = read(wide ? kUtf16Mark + utf16(content) : content);
        ASSERT_EQ(forth.size(), static_cast<std::size_t>(kRows));
        const auto cursor = store->cursor("T.CSV", std::nullopt);
        Lines back;
        std::vector<RowId> ids;
        for (bool there = cursor->last(); there; there = cursor->previous()) {
            back.insert(back.begin(), rowOf(*cursor, 2));
            ids.insert(ids.begin(), cursor->row());
        }
        EXPECT_EQ(forth, back);
        EXPECT_TRUE(cursor->next());
        for (const int n : {0, 1, 31, 32, 33, 1500, 2999}) {
            ASSERT_TRUE(cursor->moveToOrdinal(n));
            EXPECT_EQ(rowOf(*cursor, 2), forth[static_cast<std::size_t>(n)]);
            EXPECT_EQ(cursor->ordinal(), n);
            EXPECT_EQ(rowOf(*cursor, 2), forth[static_cast<std::size_t>(n)]);
            ASSERT_TRUE(cursor->moveTo(ids[static_cast<std::size_t>(n)]));
            EXPECT_EQ(rowOf(*cursor, 2), forth[static_cast<std::size_t>(n)]);
        }
        EXPECT_FALSE(cursor->moveToOrdinal(kRows));
        ASSERT_TRUE(cursor->last());
        EXPECT_FALSE(cursor->next());
        EXPECT_TRUE(cursor->previous());
        EXPECT_EQ(rowOf(*cursor, 2), forth.back());
    }
}

TEST_F(TextRead, aFieldOfManyMegabytesIsRead)
{
    const std::string big(3u << 20, 'b');
    EXPECT_EQ(read("A,B\n\"" + big + "\",1\nx,2\n"), (Lines{"'" + big + "' 1", "'x' 2"}));
}

TEST_F(TextRead, onlyTextFilesAreListed)
{
    files.put("C:\\b.txt", bytesOf("x"));
    files.put("C:\\A.CSV", bytesOf("x"));
    files.put("C:\\schema.ini", bytesOf(""));
    files.put("C:\\c.exe", bytesOf("x"));
    const auto listed = openStore(files, true);
    Lines names;
    for (const TableEntry& entry : listed->catalogue())
        names.push_back(entry.name);
    EXPECT_EQ(names, (Lines{"A.CSV", "b.txt"}));
    EXPECT_EQ(errorOf([&] { listed->layout("c.exe"); }), 3078);
    EXPECT_EQ(errorOf([&] { listed->layout("none.txt"); }), 3078);
    EXPECT_EQ(errorOf([&] { listed->layout("..\\b.txt"); }), 3078);
}
