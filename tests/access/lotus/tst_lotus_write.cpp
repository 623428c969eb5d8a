// Worksheets written: records added and changed with all else kept, new files and sheets.
#include "tests/access/lotus/lotus_testing.h"

#include <cmath>
#include <map>

#include "access/formats/lotus/wk_records.h"
#include "access/storage/byte_reader.h"
#include "tests/support/faulty_disk.h"

using namespace velnor;
using namespace velnor::lotus_testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A record as text: its type and data in hex.
Lines recordsOf(const Bytes& bytes)
{
    Lines lines;
    for (std::size_t at = 0; at + 4 <= bytes.size();) {
        const std::size_t size = loadLE<std::uint16_t>(&bytes[at + 2]);
        std::string line;
        appendHex(line, std::span(bytes).subspan(at, 1));
        line += ' ';
        appendHex(line, std::span(bytes).subspan(at + 4, size));
        lines.push_back(line);
        at += 4 + size;
        if (line == "01 ")
            break;
    }
    return lines;
}

Lines ofType(const Lines& records, std::string_view type)
{
    Lines found;
    for (const std::string& record : records)
        if (record.starts_with(type))
            found.push_back(record);
    return found;
}

/// A sheet as a 1-2-3 program leaves it: NAME, PAID (a date), AMOUNT in rows 0 to 2, bounds of
/// columns, formats that reach behind the data, a graph and a tail.
Bytes sample()
{
    WkFile file;
    file.bytes[4 + 8] = 2;   // last row
    file.bytes[4 + 11] = 2;  // last column
    file.record(0x03, {1, 0, 0, 0, 1, 0});
    for (std::uint8_t column = 0; column < 3; ++column)
        file.record(0x1F, {0, column, 1, 0, 0, 0, 2, 0});
    file.record(0x05, Bytes(16)).record(0x06, {0, 0, 0, 0, 9});
    file.range("LIST", 0, 0, 0, 2, 2);
    file.record(0x0A, Bytes(26, 7)).record(0x11, Bytes(178, 3)).sheetName(0, "Pay");
    file.record(0x13, {0, 0, 1, 0, 0xFF, 0, 0, 0x40, 0xF9, 0, 5, 0x40});
    file.record(0x13, {0, 2, 2, 0, 0, 0, 1, 0});
    file.record(0x13, {0, 2, 3, 0, 0, 0, 2, 0});  // the first row behind the data
    file.record(0x13, {0, 1, 0, 0, 0x71, 0x40, 4, 0x40, 0x27, 0, 0, 0});
    file.label(0, 0, "NAME").label(0, 1, "PAID").label(0, 2, "AMOUNT");
    file.cell(0x16, 1, 0, {'^', 'A', 'n', 'n', 0}).whole(1, 1, 100).whole(1, 2, 5);
    file.label(2, 0, "Bob").whole(2, 1, 101).cell(0x19, 2, 2, real(2.5));
    Bytes bytes = file.end();
    const std::string tail = "old formats";
    bytes.insert(bytes.end(), tail.begin(), tail.end());
    return bytes;
}

class LotusWrite : public ::testing::Test {
protected:
    void start(const Bytes& bytes) { files.put(kFile, bytes); }
    template <class Work> void change(Work work)
    {
        const auto store = openStore(files);
        work(*store);
        store->commit();
    }
    Lines rows(std::string_view table = "Pay:") { return rowsOf(*openStore(files, true), table); }
    MemoryFileSystem files;
};

void insert(Store& store, std::string_view table, std::vector<ValueView> values)
{
    store.writer(table)->insert(values);
}

}  // namespace

