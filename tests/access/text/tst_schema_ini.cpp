// schema.ini tells the form and the columns of a text file.
#include "tests/access/text/text_testing.h"

#include "access/formats/text/text_value.h"

using namespace velnor;
using namespace velnor::text_testing;

namespace {

class SchemaIni : public ::testing::Test {
protected:
    Lines read(std::string_view schema, std::string_view content)
    {
        files.put("C:\\SCHEMA.INI", bytesOf(schema));
        files.put("C:\\t.txt", bytesOf(content));
        store = openStore(files, true);
        return rowsOf(*store, "t.txt");
    }
    MemoryFileSystem files;
    std::unique_ptr<Store> store;
};

}  // namespace

TEST_F(SchemaIni, columnsOfFixedWidthAreCut)
{
    EXPECT_EQ(read("[other.txt]\nFormat=TabDelimited\n[T.TXT]\nColNameHeader=False\n"
                   "Format=FixedLength\nCol1=ID Long Width 4\nCol2=\"First name\" Text Width 6\n"
                   "Col3=DAY DateTime Width 10\n",
                   "   1Ann   2004-02-29\r\n  22Bobbie\r\n"),
              (Lines{"1 'Ann' 2004-02-29", "22 'Bobbie' -"}));
    EXPECT_EQ(fieldsOf(*store, "t.txt"), (Lines{"ID Long", "First name Text", "DAY Date"}));
}

TEST_F(SchemaIni, widthsCountCharacters)
{
    EXPECT_EQ(read("[t.txt]\nColNameHeader=No\nFormat=FixedLength\nCharacterSet=65001\n"
                   "Col1=A Text Width 4\nCol2=B Text Width 2\n",
                   "Müde12\n"),
              (Lines{"'Müde' '12'"}));
}

TEST_F(SchemaIni, typesAreTold)
{
    EXPECT_EQ(
        read("[t.txt]\nFormat=Delimited(;)\nDecimalSymbol=,\nDateTimeFormat=dd.mm.yy hh:nn\n"
             "Col1=A Text\nCol2=B Double\nCol3=C DateTime\nCol4=D Bit\nCol5=E Currency\n"
             "Col6=F Byte\n",
             "x;x;x;x;x;x\n007;1,5;29.02.04 13:05;Yes;$ 1.234,50;255\n8;no;31.12.99;0;(2);256\n"),
        (Lines{"'007' 1.5 2004-02-29 13:05:00 True 1234.5 255", "'8' - 1999-12-31 False -2 -"}));
    EXPECT_EQ(faultsOf(*store, "t.txt").size(), 2u);
}

TEST_F(SchemaIni, characterSetsAreTold)
{
    EXPECT_EQ(read("[t.txt]\nCharacterSet=OEM\n", "A\n\x81\n"), (Lines{"'ü'"}));
    EXPECT_EQ(read("[t.txt]\nCharacterSet=ANSI\n", "A\n\xC3\xBC\n"), (Lines{"'Ã¼'"}));
    EXPECT_EQ(errorOf([&] { read("[t.txt]\nCharacterSet=4711\n", "A\n"); }), 3001);
}

TEST_F(SchemaIni, withoutQuotesAQuoteIsACharacter)
{
    EXPECT_EQ(read("[t.txt]\nFormat=CSVDelimited\nTextDelimiter=none\n", "A,B\n\"x,y\"\n"),
              (Lines{"'\"x' 'y\"'"}));
    EXPECT_EQ(read("[t.txt]\nFormat=CSVDelimited\nTextDelimiter='\n", "A,B\n'x,y',\"\n"),
              (Lines{"'x,y' '\"'"}));
}

TEST_F(SchemaIni, widthsMustBeTold)
{
    EXPECT_EQ(errorOf([&] { read("[t.txt]\nFormat=FixedLength\nCol1=A Text\n", "abc\n"); }), 3001);
    EXPECT_EQ(errorOf([&] { read("[t.txt]\nFormat=FixedLength\n", "abc\n"); }), 3001);
    EXPECT_EQ(errorOf([&] { read("[t.txt]\nCol1=A Nonsense\n", "abc\n"); }), 3001);
}

TEST(DateForm, formsAreReadAndWritten)
{
    struct Case {
        const char* form;
        const char* text;
        const char* iso;
    };
    for (const Case& c :
         {Case{"yyyy-mm-dd", "2004-02-29", "2004-02-29"},
          Case{"dd-mmm-yy", "29-Feb-04", "2004-02-29"},
          Case{"d mmmm yyyy", "1 September 1999", "1999-09-01"},
          Case{"mm/dd/yyyy hh:nn:ss AM/PM", "02/29/2004 01:05:09 PM", "2004-02-29 13:05:09"},
          Case{"yyyymmddhhmm", "200402291305", "2004-02-29 13:05:00"}}) {
        double date = 0;
        std::string iso, back;
        ASSERT_TRUE(text::parseDateAs(c.form, c.text, date)) << c.form;
        appendIsoDate(iso, date);
        EXPECT_EQ(iso, c.iso);
        text::appendDateAs(back, c.form, date);
        EXPECT_EQ(back, c.text);
    }
    double date = 0;
    EXPECT_FALSE(text::parseDateAs("dd.mm.yyyy", "31.02.2004", date));
    EXPECT_FALSE(text::parseDateAs("dd.mm.yyyy", "1.2.2004 x", date));
    EXPECT_FALSE(text::parseDateAs("dd.mm.yyyy", "", date));
}
