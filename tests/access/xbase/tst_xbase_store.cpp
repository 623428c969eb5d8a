// A folder of tables through the driver.
#include "tests/access/xbase/xbase_testing.h"

#include <numeric>

using namespace velnor;
using namespace velnor::xbase_testing;

namespace {

TableLayout orders()
{
    return layoutOf("ORDERS",
                    {fieldDef("Name", FieldType::Text, 10), numberDef("Amount", 8, 2),
                     fieldDef("Day", FieldType::Date), fieldDef("Paid", FieldType::Boolean),
                     fieldDef("Note", FieldType::Memo)});
}

void addOrder(RowWriter& writer, std::string_view name, std::int64_t cents)
{
    const ValueView values[] = {text(name),
                                ValueView::decimal(cents < 0, 0, cents < 0 ? -cents : cents, 2),
                                ValueView::date(38309), ValueView::boolean(true), text("a note")};
    writer.insert(values);
}

/// A store with the table NUMBERS: one N field that counts from 1.
std::unique_ptr<Store> numbersStore(MemoryFileSystem& files, int records)
{
    auto store = openStore(files);
    store->createTable(layoutOf("NUMBERS", {numberDef("N", 8, 0)}));
    const auto writer = store->writer("NUMBERS");
    for (int i = 1; i <= records; ++i)
        writer->insert(std::array{ValueView::integer(i)});
    return store;
}

}  // namespace

TEST(XbaseStore, recordsComeBackAfterReopening)
{
    for (const char* word :
         {"dBASE III;", "dBASE IV;", "dBASE 5.0;", "FoxPro 2.6;", "FoxPro 3.0;"}) {
        MemoryFileSystem files;
        {
            const auto store = openStore(files, word);
            store->createTable(orders());
            const auto writer = store->writer("ORDERS");
            addOrder(*writer, "Miller", 1250);
            addOrder(*writer, "Smith", -99);
            writer->insert(std::vector<ValueView>(5));
            store->commit();
        }
        const auto store = openStore(files, word, true);
        EXPECT_EQ(
            rowsOf(*store, "orders"),
            (std::vector<std::string>{"'Miller' 12.5 2004-11-18 True 'a note'",
                                      "'Smith' -0.99 2004-11-18 True 'a note'", "'' - - - -"}))
            << word;
        EXPECT_EQ(faultsOf(*store, "ORDERS"), std::vector<std::string>{}) << word;
        EXPECT_EQ(store->recordCount("ORDERS"), 3);
    }
}

TEST(XbaseStore, namesAreBareAndBlindToCase)
{
    MemoryFileSystem files;
    openStore(files)->createTable(orders());
    files.put("C:\\zeta.dbf", files.content("C:\\ORDERS.DBF"));
    files.put("C:\\readme.txt", {});
    files.makeFolder("C:\\FOLDER.DBF");
    const auto store = openStore(files, "dBASE 5.0;", true);
    std::vector<std::string> names;
    for (const TableEntry& entry : store->catalogue())
        names.push_back(entry.name);
    EXPECT_EQ(names, (std::vector<std::string>{"ORDERS", "zeta"}));
    EXPECT_EQ(store->layout("Zeta").name, "zeta");
    for (const char* name : {"ORDERS.DBF", "NONE", "", "FOLDER", "..\\ORDERS", "C:\\ORDERS", "*"})
        EXPECT_EQ(errorOf([&] { store->layout(name); }), 3078) << name;
}

TEST(XbaseStore, aFolderThatIsNotThereIs3044)
{
    MemoryFileSystem files;
    const xbase::XbaseDriver driver;
    OpenRequest request;
    request.name = "C:\\NOWHERE";
    request.connectWord = "dBASE 5.0;";
    EXPECT_EQ(errorOf([&] { driver.open(files, request); }), 3044);
}

TEST(XbaseStore, theDbaseWordsRefuseFoxProKindsAndFoxProOpensAll)
{
    MemoryFileSystem files;
    openStore(files, "FoxPro 3.0;")->createTable(orders());
    EXPECT_EQ(errorOf([&] { openStore(files)->layout("ORDERS"); }), 3274);
    EXPECT_EQ(errorOf([&] { openStore(files, "FoxPro 2.6;")->layout("ORDERS"); }), 0);
    MemoryFileSystem others;
    openStore(others, "dBASE 5.0;")->createTable(orders());
    EXPECT_EQ(errorOf([&] { openStore(others, "FoxPro 3.0;")->layout("ORDERS"); }), 0);
}