TEST_F(LotusWrite, anAddedRecordTouchesNothingElse)
{
    start(sample());
    change([](Store& store) {
        insert(store, "Pay:", {words("Müller"), ValueView::date(2), ValueView::real(0.5)});
        insert(store, "Pay:", {words("Eve"), {}, ValueView::real(-16385)});
    });
    EXPECT_EQ(rows(), (Lines{"'Ann' 1900-04-09 5", "'Bob' 1900-04-10 2.5",
                             "'Müller' 1900-01-01 0.5", "'Eve' - -16385"}));
    const Bytes before = sample(), after = files.content(kFile);
    const Lines was = recordsOf(before), is = recordsOf(after);
    Lines kept;
    for (const std::string& record : was)
        if (std::find(is.begin(), is.end(), record) != is.end())
            kept.push_back(record);
    EXPECT_EQ(kept.size(), was.size() - 4);  // BOF and the bounds of the columns have grown
    EXPECT_THAT(ofType(is, "1f"),
                ElementsAre("1f 0000010000000400", "1f 0001010000000300", "1f 0002010000000400"));
    EXPECT_EQ(is[0].substr(3 + 16, 8), "04000002");
    EXPECT_EQ(ofType(is, "13"), ofType(was, "13"));  // row 3 had a date format already
    EXPECT_EQ(std::string(after.end() - 11, after.end()), "old formats");
    EXPECT_THAT(findingsOf(*openStore(files, true)), IsEmpty());
}

TEST_F(LotusWrite, newRowsGetTheFormatsOfTheRowAbove)
{
    start(sample());
    change([](Store& store) {
        for (int i = 0; i < 3; ++i)
            insert(store, "Pay:", {words("x"), ValueView::date(40000), ValueView::real(i)});
    });
    EXPECT_THAT(ofType(recordsOf(files.content(kFile)), "13"),
                ::testing::IsSupersetOf({"13 0002040000000300", "13 0002050000000400"}));
    EXPECT_EQ(rows().back(), "'x' 2009-07-06 2");
    EXPECT_THAT(findingsOf(*openStore(files, true)), IsEmpty());
}

TEST_F(LotusWrite, changedCellsKeepTheirPlaceAndAlignment)
{
    start(sample());
    change([](Store& store) {
        const auto writer = store.writer("Pay:");
        const FieldChange name{0, words("Anna")}, day{1, ValueView::date(40000)};
        writer->update(1, std::array{name, day});
        writer->update(2, std::array{FieldChange{0, ValueView()}});
    });
    EXPECT_EQ(rows(), (Lines{"'Anna' 2009-07-06 5", "- 1900-04-10 2.5"}));
    const Lines was = recordsOf(sample()), is = recordsOf(files.content(kFile));
    EXPECT_EQ(is.size(), was.size() - 1);
    EXPECT_THAT(is, ::testing::Contains("16 010000005e416e6e6100"));
    EXPECT_EQ(ofType(is, "13"), ofType(was, "13"));
    EXPECT_EQ(ofType(is, "1f"), ofType(was, "1f"));
}

TEST_F(LotusWrite, aNumberBecomesADateByItsFormat)
{
    start(sample());
    change([](Store& store) {
        const auto writer = store.writer("Pay:");
        writer->update(1, std::array{FieldChange{2, ValueView::real(7)}});
    });
    EXPECT_EQ(rows()[0], "'Ann' 1900-04-09 7");
    // A date where no format says so: the row gets a list of its own, the rows that copy it keep
    // their old one.
    WkFile file;
    file.record(0x13, {0, 0, 1, 0, 0xF1, 0, 0, 0x40, 0xF1, 0, 0, 0x40});
    file.record(0x13, {0, 2, 2, 0, 0, 0, 1, 0});
    file.label(0, 0, "A").label(0, 1, "D").whole(1, 0, 1).whole(2, 0, 2).whole(2, 1, 33);
    file.whole(3, 1, 3);
    Bytes bytes = file.end();
    start(bytes);
    change([](Store& store) {
        auto table = store.layout("A:");
        ASSERT_EQ(table.fields[1].type, FieldType::Double);
        store.writer("A:")->update(1, std::array{FieldChange{1, ValueView::date(50)}});
    });
    const Lines formats = ofType(recordsOf(files.content(kFile)), "13");
    EXPECT_THAT(formats, ElementsAre("13 00000100f1000040f9000040", "13 00000200f1000040f1000040"));
    EXPECT_THAT(findingsOf(*openStore(files, true)),
                ElementsAre("cell A:A3: it is outside the area that the file tells"));
}

