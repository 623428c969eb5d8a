// Records added to text files, and new text files.
#include "tests/access/text/text_testing.h"

#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::text_testing;

namespace {

class TextWrite : public ::testing::Test {
protected:
    /// Appends records to a file with this content and gives what is in it then.
    std::string append(std::string_view content, std::vector<std::vector<ValueView>> rows,
                       const char* name = "C:\\T.CSV", std::string codePage = {})
    {
        files.put(name, bytesOf(content));
        const auto store = openStore(files, false, {}, std::move(codePage));
        const auto writer = store->writer(name + 3);
        for (const auto& row : rows)
            writer->insert(row);
        store->commit();
        return contentOf(files, name);
    }
    MemoryFileSystem files;
};

}  // namespace

TEST_F(TextWrite, recordsGoToTheEndInTheFilesOwnForm)
{
    EXPECT_EQ(append("A,B\n1,x\n", {{ValueView::integer(2), words("y")}}), "A,B\n1,x\n2,y\n");
    EXPECT_EQ(append("A;B\r\n1;x", {{ValueView::integer(2), words("a;b")}}),
              "A;B\r\n1;x\r\n2;\"a;b\"\r\n");
    EXPECT_EQ(append("A,B\r\n1,x\r\n\x1A", {{ValueView::integer(2), {}}}), "A,B\r\n1,x\r\n2,\r\n");
}

TEST_F(TextWrite, textsThatReadAsSomethingElseGoInQuotes)
{
    const Lines texts{"plain", "",   "007", "12",         "1.5",    "2004-02-29",
                      "True",  " x", "a,b", "say \"so\"", "l1\nl2", "tab\t"};
    std::vector<std::vector<ValueView>> rows;
    for (const std::string& text : texts)
        rows.push_back({words(text), ValueView::integer(1)});
    append("A,B\r\nx,1\r\n", rows);
    const auto store = openStore(files, true);
    const Lines read = rowsOf(*store, "T.CSV");
    ASSERT_EQ(read.size(), texts.size() + 1);
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(read[i + 1], "'" + texts[i] + "' 1");
}

TEST_F(TextWrite, whatIsAddedIsSeenAtOnceAndCountedRight)
{
    files.put("C:\\T.CSV", bytesOf("A\r\n"));
    auto store = openStore(files);
    auto writer = store->writer("T.CSV");
    auto cursor = store->cursor("T.CSV", std::nullopt);
    EXPECT_FALSE(cursor->first());
    std::vector<RowId> ids;
    for (int i = 0; i < 5000; ++i)
        ids.push_back(writer->insert(std::array{words("row " + std::to_string(i))}));
    EXPECT_EQ(store->recordCount("T.CSV"), 5000);
    ASSERT_TRUE(cursor->moveTo(ids[4321]));
    EXPECT_EQ(rowOf(*cursor, 1), "'row 4321'");
    EXPECT_EQ(cursor->ordinal(), 4321);
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(rowOf(*cursor, 1), "'row 4999'");
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(rowOf(*cursor, 1), "'row 4998'");
    EXPECT_EQ(contentOf(files, "C:\\T.CSV"), "A\r\n");  // nothing before the commit
    store->commit();
    cursor.reset();
    writer.reset();
    store.reset();
    EXPECT_EQ(rowsOf(*openStore(files, true), "T.CSV").size(), 5000u);
}

TEST_F(TextWrite, charactersOfTheFileAreKept)
{
    EXPECT_EQ(append("A\n\xFC\n", {{words("Ö")}}), "A\n\xFC\n\xD6\n");
    EXPECT_EQ(append("A\nü\n", {{words("Ж")}}), "A\nü\nЖ\n");
    const std::string wide("\xFF\xFE"
                           "A\0\n\0x\0",
                           8);
    EXPECT_EQ(append(wide, {{words("Ж😀")}}),
              std::string("\xFF\xFE"
                          "A\0\n\0x\0\n\0\x16\x04\x3D\xD8\x00\xDE\n\0",
                          18));
    EXPECT_EQ(errorOf([&] { append("A\n\xFC\n", {{words("Ж")}}); }), 3421);
    EXPECT_EQ(contentOf(files, "C:\\T.CSV"), "A\n\xFC\n");
}

TEST_F(TextWrite, recordsAreNeitherChangedNorDeleted)
{
    files.put("C:\\T.CSV", bytesOf("A\nx\n"));
    const auto store = openStore(files);
    const auto writer = store->writer("T.CSV");
    const FieldChange change{0, words("y")};
    EXPECT_EQ(errorOf([&] { writer->update(2, std::span(&change, 1)); }), 3251);
    EXPECT_EQ(errorOf([&] { writer->remove(2); }), 3617);
}