TEST(XbaseStore, anEmptyOrForeignFileIs3274)
{
    MemoryFileSystem files;
    files.put("C:\\EMPTY.DBF", {});
    const std::string page = "<html><body>This is a page with a wrong name.</body></html>";
    files.put("C:\\PAGE.DBF", {reinterpret_cast<const std::uint8_t*>(page.data()), page.size()});
    const auto store = openStore(files, "FoxPro 3.0;", true);
    for (const char* name : {"EMPTY", "PAGE"})
        EXPECT_EQ(errorOf([&] { store->layout(name); }), 3274) << name;
}

TEST(XbaseStore, deletedRecordsAreHiddenAndStayInTheFile)
{
    MemoryFileSystem files;
    auto store = numbersStore(files, 5);
    store->writer("NUMBERS")->remove(1);
    store->writer("NUMBERS")->remove(4);
    store->commit();
    store = openStore(files, "dBASE 5.0;", true);
    EXPECT_EQ(rowsOf(*store, "NUMBERS"), (std::vector<std::string>{"2", "3", "5"}));
    EXPECT_EQ(store->recordCount("NUMBERS"), 3);
    EXPECT_EQ(files.content("C:\\NUMBERS.DBF")[4], 5);
    const auto cursor = store->cursor("NUMBERS", std::nullopt);
    EXPECT_FALSE(cursor->moveTo(4));
    EXPECT_TRUE(cursor->moveTo(5));
    EXPECT_FALSE(cursor->moveTo(6));
    EXPECT_FALSE(cursor->moveTo(0));
}

TEST(XbaseStore, theOtherEndOfAWalkIsOneStepAway)
{
    MemoryFileSystem files;
    const auto store = numbersStore(files, 3);
    const auto cursor = store->cursor("NUMBERS", std::nullopt);
    ASSERT_TRUE(cursor->last());
    EXPECT_FALSE(cursor->next());
    EXPECT_TRUE(cursor->previous());
    EXPECT_EQ(cursor->row(), 3u);
    ASSERT_TRUE(cursor->first());
    EXPECT_FALSE(cursor->previous());
    EXPECT_TRUE(cursor->next());
    EXPECT_EQ(cursor->row(), 1u);
    EXPECT_EQ(errorOf([&] { cursor->field(7); }), 3021);
}

TEST(XbaseStore, ordinalsCountTheRecordsThatShow)
{
    MemoryFileSystem files;
    const auto store = numbersStore(files, 5000);
    const auto writer = store->writer("NUMBERS");
    const auto cursor = store->cursor("NUMBERS", std::nullopt);
    ASSERT_TRUE(cursor->moveToOrdinal(4321));
    EXPECT_EQ(cursor->row(), 4322u);
    for (RowId row = 3; row <= 5000; row += 3)
        writer->remove(row);
    writer->insert(std::array{ValueView::integer(5001)});
    std::int64_t place = 0;
    for (bool there = cursor->first(); there; there = cursor->next(), ++place) {
        if (place % 97 == 0) {
            const RowId row = cursor->row();
            ASSERT_EQ(cursor->ordinal(), place);
            ASSERT_TRUE(cursor->moveToOrdinal(place));
            ASSERT_EQ(cursor->row(), row);
        }
    }
    EXPECT_EQ(place, store->recordCount("NUMBERS"));
    EXPECT_EQ(place, 5001 - 1666);
    EXPECT_FALSE(cursor->moveToOrdinal(place));
    EXPECT_FALSE(cursor->moveToOrdinal(-1));
}

TEST(XbaseStore, aCursorSeesWhatAWriterDidAtItsNextMove)
{
    MemoryFileSystem files;
    const auto store = numbersStore(files, 4);
    const auto cursor = store->cursor("NUMBERS", std::nullopt);
    const auto writer = store->writer("NUMBERS");
    ASSERT_TRUE(cursor->first());
    writer->update(2, std::array{FieldChange{0, ValueView::integer(22)}});
    writer->remove(3);
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "22");
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(cursor->row(), 4u);
    EXPECT_FALSE(cursor->next());
    writer->insert(std::array{ValueView::integer(5)});
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(shown(cursor->field(0)), "5");
}

