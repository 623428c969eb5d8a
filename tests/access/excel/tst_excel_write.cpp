// Workbooks written: tables made, records added and changed, everything else kept.
#include <limits>

#include "tests/access/excel/excel_testing.h"

using namespace velnor;
using namespace velnor::excel_testing;
using ::testing::ElementsAre;

namespace {

BookFile book(int version = 8)
{
    BookFile file(version);
    file.formats(19, {14, 7, 22});
    if (version == 8)
        file.record(0x200, Bytes(14));
    else
        file.record(0x200, Bytes(10));
    return file;
}

Row row(std::initializer_list<ValueView> values)
{
    return values;
}

/// Table T of every type that a sheet keeps.
void makeAll(Store& store, std::string_view name = "T")
{
    store.createTable(
        layoutOf(std::string(name),
                 {fieldDef("NAME", FieldType::Text, 40), fieldDef("AMOUNT", FieldType::Double),
                  fieldDef("PRICE", FieldType::Currency), fieldDef("DAY", FieldType::Date),
                  fieldDef("FLAG", FieldType::Boolean), fieldDef("NOTE", FieldType::Memo)}));
}

const Lines kAllFields{"NAME Text", "AMOUNT Double", "PRICE Currency",
                       "DAY Date",  "FLAG Boolean",  "NOTE Memo"};

}  // namespace

TEST(ExcelWrite, aNewTableKeepsItsTypesAlsoWhileItIsEmpty)
{
    for (const char* word : {"Excel 8.0;", "Excel 5.0;"}) {
        MemoryFileSystem files;
        createFile(files, word);
        {
            const auto store = openStore(files);
            EXPECT_THAT(tablesOf(*store), ElementsAre("Sheet1$"));
            makeAll(*store);
            EXPECT_THAT(tablesOf(*store), ElementsAre("T$"));  // the first table takes the sheet
            EXPECT_EQ(fieldsOf(*store, "T"), kAllFields);
            makeAll(*store, "Second");
            EXPECT_THAT(tablesOf(*store), ElementsAre("T$", "Second$"));
        }
        const auto store = openStore(files, true);
        EXPECT_EQ(fieldsOf(*store, "T$"), kAllFields) << word;
        EXPECT_EQ(fieldsOf(*store, "Second$"), kAllFields) << word;
        EXPECT_EQ(store->recordCount("T$"), 0);
        EXPECT_THAT(faultsOf(*store), ElementsAre());
    }
}

TEST(ExcelWrite, recordsOfEveryTypeReadBack)
{
    for (const char* word : {"Excel 8.0;", "Excel 5.0;"}) {
        MemoryFileSystem files;
        createFile(files, word);
        const std::string note(200, 'n');
        {
            const auto store = openStore(files);
            makeAll(*store);
            const auto writer = store->writer("T");
            writer->insert(
                row({text("\xC3\xA4 one"), ValueView::real(-1.0 / 3), ValueView::currency(-12345),
                     day("2004-02-29"), ValueView::boolean(true), text(note)}));
            writer->insert(row({text("two"),
                                ValueView::real(7),
                                ValueView::null(),
                                day("1999-12-31 23:59:59"),
                                ValueView::boolean(false),
                                {}}));
            writer->insert(row({{}, {}, ValueView::currency(10000), {}, {}, text("x")}));
            EXPECT_EQ(store->recordCount("T$"), 3);
            store->commit();
            EXPECT_EQ(store->pendingBytes(), 0u);
        }
        const auto store = openStore(files, true);
        Lines fields = kAllFields;
        fields.back() = "NOTE Text";  // no text of it is long
        EXPECT_EQ(fieldsOf(*store, "T$"), fields);
        EXPECT_THAT(
            rowsOf(*store, "T$"),
            ElementsAre("'\xC3\xA4 one' -0.3333333333333333 -1.2345 2004-02-29 True '" + note + "'",
                        "'two' 7 - 1999-12-31 23:59:59 False -", "- - 1 - - 'x'"));
        EXPECT_THAT(faultsOf(*store), ElementsAre());
    }
}

TEST(ExcelWrite, aColumnOfNullsKeepsTheTypeItWasMadeWith)
{
    MemoryFileSystem files;
    createFile(files);
    {
        const auto store = openStore(files);
        makeAll(*store);
        store->writer("T")->insert(row({text("only this"), {}, {}, {}, {}, {}}));
        store->commit();
    }
    const auto store = openStore(files, true);
    EXPECT_EQ(fieldsOf(*store, "T$"), kAllFields);
}

