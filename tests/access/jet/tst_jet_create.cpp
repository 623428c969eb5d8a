// New databases and new tables, judged by outside readers.
#include <algorithm>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

class Versions : public ::testing::TestWithParam<int> {
protected:
    int options() const { return GetParam() == 3 ? 32 : 0; }
    void create(const std::string& password = {})
    {
        CreateRequest request;
        request.name = kTestFile;
        request.locale = ";LANGID=0x0409;CP=1252;COUNTRY=0";
        request.options = options();
        request.password = password;
        driver_.create(files_, request);
    }
    std::vector<std::uint8_t> content() const { return files_.content(kTestFile); }
    void expectSound(const std::string& password = {})
    {
        const Verdict verdict = outsideCheck(content(), password);
        if (verdict.available) {
            EXPECT_TRUE(verdict.sound) << verdict.output;
        }
    }

    MemoryFileSystem files_;
    jet::JetDriver driver_;
};

TableLayout everyType(int version)
{
    TableLayout layout;
    layout.name = "Every Type";
    const auto add = [&](const char* name, FieldType type, int size = 0) -> FieldDef& {
        FieldDef field;
        field.name = name;
        field.type = type;
        field.size = size;
        layout.fields.push_back(field);
        return layout.fields.back();
    };
    add("ID", FieldType::Long).autonumber = true;
    add("Name", FieldType::Text, 40).required = true;
    add("Flag", FieldType::Boolean);
    add("Small", FieldType::Byte);
    add("Int", FieldType::Integer);
    add("Money", FieldType::Currency).defaultValue = "0";
    add("Sng", FieldType::Single);
    add("Dbl", FieldType::Double);
    add("When", FieldType::Date).description = "When it was";
    add("Notes", FieldType::Memo).allowZeroLength = false;
    add("Bin", FieldType::Binary, 20);
    add("Guid", FieldType::Guid);
    add("Ole", FieldType::LongBinary);
    if (version == 4) {
        FieldDef& decimal = add("Dec", FieldType::Decimal);
        decimal.precision = 20;
        decimal.scale = 4;
    }
    IndexDef key;
    key.name = "PrimaryKey";
    key.fields = {{"ID", false}};
    key.primary = key.unique = key.required = true;
    IndexDef name;
    name.name = "ByName";
    name.fields = {{"Name", false}, {"Int", true}};
    layout.indexes = {key, name};
    return layout;
}

TEST_P(Versions, anEmptyDatabaseIsSoundAndHasNoUserTables)
{
    create();
    expectSound();
    const auto store = driver_.open(files_, reading());
    for (const TableEntry& table : store->catalogue())
        EXPECT_NE(table.attributes & kSystemTableBits, 0u) << table.name;
    EXPECT_EQ(store->catalogue().size(), 4u);
    EXPECT_EQ(store->recordCount("MSysObjects"), 8);
    EXPECT_EQ(store->recordCount("MSysACEs"), 16);
    EXPECT_EQ(content().size(), GetParam() == 3 ? 18u * 2048 : 16u * 4096);
}

TEST_P(Versions, creatingOverAFileIsRefused)
{
    create();
    try {
        create();
        FAIL() << "created twice";
    } catch (const EngineError& error) {
        EXPECT_EQ(error.number(), 3204);
    }
}

TEST_P(Versions, aPasswordIsAskedFor)
{
    create("Sesame");
    expectSound("Sesame");
    for (const char* wrong : {"", "sesame", "Sesame2"}) {
        try {
            driver_.open(files_, reading(wrong));
            FAIL() << "opened with \"" << wrong << "\"";
        } catch (const EngineError& error) {
            EXPECT_EQ(error.number(), 3031);
        }
    }
    EXPECT_EQ(driver_.open(files_, reading("Sesame"))->catalogue().size(), 4u);
}