TEST(XbaseStore, walkingBackAndForthOverManyBlocksGivesTheSame)
{
    MemoryFileSystem files;
    const auto store = numbersStore(files, 100000);
    const auto cursor = store->cursor("NUMBERS", std::nullopt);
    std::int64_t n = 0;
    for (bool there = cursor->first(); there; there = cursor->next())
        ASSERT_EQ(cursor->field(0).asInteger(), ++n);
    ASSERT_EQ(n, 100000);
    for (bool there = cursor->last(); there; there = cursor->previous())
        ASSERT_EQ(cursor->field(0).asInteger(), n--);
    ASSERT_EQ(n, 0);
}

TEST(XbaseStore, aValueThatDoesNotFitLeavesTheRecordAsItWas)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(orders());
    const auto writer = store->writer("ORDERS");
    addOrder(*writer, "Miller", 1250);
    store->commit();
    const auto before = files.content("C:\\ORDERS.DBF");
    const auto memoBefore = files.content("C:\\ORDERS.DBT");
    const FieldChange tooLarge[] = {{4, text("another, much longer note")},
                                    {1, ValueView::real(1e12)}};
    EXPECT_EQ(errorOf([&] { writer->update(1, tooLarge); }), 3163);
    EXPECT_EQ(errorOf([&] { addOrder(*writer, "longer than ten", 1); }), 3163);
    EXPECT_EQ(errorOf([&] { writer->update(1, std::array{FieldChange{3, text("yes")}}); }), 3421);
    store->commit();
    EXPECT_EQ(files.content("C:\\ORDERS.DBF"), before);
    EXPECT_EQ(files.content("C:\\ORDERS.DBT"), memoBefore);
    EXPECT_EQ(store->recordCount("ORDERS"), 1);
}

TEST(XbaseStore, aChangeKeepsTheBytesOfOtherFields)
{
    MemoryFileSystem files;
    auto store = openStore(files);
    store->createTable(layoutOf("T", {numberDef("A", 8, 2), fieldDef("B", FieldType::Text, 5)}));
    store->writer("T")->insert(std::array{ValueView::integer(1), text("b")});
    store->commit();
    store.reset();
    auto content = files.content("C:\\T.DBF");
    const std::size_t at = content[8];
    std::copy_n("1,200.00  ", 10, content.begin() + static_cast<std::ptrdiff_t>(at + 1));
    files.put("C:\\T.DBF", content);
    store = openStore(files);
    store->writer("T")->update(1, std::array{FieldChange{1, text("new")}});
    store->commit();
    const auto after = files.content("C:\\T.DBF");
    EXPECT_TRUE(std::equal(content.begin() + static_cast<std::ptrdiff_t>(at),
                           content.begin() + static_cast<std::ptrdiff_t>(at + 11),
                           after.begin() + static_cast<std::ptrdiff_t>(at)));
    EXPECT_EQ(rowsOf(*store, "T"), std::vector<std::string>{"1.2 'new'"});
}

TEST(XbaseStore, deletedRecordsAndThoseBehindTheEndCannotBeChanged)
{
    MemoryFileSystem files;
    const auto store = numbersStore(files, 2);
    const auto writer = store->writer("NUMBERS");
    writer->remove(1);
    EXPECT_EQ(errorOf([&] { writer->remove(1); }), 3021);
    EXPECT_EQ(errorOf([&] { writer->update(1, {}); }), 3021);
    EXPECT_EQ(errorOf([&] { writer->update(3, {}); }), 3021);
    EXPECT_EQ(errorOf([&] { writer->remove(0); }), 3021);
}

TEST(XbaseStore, textGoesThroughTheCodePageAndAQuestionMarkStandsForTheRest)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        store->createTable(layoutOf("T", {fieldDef("A", FieldType::Text, 10)}));
        store->writer("T")->insert(std::array{text("\xC3\xA4\xE2\x82\xAC")});  // a umlaut, euro
        store->commit();
        EXPECT_EQ(rowsOf(*store, "T"), std::vector<std::string>{"'\xC3\xA4?'"});
    }
    const auto content = files.content("C:\\T.DBF");
    EXPECT_EQ(content[content.size() - 11], 0x84);  // of page 437
    EXPECT_EQ(rowsOf(*openStore(files, "dBASE 5.0;", true, "1252"), "T"),
              std::vector<std::string>{"'\xE2\x80\x9E?'"});
}