TEST(ExcelWrite, cellsAreChangedAndTheirNeighboursStay)
{
    // A record with three numbers, of which the middle one is changed; a formula beside it.
    BookFile file = book();
    file.text(0, 0, "A").text(0, 1, "B").text(0, 2, "C").text(0, 3, "F");
    Bytes many = words({1, 0});
    for (const unsigned n : {1u, 2u, 3u}) {
        word(many, 15);
        word(many, n * 4 + 2);
        word(many, 0);
    }
    word(many, 2);
    file.record(0xBD, many).formula(1, 3, 6);
    MemoryFileSystem files;
    files.put(kFile, file.end());
    {
        const auto store = openStore(files);
        const auto writer = store->writer("Sheet1$");
        writer->update(1, std::array{FieldChange{1, ValueView::real(20)}});
        EXPECT_EQ(errorOf([&] {
                      writer->update(1, std::array{FieldChange{0, ValueView::real(9)},
                                                   FieldChange{3, ValueView::real(7)}});
                  }),
                  3251);
        writer->update(1, std::array{FieldChange{3, ValueView::real(6)}});  // what it shows already
        EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre("1 20 3 6"));
        store->commit();
    }
    {
        const auto store = openStore(files);
        EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre("1 20 3 6"));
        store->writer("Sheet1$")->update(1, std::array{FieldChange{0, {}}, FieldChange{2, {}}});
        store->commit();
    }
    EXPECT_THAT(rowsOf(*openStore(files, true), "Sheet1$"), ElementsAre("- 20 - 6"));
}

TEST(ExcelWrite, newRecordsAreShownAsTheLastOnesAre)
{
    BookFile file = book();
    file.text(0, 0, "DAY").text(0, 1, "N").number(1, 0, 38046, 18).number(1, 1, 5);
    MemoryFileSystem files;
    files.put(kFile, file.end());
    {
        const auto store = openStore(files);
        store->writer("Sheet1$")->insert(row({day("2004-03-05 08:00:00"), ValueView::real(1)}));
        store->commit();
    }
    const auto store = openStore(files, true);
    EXPECT_THAT(fieldsOf(*store, "Sheet1$"), ElementsAre("DAY Date", "N Double"));
    EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre("2004-02-29 5", "2004-03-05 08:00:00 1"));
}

TEST(ExcelWrite, aRangeGrowsWithItsRecordsUntilSomethingIsInTheWay)
{
    BookFile file = book();
    file.name("Prices", 0, 1, 0, 0).text(0, 0, "ITEM").text(1, 0, "tea").text(3, 0, "footnote");
    MemoryFileSystem files;
    files.put(kFile, file.end());
    {
        const auto store = openStore(files);
        const auto writer = store->writer("Prices");
        writer->insert(row({text("coffee")}));
        EXPECT_EQ(errorOf([&] { writer->insert(row({text("milk")})); }), 3434);
        store->commit();
    }
    const auto store = openStore(files);
    EXPECT_THAT(rowsOf(*store, "Prices"), ElementsAre("'tea'", "'coffee'"));
    store->dropTable("Prices");
    EXPECT_THAT(tablesOf(*store), ElementsAre("Sheet1$"));
    EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre());  // only the footnote is left
}

TEST(ExcelWrite, deletesAndWhatACellCannotHoldAreRefused)
{
    MemoryFileSystem files;
    createFile(files);
    const auto store = openStore(files);
    makeAll(*store);
    const auto writer = store->writer("T");
    const RowId id = writer->insert(row({text("a"), {}, {}, {}, {}, {}}));
    EXPECT_EQ(errorOf([&] { writer->remove(id); }), 3617);
    const auto refusal = [&](int field, ValueView value) {
        return errorOf([&] { writer->update(id, std::array{FieldChange{field, value}}); });
    };
    EXPECT_EQ(refusal(1, ValueView::real(std::numeric_limits<double>::infinity())), 3421);
    EXPECT_EQ(refusal(3, day("1899-01-01")), 3421);
    EXPECT_EQ(refusal(5, text(std::string(32768, 'x'))), 3163);
    EXPECT_EQ(refusal(5, text(std::string(32767, 'x'))), 0);
    EXPECT_EQ(
        errorOf([&] { store->createTable(layoutOf("B", {fieldDef("X", FieldType::LongBinary)})); }),
        3251);
    EXPECT_EQ(errorOf([&] { makeAll(*store, "t"); }), 3010);
    for (const char* name : {"a/b", "a:b", "'a", "", "12345678901234567890123456789012"})
        EXPECT_EQ(errorOf([&] { makeAll(*store, name); }), 3125) << name;
}

TEST(ExcelWrite, olderWorkbooksRefuseWhatTheirCodePageLacks)
{
    MemoryFileSystem files;
    createFile(files, "Excel 5.0;");
    const auto store = openStore(files);
    makeAll(*store);
    const auto writer = store->writer("T");
    EXPECT_EQ(errorOf([&] { writer->insert(row({text("\xD0\x96"), {}, {}, {}, {}, {}})); }), 3421);
    EXPECT_EQ(errorOf([&] {
                  writer->insert(row({{}, {}, {}, {}, {}, text(std::string(256, 'x'))}));
              }),
              3163);
    EXPECT_EQ(store->recordCount("T"), 0);
}