TEST_F(LotusWrite, formulasAreNotChangedAndRecordsNotDeleted)
{
    start(sample());
    const auto store = openStore(files);
    const auto writer = store->writer("Pay:");
    EXPECT_EQ(errorOf([&] {
                  writer->update(2, std::array{FieldChange{2, ValueView::real(3)}});
              }),
              3251);
    writer->update(2, std::array{FieldChange{2, ValueView::real(2.5)}});  // what it shows
    EXPECT_EQ(errorOf([&] { writer->remove(1); }), 3617);
    EXPECT_EQ(
        errorOf([&] {
            writer->insert(std::array{words(std::string(512, 'x')), ValueView(), ValueView()});
        }),
        3163);
    EXPECT_EQ(errorOf([&] {
                  std::string text;
                  for (int i = 0; i < 200; ++i)
                      text += "漢";  // three bytes each
                  writer->insert(std::array{words(text), ValueView(), ValueView()});
              }),
              3163);
    store->commit();
    EXPECT_EQ(files.content(kFile), sample());
}

TEST_F(LotusWrite, aRangeGrowsWithItsTable)
{
    start(sample());
    change([](Store& store) {
        insert(store, "LIST", {words("Eve"), ValueView::date(40000), ValueView::real(1)});
    });
    EXPECT_EQ(rows("LIST").size(), 3u);
    EXPECT_EQ(rows("LIST").back(), "'Eve' 2009-07-06 1");
    EXPECT_THAT(ofType(recordsOf(files.content(kFile)), "09"),
                ElementsAre("09 00004c4953540000000000000000000000000000000003000002"));
    Bytes taken = sample();
    WkFile below;
    Bytes cell = below.label(3, 1, "below").bytes;
    cell.erase(cell.begin(), cell.begin() + 30);
    taken.insert(taken.end() - 11 - 4, cell.begin(), cell.end());
    start(taken);
    const auto store = openStore(files);
    EXPECT_EQ(errorOf([&] { insert(*store, "LIST", {words("Eve"), {}, {}}); }), 3434);
}

TEST_F(LotusWrite, newCellsOfASheetGoBeforeTheNextSheet)
{
    WkFile file;
    file.label(0, 0, "A").whole(1, 0, 1).label(0, 0, "B", 1).whole(1, 0, 2, 1);
    file.record(0x1C, Bytes(6));
    start(file.end());
    change([](Store& store) {
        insert(store, "A:", {ValueView::real(3)});
        insert(store, "B:", {ValueView::real(4)});
    });
    EXPECT_THAT(recordsOf(files.content(kFile)),
                ElementsAre(::testing::StartsWith("00"), "16 00000000274100", "18 010000000200",
                            "18 020000000600", "16 00000100274200", "18 010001000400",
                            "18 020001000800", "1c 000000000000", "01 "));
}

TEST_F(LotusWrite, theSheetsLastRowIsTheLast)
{
    WkFile file;
    file.label(8189, 0, "A").whole(8190, 0, 1);
    start(file.end());
    const auto store = openStore(files);
    insert(*store, "A:", {ValueView::real(2)});
    EXPECT_EQ(errorOf([&] { insert(*store, "A:", {ValueView::real(3)}); }), 3437);
    store->commit();
    EXPECT_EQ(rowsOf(*store, "A:"), (Lines{"1", "2"}));
}