TEST(XbaseStore, fieldNamesAreCutToTenCharactersAndMustThenDiffer)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(layoutOf("T", {fieldDef("Customer Number", FieldType::Text, 5),
                                      fieldDef("1st", FieldType::Text, 5)}));
    EXPECT_EQ(store->layout("T").fields[0].name, "CUSTOMER_N");
    EXPECT_EQ(store->layout("T").fields[1].name, "F1ST");
    EXPECT_EQ(errorOf([&] {
                  store->createTable(layoutOf("U", {fieldDef("CustomerNumber", FieldType::Text, 5),
                                                    fieldDef("customerName", FieldType::Text, 5),
                                                    fieldDef("CustomerNuts", FieldType::Text, 5)}));
              }),
              3191);
    EXPECT_FALSE(files.exists("C:\\U.DBF"));
}

TEST(XbaseStore, tablesThatCannotBeMadeAreRefused)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(orders());
    EXPECT_EQ(errorOf([&] { store->createTable(orders()); }), 3010);
    TableLayout layout = orders();
    for (const char* name : {"", "A.B", "A\\B", "A:B"}) {
        layout.name = name;
        EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3125) << name;
    }
    layout = layoutOf("MANY", {});
    for (int i = 0; i < 256; ++i)
        layout.fields.push_back(
            fieldDef(std::string("F").append(std::to_string(i)), FieldType::Boolean));
    EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3190);
    for (FieldDef& field : layout.fields)
        field.type = FieldType::Text;
    layout.fields.pop_back();
    EXPECT_EQ(errorOf([&] { store->createTable(layout); }), 3047);
    EXPECT_EQ(errorOf([&] {
                  openStore(files, "dBASE III;")
                      ->createTable(layoutOf("B", {fieldDef("A", FieldType::LongBinary)}));
              }),
              3251);
    EXPECT_EQ(errorOf([&] { openStore(files, "dBASE 5.0;", true)->createTable(layout); }), 3027);
}

TEST(XbaseStore, droppingATableTakesItsCompanionsAndNoOthers)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(orders());
    TableLayout other = orders();
    other.name = "ORDERS2";
    store->createTable(other);
    addOrder(*store->writer("ORDERS"), "x", 1);
    store->dropTable("orders");
    EXPECT_FALSE(files.exists("C:\\ORDERS.DBF"));
    EXPECT_FALSE(files.exists("C:\\ORDERS.DBT"));
    EXPECT_TRUE(files.exists("C:\\ORDERS2.DBF"));
    EXPECT_TRUE(files.exists("C:\\ORDERS2.DBT"));
    EXPECT_EQ(errorOf([&] { store->dropTable("ORDERS"); }), 3078);
    store->createTable(orders());
    EXPECT_EQ(store->recordCount("ORDERS"), 0);
}

TEST(XbaseStore, aMissingMemoFileGivesNullAndForbidsWriting)
{
    MemoryFileSystem files;
    {
        const auto store = openStore(files);
        store->createTable(orders());
        addOrder(*store->writer("ORDERS"), "Miller", 1);
        store->commit();
    }
    files.remove("C:\\ORDERS.DBT");
    const auto store = openStore(files);
    EXPECT_EQ(rowsOf(*store, "ORDERS"),
              std::vector<std::string>{"'Miller' 0.01 2004-11-18 True -"});
    EXPECT_FALSE(store->layout("ORDERS").updatable);
    EXPECT_EQ(errorOf([&] { store->writer("ORDERS"); }), 3027);
    EXPECT_EQ(faultsOf(*store, "ORDERS"),
              std::vector<std::string>{"header: the memo file is missing"});
}