TEST_F(TextWrite, aNewFileHasItsTypesInSchemaIni)
{
    files.put("C:\\schema.ini", bytesOf("[old.txt]\r\nFormat=TabDelimited\r\n"));
    const auto make = [&] {
        const auto store = openStore(files);
        store->createTable(
            layoutOf("new.csv",
                     {fieldDef("Order no", FieldType::Long), fieldDef("NAME", FieldType::Text, 40),
                      fieldDef("PRICE", FieldType::Currency), fieldDef("DAY", FieldType::Date),
                      fieldDef("PAID", FieldType::Boolean), fieldDef("NOTE", FieldType::Memo),
                      fieldDef("RATE", FieldType::Single)}));
        store->writer("new.csv")->insert(
            std::array{ValueView::integer(1), words("007"), ValueView::currency(12500),
                       ValueView::date(38046.5), ValueView::boolean(true), words(""),
                       ValueView::real(static_cast<double>(0.1f))});
        store->writer("new.csv")->insert(std::array<ValueView, 7>{});
        store->commit();
    };
    make();
    EXPECT_EQ(contentOf(files, "C:\\new.csv"),
              "Order no,NAME,PRICE,DAY,PAID,NOTE,RATE\r\n"
              "1,007,1.25,2004-02-29 12:00:00,True,\"\",0.1\r\n,,,,,,\r\n");
    const auto store = openStore(files);
    EXPECT_EQ(fieldsOf(*store, "new.csv"),
              (Lines{"Order no Long", "NAME Text", "PRICE Currency", "DAY Date", "PAID Boolean",
                     "NOTE Memo", "RATE Single"}));
    EXPECT_EQ(rowsOf(*store, "new.csv")[0], "1 '007' 1.25 2004-02-29 12:00:00 True '' 0.1");
    EXPECT_EQ(errorOf(make), 3010);
    store->dropTable("new.csv");
    EXPECT_FALSE(files.exists("C:\\new.csv"));
    EXPECT_EQ(contentOf(files, "C:\\schema.ini"), "[old.txt]\r\nFormat=TabDelimited\r\n");
}

TEST_F(TextWrite, whatATextFileCannotHoldIsRefused)
{
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] {
                  store->createTable(layoutOf("a.txt", {fieldDef("B", FieldType::LongBinary)}));
              }),
              3251);
    EXPECT_EQ(errorOf([&] {
                  store->createTable(layoutOf("a.exe", {fieldDef("B", FieldType::Text, 5)}));
              }),
              3125);
    EXPECT_FALSE(files.exists("C:\\a.txt"));
    EXPECT_EQ(errorOf([&] {
                  openStore(files, true)
                      ->createTable(layoutOf("a.txt", {fieldDef("B", FieldType::Text, 5)}));
              }),
              3027);
}

TEST_F(TextWrite, columnsOfFixedWidthAreFilledUp)
{
    files.put("C:\\schema.ini",
              bytesOf("[t.txt]\nColNameHeader=False\nFormat=FixedLength\nCol1=ID Long Width 4\n"
                      "Col2=NAME Text Width 5\n"));
    EXPECT_EQ(append("   1Ann  \n", {{ValueView::integer(22), words("Bob")}}, "C:\\t.txt"),
              "   1Ann  \n  22Bob  \n");
    EXPECT_EQ(errorOf([&] {
                  append("   1Ann  \n", {{ValueView::integer(22222), words("Bob")}}, "C:\\t.txt");
              }),
              3163);
    EXPECT_EQ(contentOf(files, "C:\\t.txt"), "   1Ann  \n");
}

TEST_F(TextWrite, aFileThatMayOnlyBeReadIsLeftAlone)
{
    files.put("C:\\T.CSV", bytesOf("A\nx\n"));
    const auto one = openStore(files), other = openStore(files);
    one->layout("T.CSV");
    EXPECT_EQ(errorOf([&] { other->layout("T.CSV"); }), 3045);
    files.put("C:\\E.CSV", bytesOf(""));
    EXPECT_EQ(errorOf([&] { one->writer("E.CSV"); }), 3027);
}

TEST(TextFaults, afterAPowerCutOrAFailureTheFileIsOldOrNew)
{
    const std::string before = "A,B\r\n1,x\r\n";
    const auto work = [](FileSystem& disk) {
        const auto store = openStore(disk);
        const auto writer = store->writer("T.CSV");
        for (int i = 0; i < 900; ++i)
            writer->insert(std::array{ValueView::integer(i), words("some words of a record")});
        store->commit();
    };
    for (const bool cut : {true, false}) {
        int old = 0;
        for (long n = 1;; ++n) {
            velnor::testing::FaultyDisk disk(static_cast<unsigned>(n));
            disk.put("C:\\T.CSV", bytesOf(before));
            cut ? disk.cutAt(n) : disk.failAt(n, RunErrorNumber::DiskFull);
            int error = 0;
            try {
                error = errorOf([&] { work(disk); });
            } catch (const RunError&) {
                error = 1;
            }
            if (!(cut ? disk.wasCut() : disk.hasFailed()))
                break;
            if (!cut && error)
                EXPECT_EQ(error, 3026);
            disk.restart();
            const std::size_t rows = rowsOf(*openStore(disk, false), "T.CSV").size();
            ASSERT_TRUE(rows == 1 || rows == 901) << "at change " << n << ": " << rows;
            old += rows == 1;
        }
        EXPECT_GT(old, 2);
    }
}