TEST_F(LotusWrite, aNewFileTakesTables)
{
    createFile(files);
    change([](Store& store) {
        EXPECT_EQ(tablesOf(store), (Lines{"A:"}));
        store.createTable(layoutOf(
            "Orders", {fieldDef("NAME", FieldType::Text, 40), fieldDef("DAY", FieldType::Date),
                       fieldDef("PRICE", FieldType::Currency), fieldDef("QTY", FieldType::Long),
                       fieldDef("NOTE", FieldType::Memo)}));
        EXPECT_EQ(fieldsOf(store, "Orders"),
                  (Lines{"NAME Text", "DAY Date", "PRICE Currency", "QTY Double", "NOTE Memo"}));
    });
    // Types are known before there are values.
    EXPECT_EQ(fieldsOf(*openStore(files, true), "Orders:"),
              (Lines{"NAME Text", "DAY Date", "PRICE Currency", "QTY Double", "NOTE Memo"}));
    change([](Store& store) {
        for (int i = 0; i < 100; ++i)
            insert(store, "Orders",
                   {words("name"),
                    ValueView::date(38046 + i),
                    ValueView::currency(12345),
                    ValueView::integer(i),
                    {}});
        store.createTable(layoutOf("Second", {fieldDef("T", FieldType::Date)}));
        insert(store, "Second", {ValueView::date(0.25)});
        insert(store, "Second", {ValueView::date(36526.5)});
    });
    EXPECT_EQ(tablesOf(*openStore(files, true)), (Lines{"Orders:", "Second:"}));
    EXPECT_EQ(rows("Orders").size(), 100u);
    EXPECT_EQ(rows("Orders")[99], "'name' 2004-06-07 1.2345 99 -");
    EXPECT_EQ(rows("Second"), (Lines{"1899-12-30 06:00:00", "2000-01-01 12:00:00"}));
    EXPECT_THAT(findingsOf(*openStore(files, true)), IsEmpty());
}

TEST_F(LotusWrite, theWordTellsTheKindOfANewFile)
{
    const lotus::LotusDriver driver;
    CreateRequest request;
    request.name = kFile;
    request.connectWord = "Lotus WK3;";
    driver.create(files, request);
    EXPECT_EQ(files.content(kFile)[4], 0x00);
    EXPECT_THAT(tablesOf(*openStore(files)), ElementsAre("A:"));
    request.connectWord = "Lotus WK1;";
    EXPECT_EQ(errorOf([&] { driver.create(files, request); }), 3251);
    createFile(files);
    EXPECT_EQ(files.content(kFile)[4], 0x02);
}

TEST_F(LotusWrite, booleansAreOneAndZero)
{
    createFile(files);
    change([](Store& store) {
        store.createTable(layoutOf("Flags", {fieldDef("F", FieldType::Boolean)}));
        insert(store, "Flags", {ValueView::boolean(true)});
        insert(store, "Flags", {ValueView::boolean(false)});
        EXPECT_EQ(rowsOf(store, "Flags"), (Lines{"True", "False"}));
    });
    EXPECT_EQ(rows("Flags"), (Lines{"1", "0"}));
}

TEST_F(LotusWrite, tablesComeAndGo)
{
    createFile(files);
    const Bytes fresh = files.content(kFile);
    const auto text = [](std::string name) {
        return layoutOf(std::move(name), {fieldDef("X", FieldType::Text, 9)});
    };
    change([&](Store& store) {
        for (const char* name : {"One", "Two", "Three"})
            store.createTable(text(name));
        EXPECT_EQ(errorOf([&] { store.createTable(text("two")); }), 3010);
        for (const char* name : {"AB", "a1", " x", "x ", "sixteen letters!", "a:b", ""})
            EXPECT_EQ(errorOf([&] { store.createTable(text(name)); }), 3125) << name;
        EXPECT_EQ(errorOf([&] {
                      store.createTable(layoutOf("Bin", {fieldDef("B", FieldType::LongBinary)}));
                  }),
                  3251);
        store.dropTable("Two");
        EXPECT_EQ(tablesOf(store), (Lines{"One:", "Three:"}));
        store.dropTable("Three:");
        EXPECT_EQ(tablesOf(store), (Lines{"One:"}));
        EXPECT_EQ(errorOf([&] { store.dropTable("Three:"); }), 3078);
        store.createTable(text("Two"));
        insert(store, "Two", {words("y")});
    });
    EXPECT_EQ(rows("Two"), (Lines{"'y'"}));
    const Lines records = recordsOf(files.content(kFile));
    EXPECT_EQ(ofType(records, "05").size(), 2u);  // the emptied sheet was taken again
    EXPECT_EQ(ofType(records, "06").size(), 2u);
    EXPECT_THAT(findingsOf(*openStore(files, true)), IsEmpty());
    change([](Store& store) {
        store.dropTable("Two");
        store.dropTable("One");
        EXPECT_EQ(tablesOf(store), (Lines{"A:"}));
    });
    EXPECT_THAT(recordsOf(files.content(kFile)), ::testing::Not(::testing::Contains("1b")));
}