TEST(XbaseStore, aTableWithIndexFilesIsNotWrittenWhileNobodyKeepsThem)
{
    MemoryFileSystem files;
    openStore(files)->createTable(layoutOf("T", {numberDef("A", 8, 0)}));
    auto content = files.content("C:\\T.DBF");
    content[28] = 1;
    files.put("C:\\T.DBF", content);
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 0);  // the flag alone is stale
    files.put("C:\\T.MDX", content);
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 3800);
    EXPECT_EQ(rowsOf(*openStore(files), "T").size(), 0u);
}

TEST(XbaseStore, anInfFileTellsOfIndexFiles)
{
    MemoryFileSystem files;
    openStore(files)->createTable(layoutOf("T", {numberDef("A", 8, 0)}));
    const auto put = [&files](const char* path, std::string_view t) {
        files.put(path, {reinterpret_cast<const std::uint8_t*>(t.data()), t.size()});
    };
    put("C:\\T.INF", "[dBASE III]\r\nNDX1=C:\\OLD\\byname.ndx\r\n");
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 0);  // it is not there
    put("C:\\BYNAME.NDX", "x");
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 3800);
    put("C:\\T.INF", "[Version]\r\nNDX1=byname.ndx\r\n");  // of some driver's setup
    EXPECT_EQ(errorOf([&] { openStore(files)->writer("T"); }), 0);
    openStore(files)->dropTable("T");
    EXPECT_TRUE(files.exists("C:\\T.INF"));
}

TEST(XbaseStore, aDroppedTableTakesItsListOfIndexFiles)
{
    MemoryFileSystem files;
    openStore(files)->createTable(layoutOf("T", {numberDef("A", 8, 0)}));
    const std::string_view inf = "[dBASE III]\r\nNDX1=byname.ndx\r\n";
    files.put("C:\\T.INF", {reinterpret_cast<const std::uint8_t*>(inf.data()), inf.size()});
    openStore(files)->dropTable("T");
    EXPECT_FALSE(files.exists("C:\\T.INF"));
}

TEST(XbaseStore, aFileShorterThanItsCountGivesTheRecordsThatAreThere)
{
    MemoryFileSystem files;
    numbersStore(files, 100)->commit();
    auto content = files.content("C:\\NUMBERS.DBF");
    content.resize(content.size() - 500);
    files.put("C:\\NUMBERS.DBF", content);
    const auto store = openStore(files, "dBASE 5.0;", true);
    const auto rows = rowsOf(*store, "NUMBERS");
    EXPECT_LT(rows.size(), 60u);
    EXPECT_EQ(static_cast<std::int64_t>(rows.size()), store->recordCount("NUMBERS"));
    EXPECT_EQ(faultsOf(*store, "NUMBERS").size(), 1u);
}

TEST(XbaseStore, visualFoxProKeepsNullOfNumbersByItsFlags)
{
    MemoryFileSystem files;
    const auto layout =
        layoutOf("T", {fieldDef("I", FieldType::Long), fieldDef("D", FieldType::Double),
                       fieldDef("C", FieldType::Currency), fieldDef("T", FieldType::Date)});
    {
        const auto store = openStore(files, "FoxPro 3.0;");
        store->createTable(layout);
        const auto writer = store->writer("T");
        writer->insert(std::vector<ValueView>(4));
        writer->insert(std::array{ValueView::integer(-5), ValueView::real(0.1),
                                  ValueView::currency(-12345), ValueView::date(38309.25)});
        const FieldChange changes[] = {{0, ValueView::integer(7)}, {2, ValueView::currency(1)}};
        writer->update(1, changes);
        writer->update(2, std::array{FieldChange{1, ValueView::null()}});
        store->commit();
    }
    EXPECT_EQ(rowsOf(*openStore(files, "FoxPro 3.0;", true), "T"),
              (std::vector<std::string>{"7 - 0.0001 -", "-5 - -1.2345 2004-11-18 06:00:00"}));
    EXPECT_EQ(files.content("C:\\T.DBF")[0], 0x30);
}