TEST_P(Versions, aNewFileCanBeEncoded)
{
    CreateRequest request;
    request.name = kTestFile;
    request.options = (GetParam() == 3 ? 32 : 0) | 2;
    request.password = "Sesame";
    driver_.create(files_, request);
    {
        const auto store = driver_.open(files_, writing("Sesame"));
        EXPECT_EQ(store->info({})[7].second, "yes");
        store->createTable(everyType(GetParam()));
        store->check({}, [](const Problem& problem) { ADD_FAILURE() << problem.text; });
    }
    EXPECT_THROW(driver_.open(files_, reading()), EngineError);
    const auto bytes = content();
    const std::string name = GetParam() == 3 ? "Every" : std::string("E\0v\0e\0r\0y", 9);
    EXPECT_EQ(std::search(bytes.begin(), bytes.end(), name.begin(), name.end()), bytes.end());
    expectSound("Sesame");
}

TEST_P(Versions, aNewTableIsThereAfterReopening)
{
    create();
    const TableLayout wanted = everyType(GetParam());
    {
        const auto store = driver_.open(files_, writing());
        store->createTable(wanted);
        store->commit();
    }
    expectSound();
    const auto store = driver_.open(files_, reading());
    const TableLayout got = store->layout("every type");
    EXPECT_EQ(got.name, wanted.name);
    EXPECT_EQ(got.attributes, 0u);
    EXPECT_GT(got.dateCreated, 0);
    ASSERT_EQ(got.fields.size(), wanted.fields.size());
    for (std::size_t i = 0; i < got.fields.size(); ++i) {
        const FieldDef &a = got.fields[i], &b = wanted.fields[i];
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.type, b.type) << a.name;
        if (b.size) {
            EXPECT_EQ(a.size, b.size) << a.name;
        }
        EXPECT_EQ(a.autonumber, b.autonumber) << a.name;
        EXPECT_EQ(a.required, b.required) << a.name;
        EXPECT_EQ(a.allowZeroLength, b.allowZeroLength) << a.name;
        EXPECT_EQ(a.defaultValue, b.defaultValue) << a.name;
        EXPECT_EQ(a.description, b.description) << a.name;
        EXPECT_EQ(a.precision, b.precision) << a.name;
        EXPECT_EQ(a.scale, b.scale) << a.name;
    }
    ASSERT_EQ(got.indexes.size(), 2u);
    EXPECT_EQ(got.indexes[0].name, "ByName");
    EXPECT_TRUE(got.indexes[0].fields[1].descending);
    EXPECT_EQ(got.indexes[1].name, "PrimaryKey");
    EXPECT_TRUE(got.indexes[1].primary);
    EXPECT_EQ(store->recordCount("Every Type"), 0);
    int status = 0;
    EXPECT_NE(runOn(content(), "mdb-tables -1 FILE", status).find("Every Type"), std::string::npos);
}

TEST_P(Versions, aTableOfTheSameNameIsRefused)
{
    create();
    const auto store = driver_.open(files_, writing());
    store->createTable(everyType(GetParam()));
    TableLayout again = everyType(GetParam());
    again.name = "EVERY TYPE";
    try {
        store->createTable(again);
        FAIL() << "made twice";
    } catch (const EngineError& error) {
        EXPECT_EQ(error.number(), 3010);
    }
}

TEST_P(Versions, namesThatAccessDoesNotTakeAreRefused)
{
    create();
    const auto store = driver_.open(files_, writing());
    for (const char* name : {"A.B", "A!B", "[A", "A]", "A`B", " A"}) {
        const auto errorOf = [&](const TableLayout& layout) {
            try {
                store->createTable(layout);
            } catch (const EngineError& error) {
                return error.number();
            }
            return 0;
        };
        TableLayout layout = everyType(GetParam());
        layout.name = name;
        EXPECT_EQ(errorOf(layout), 3125) << name;
        layout.name = "Good";
        layout.fields[1].name = name;
        EXPECT_EQ(errorOf(layout), 3008) << name;
    }
    store->check({}, [](const Problem& problem) { ADD_FAILURE() << problem.text; });
    TableLayout layout = everyType(GetParam());
    layout.name = "Any (other) name, even #1 & 'so on'";
    store->createTable(layout);
    expectSound();
}