TEST_F(LotusWrite, aDroppedSheetThatOthersPointAtStaysEmpty)
{
    start(sample());
    change([](Store& store) { store.dropTable("Pay:"); });
    EXPECT_EQ(tablesOf(*openStore(files, true)), (Lines{"A:", "LIST"}));
    const Lines is = recordsOf(files.content(kFile));
    EXPECT_EQ(ofType(is, "11"), ofType(recordsOf(sample()), "11"));
    EXPECT_THAT(ofType(is, "16"), IsEmpty());
    EXPECT_EQ(ofType(is, "05").size(), 1u);
}

TEST_F(LotusWrite, whatIsWrittenIsSeenByOpenCursors)
{
    start(sample());
    const auto store = openStore(files);
    const auto cursor = store->cursor("Pay:", std::nullopt);
    ASSERT_TRUE(cursor->last());
    EXPECT_FALSE(cursor->next());
    insert(*store, "Pay:", {words("Eve"), {}, {}});
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(shown(cursor->field(0)), "'Eve'");
    store->commit();
    EXPECT_EQ(shown(cursor->field(0)), "'Eve'");
    insert(*store, "Pay:", {words("Fay"), {}, {}});
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "'Fay'");
}

TEST_F(LotusWrite, aFileInUseIsRefused)
{
    start(sample());
    const auto one = openStore(files);
    EXPECT_EQ(errorOf([&] { openStore(files, true); }), 3045);
    insert(*one, "Pay:", {words("Eve"), {}, {}});
    one->commit();  // the new file is locked as the old one was
    EXPECT_EQ(errorOf([&] { openStore(files, true); }), 3045);
}

namespace {

void work(FileSystem& disk)
{
    const auto store = openStore(disk);
    const auto writer = store->writer("Pay:");
    for (int i = 0; i < 300; ++i)
        writer->insert(std::array{words("more"), ValueView::date(40000 + i), ValueView::real(i)});
    store->commit();
}

}  // namespace

TEST(LotusFaults, afterAPowerCutOrAFailureTheFileIsOldOrNew)
{
    for (const bool cut : {true, false}) {
        int old = 0;
        for (long n = 1;; ++n) {
            velnor::testing::FaultyDisk disk(static_cast<unsigned>(n));
            disk.put(kFile, sample());
            cut ? disk.cutAt(n) : disk.failAt(n, RunErrorNumber::DiskFull);
            int error = 0;
            try {
                error = errorOf([&] { work(disk); });
            } catch (const RunError&) {
                error = -1;
            }
            if (!(cut ? disk.wasCut() : disk.hasFailed()))
                break;
            if (!cut) {
                EXPECT_EQ(error, 3026);
            }
            disk.restart();
            const std::size_t count = rowsOf(*openStore(disk), "Pay:").size();
            ASSERT_TRUE(count == 2 || count == 302) << "at change " << n << ": " << count;
            old += count == 2;
            work(disk);  // and it can be written again
            ASSERT_EQ(rowsOf(*openStore(disk), "Pay:").size(), count + 300);
        }
        EXPECT_GE(old, 2);
    }
}

TEST(LotusFaults, afterAFailedCommitTheStoreShowsTheFile)
{
    velnor::testing::FaultyDisk disk;
    disk.put(kFile, sample());
    const auto store = openStore(disk);
    const auto cursor = store->cursor("Pay:", std::nullopt);
    const auto writer = store->writer("Pay:");
    writer->insert(std::array{words("lost"), ValueView(), ValueView()});
    disk.failAt(1, RunErrorNumber::DiskFull);
    EXPECT_EQ(errorOf([&] { store->commit(); }), 3026);
    EXPECT_EQ(store->recordCount("Pay:"), 2);
    ASSERT_TRUE(cursor->last());
    EXPECT_EQ(shown(cursor->field(0)), "'Bob'");
    writer->insert(std::array{words("kept"), ValueView(), ValueView()});
    store->commit();
    EXPECT_EQ(rowsOf(*store, "Pay:").back(), "'kept' - -");
}