TEST(XbaseStore, autonumbersGoOnAfterReopening)
{
    MemoryFileSystem files;
    FieldDef counter = fieldDef("ID", FieldType::Long);
    counter.autonumber = true;
    const auto insert = [&](Store& store, ValueView v) {
        store.writer("T")->insert(std::array{v, text("x")});
        store.commit();
    };
    {
        const auto store = openStore(files, "FoxPro 3.0;");
        store->createTable(layoutOf("T", {counter, fieldDef("A", FieldType::Text, 3)}));
        insert(*store, ValueView::null());
        insert(*store, ValueView::null());
    }
    {
        const auto store = openStore(files, "FoxPro 3.0;");
        insert(*store, ValueView::null());
        insert(*store, ValueView::integer(10));
        insert(*store, ValueView::null());
    }
    const auto store = openStore(files, "FoxPro 3.0;", true);
    EXPECT_TRUE(store->layout("T").fields[0].autonumber);
    EXPECT_EQ(rowsOf(*store, "T"),
              (std::vector<std::string>{"1 'x'", "2 'x'", "3 'x'", "10 'x'", "11 'x'"}));
    EXPECT_EQ(files.content("C:\\T.DBF")[0], 0x31);
}

TEST(XbaseStore, aMemoIsChangedRemovedAndMadeAnew)
{
    MemoryFileSystem files;
    auto store = openStore(files);
    store->createTable(
        layoutOf("T", {fieldDef("M", FieldType::Memo), fieldDef("G", FieldType::LongBinary)}));
    auto writer = store->writer("T");
    const std::uint8_t picture[] = {0, 26, 255, 1};
    writer->insert(std::array{text("first"), ValueView::bytes(picture)});
    writer->update(1, std::array{FieldChange{0, text(std::string(2000, 'x'))}});
    writer->insert(std::array{text("second"), ValueView::null()});
    writer->update(1, std::array{FieldChange{0, ValueView::null()}});
    EXPECT_EQ(rowsOf(*store, "T"), (std::vector<std::string>{"- 001aff01", "'second' -"}));
    writer->update(1, std::array{FieldChange{0, text("anew")}});
    store->commit();
    writer.reset();
    store = openStore(files, "FoxPro 3.0;", true);
    EXPECT_EQ(rowsOf(*store, "T"), (std::vector<std::string>{"'anew' 001aff01", "'second' -"}));
    EXPECT_EQ(faultsOf(*store, "T"), std::vector<std::string>{});
}

TEST(XbaseStore, viewsOfSeveralFieldsLiveTogether)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(
        layoutOf("T", {fieldDef("A", FieldType::Text, 8), fieldDef("B", FieldType::Text, 8),
                       fieldDef("M", FieldType::Memo), fieldDef("N", FieldType::Memo)}));
    store->writer("T")->insert(
        std::array{text("\xC3\xA4"), text("\xC3\xB6"), text("m\xC3\xA4"), text("n")});
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->first());
    const ValueView a = cursor->field(0), m = cursor->field(2), b = cursor->field(1),
                    n = cursor->field(3);
    EXPECT_EQ(shown(a) + shown(b) + shown(m) + shown(n), "'\xC3\xA4''\xC3\xB6''m\xC3\xA4''n'");
}

TEST(XbaseStore, afterARolledBackCommitTheTableIsAsItWas)
{
    MemoryFileSystem files(40000);
    const auto store = numbersStore(files, 10);
    store->commit();
    const auto writer = store->writer("NUMBERS");
    for (int i = 11; i <= 10000; ++i)
        writer->insert(std::array{ValueView::integer(i)});
    EXPECT_EQ(errorOf([&] { store->commit(); }), 3026);
    EXPECT_EQ(store->recordCount("NUMBERS"), 10);
    writer->insert(std::array{ValueView::integer(11)});
    store->commit();
    EXPECT_EQ(rowsOf(*store, "NUMBERS").back(), "11");
    EXPECT_EQ(rowsOf(*store, "NUMBERS").size(), 11u);
}

TEST(XbaseStore, infoNamesTheKindTheCountsAndTheMemoFile)
{
    MemoryFileSystem files;
    const auto store = openStore(files);
    store->createTable(orders());
    addOrder(*store->writer("ORDERS"), "x", 1);
    std::map<std::string, std::string> facts;
    for (const auto& [name, value] : store->info("ORDERS"))
        facts[name] = value;
    EXPECT_EQ(facts["Version byte"], "0x8B");
    EXPECT_EQ(facts["Records with deleted ones"], "1");
    EXPECT_EQ(facts["Code page"], "437 (mark 0x1B)");
    EXPECT_EQ(facts["Memo file"], "DBT of dBASE IV, blocks of 512 bytes");
}