TEST(ExcelWrite, aFullSheetIsTold)
{
    MemoryFileSystem files;
    createFile(files);
    const auto store = openStore(files);
    store->createTable(layoutOf("T", {fieldDef("N", FieldType::Double)}));
    const auto writer = store->writer("T");
    for (int i = 1; i < 65536; ++i)
        writer->insert(row({ValueView::real(i)}));
    EXPECT_EQ(errorOf([&] { writer->insert(row({ValueView::real(0)})); }), 3437);
    store->commit();
    EXPECT_EQ(store->recordCount("T$"), 65535);
}

TEST(ExcelWrite, aWorkbookGrowsBeyondTheListOfSectorsInItsHeader)
{
    MemoryFileSystem files(256u << 20);
    createFile(files);
    {
        const auto store = openStore(files);
        store->createTable(layoutOf("T", {fieldDef("NOTE", FieldType::Memo)}));
        const auto writer = store->writer("T");
        std::string note(30000, 'n');
        for (int i = 0; i < 300; ++i) {
            note[0] = static_cast<char>('a' + i % 26);
            note.replace(1, 3, std::to_string(100 + i));
            writer->insert(row({text(note)}));
        }
        store->commit();
    }
    const auto store = openStore(files, true);
    EXPECT_EQ(store->recordCount("T$"), 300);
    EXPECT_EQ(fieldsOf(*store, "T$"), Lines{"NOTE Memo"});
    EXPECT_THAT(faultsOf(*store), ElementsAre());
    const auto cursor = store->cursor("T$", std::nullopt);
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(cursor->field(0).asText().size(), 30000u);
    EXPECT_EQ(cursor->field(0).asText().substr(1, 3), "399");
}

TEST(ExcelWrite, nothingChangedIsNothingWritten)
{
    MemoryFileSystem files;
    const Bytes bytes = book().text(0, 0, "A").text(1, 0, "x").end();
    files.put(kFile, bytes);
    {
        const auto store = openStore(files);
        rowsOf(*store, "Sheet1$");
        store->commit();
    }
    EXPECT_EQ(files.content(kFile), bytes);
}

TEST(ExcelWrite, droppedTablesGoWithTheirSheetOrLeaveTheLastOneEmpty)
{
    MemoryFileSystem files;
    createFile(files);
    const auto store = openStore(files);
    makeAll(*store, "ONE");
    makeAll(*store, "TWO");
    store->writer("TWO")->insert(row({text("kept"), {}, {}, {}, {}, {}}));
    store->dropTable("ONE");
    EXPECT_THAT(tablesOf(*store), ElementsAre("TWO$"));
    EXPECT_THAT(rowsOf(*store, "TWO$"), ElementsAre("'kept' - - - - -"));
    store->writer("TWO")->insert(row({text("more"), {}, {}, {}, {}, {}}));
    store->commit();
    store->dropTable("TWO$");
    EXPECT_THAT(tablesOf(*store), ElementsAre("TWO$"));  // a workbook needs a sheet
    EXPECT_TRUE(store->layout("TWO$").fields.empty());
    makeAll(*store, "TWO");
    EXPECT_EQ(fieldsOf(*store, "TWO$"), kAllFields);
}

TEST(ExcelWrite, aReaderAndAWriterDoNotShareAFile)
{
    MemoryFileSystem files;
    createFile(files);
    const auto writer = openStore(files);
    EXPECT_EQ(errorOf([&] { openStore(files, true); }), 3045);
}

TEST(ExcelWrite, datesOfThe1904SystemAreKept)
{
    BookFile file = book();
    file.global(0x22, words({1}));
    file.text(0, 0, "DAY").number(1, 0, 0, 16);
    MemoryFileSystem files;
    files.put(kFile, file.end());
    {
        const auto store = openStore(files);
        EXPECT_THAT(rowsOf(*store, "Sheet1$"), ElementsAre("1904-01-01"));
        const auto writer = store->writer("Sheet1$");
        writer->insert(row({day("2004-02-29")}));
        EXPECT_EQ(errorOf([&] { writer->insert(row({day("1903-12-31")})); }), 3421);
        store->commit();
    }
    EXPECT_THAT(rowsOf(*openStore(files, true), "Sheet1$"),
                ElementsAre("1904-01-01", "2004-02-29"));
}

TEST(ExcelWrite, withoutAHeaderTheFirstRowIsARecord)
{
    MemoryFileSystem files;
    files.put(kFile, book().number(0, 0, 1).number(1, 0, 2).end());
    {
        const auto store = openStore(files, false, "HDR=No");
        const auto writer = store->writer("Sheet1$");
        writer->update(0, std::array{FieldChange{0, ValueView::real(10)}});
        writer->insert(row({ValueView::real(3)}));
        store->commit();
    }
    EXPECT_THAT(rowsOf(*openStore(files, true, "HDR=No"), "Sheet1$"), ElementsAre("10", "2", "3"));
    EXPECT_EQ(errorOf([&] {
                  openStore(files, false, "IMEX=1")->writer("Sheet1$")->insert(row({text("x")}));
              }),
              3027);
}