TEST_P(Versions, theWidestTableCanBeMade)
{
    create();
    TableLayout wide;
    wide.name = "Wide";
    for (int i = 0; i < 255; ++i) {
        FieldDef field;
        field.name = "A rather long name of a field, number " + std::to_string(i);
        field.type = i == 100 ? FieldType::Long : FieldType::Text;
        field.size = 10;
        wide.fields.push_back(field);
    }
    {
        const auto store = driver_.open(files_, writing());
        store->createTable(wide);
        std::vector<ValueView> row(255);
        row[0] = ValueView::text("first");
        row[254] = ValueView::text("last");
        store->writer("Wide")->insert(row);
        store->commit();
    }
    expectSound();
    const auto store = driver_.open(files_, reading());
    ASSERT_EQ(store->layout("Wide").fields.size(), 255u);
    const auto cursor = store->cursor("Wide", std::nullopt);
    ASSERT_TRUE(cursor->first());
    EXPECT_EQ(cursor->field(254).asText(), "last");
    wide.fields.resize(254);
    wide.fields.resize(256, wide.fields[0]);
    wide.name = "Wider";
    EXPECT_THROW(driver_.open(files_, reading())->createTable(wide), EngineError);
}

TEST_P(Versions, aDeletedTableLeavesASoundFileAndItsPagesAreUsedAgain)
{
    create();
    const auto store = driver_.open(files_, writing());
    TableLayout layout = everyType(GetParam());
    store->createTable(layout);
    store->commit();
    const std::size_t size = content().size();
    for (int round = 0; round < 3; ++round) {
        store->dropTable("Every Type");
        EXPECT_THROW(store->layout("Every Type"), EngineError);
        store->createTable(layout);
    }
    store->dropTable("Every Type");
    store->commit();
    EXPECT_LE(content().size(), size + 4096);
    expectSound();
    EXPECT_EQ(store->catalogue().size(), 4u);
}

TEST_P(Versions, systemTablesCannotBeDeletedOrWritten)
{
    create();
    const auto store = driver_.open(files_, writing());
    EXPECT_THROW(store->dropTable("MSysObjects"), EngineError);
    EXPECT_THROW(store->writer("MSysObjects"), EngineError);
}

TEST_P(Versions, nothingIsWrittenThroughAReadOnlyStore)
{
    create();
    const auto store = driver_.open(files_, reading());
    try {
        store->createTable(everyType(GetParam()));
        FAIL() << "made in a read-only file";
    } catch (const EngineError& error) {
        EXPECT_EQ(error.number(), 3027);
    }
}

INSTANTIATE_TEST_SUITE_P(Jet, Versions, ::testing::Values(3, 4));

/// The file that the original engine makes is the measure: every byte but time stamps of the
/// objects (their rows, and so nothing in any index) and bytes that were left over in its memory.
TEST(EmptyDatabase, equalsARealOneButForTimesAndLeftOvers)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    MemoryFileSystem files;
    CreateRequest request;
    request.name = kTestFile;
    jet::JetDriver().create(files, request);
    const auto ours = files.content(kTestFile);
    const auto real = readBytes(corpusFolder() + "jahlborn-adox_jet4.mdb");
    ASSERT_EQ(ours.size(), real.size());
    constexpr std::size_t kPage = 4096;
    const auto differences = [&](std::size_t page) {
        std::vector<std::size_t> at;
        for (std::size_t i = page * kPage; i < (page + 1) * kPage; ++i)
            if (ours[i] != real[i])
                at.push_back(i - page * kPage);
        return at;
    };
    for (const std::size_t page : {0, 1, 6, 7, 8, 9, 10, 11, 12, 13, 15})
        EXPECT_EQ(differences(page), std::vector<std::size_t>()) << "page " << page;
    // Definitions: the offsets of variable columns and the unused ends of index blocks are
    // left-overs.
    EXPECT_LE(differences(2).size(), 16u);
    EXPECT_LE(differences(3).size(), 10u);
    EXPECT_LE(differences(4).size(), 16u);
    EXPECT_EQ(differences(5).size(), 0u);
    // Eight records with two dates of eight bytes.
    EXPECT_LE(differences(14).size(), 128u);
}

}  // namespace
}  // namespace velnor::testing
