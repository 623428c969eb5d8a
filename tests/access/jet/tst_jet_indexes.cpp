// Indexes added to and taken from tables with records.
#include <algorithm>

#include <gmock/gmock.h>

#include "tests/access/jet/structure_testing.h"

namespace velnor::testing {

using ::testing::ElementsAre;

namespace {

class Indexes : public Structures {
protected:
    std::vector<std::string> indexNames()
    {
        std::vector<std::string> names;
        for (const IndexDef& index : store_->layout("T").indexes)
            names.push_back(index.name);
        return names;
    }
    std::size_t entries(std::string_view index) { return column(0, index).size(); }
};

struct TypeCase {
    const char* name;
    FieldType type;
    int size;
    std::vector<ValueView> ascending;  // in the order of the index
};

std::vector<TypeCase> typeCases(bool jet4)
{
    static const std::uint8_t kBytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 255};
    const auto bytes = [](std::size_t from, std::size_t n) {
        return ValueView::bytes({kBytes + from, n});
    };
    std::vector<TypeCase> cases{
        {"BOOLEAN", FieldType::Boolean, 0, {ValueView::boolean(true), ValueView::boolean(false)}},
        {"BYTE", FieldType::Byte, 0, {ValueView::integer(0), ValueView::integer(255)}},
        {"INTEGER",
         FieldType::Integer,
         0,
         {ValueView::integer(-32768), ValueView::integer(0), ValueView::integer(32767)}},
        {"LONG",
         FieldType::Long,
         0,
         {ValueView::integer(-2147483648LL), ValueView::integer(-1),
          ValueView::integer(2147483647)}},
        {"CURRENCY",
         FieldType::Currency,
         0,
         {ValueView::currency(-1), ValueView::currency(0), ValueView::currency(922337203685477)}},
        {"SINGLE",
         FieldType::Single,
         0,
         {ValueView::real(-1.5e30), ValueView::real(-0.25), ValueView::real(3)}},
        {"DOUBLE",
         FieldType::Double,
         0,
         {ValueView::real(-1e300), ValueView::real(0), ValueView::real(1e-300)}},
        {"DATE", FieldType::Date, 0, {ValueView::date(-5.5), ValueView::date(36526.25)}},
        {"BINARY",
         FieldType::Binary,
         50,
         {bytes(0, 1), bytes(0, 8), bytes(0, 9), bytes(0, 12), bytes(11, 1)}},
        {"TEXT",
         FieldType::Text,
         40,
         {ValueView::text(""), ValueView::text("Abel"), ValueView::text("abelard"),
          ValueView::text("Zoë")}},
        {"GUID",
         FieldType::Guid,
         0,
         {ValueView::text("{00000000-0000-0000-0000-000000000001}"),
          ValueView::text("{FFFFFFFF-0000-0000-0000-000000000000}")}},
    };
    if (jet4)
        cases.push_back({"DECIMAL",
                         FieldType::Decimal,
                         0,
                         {ValueView::decimal(true, 0, 5, 0), ValueView::decimal(false, 0, 0, 0),
                          ValueView::decimal(false, 0, 71, 0)}});
    return cases;
}

TEST_P(Indexes, anIndexMadeLaterOrdersTheRecordsOfEveryType)
{
    const auto cases = typeCases(jet4());
    std::vector<FieldDef> fields;
    for (const TypeCase& one : cases)
        fields.push_back(fieldDef(one.name, one.type, one.size));
    makeTable(fields);
    {
        const auto writer = store_->writer("T");
        writer->insert(std::vector<ValueView>(fields.size()));  // all Null
        for (int round = 0; round < 8; ++round) {               // not in order, each value often
            std::vector<ValueView> row;
            for (const TypeCase& one : cases)
                row.push_back(
                    one.ascending[static_cast<std::size_t>(round * 7 + 3) % one.ascending.size()]);
            writer->insert(row);
        }
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const TypeCase& one = cases[i];
        const std::string up = std::string("Up") + one.name, down = std::string("Down") + one.name;
        store_->addIndex("T", indexNamed(up, {{one.name, false}}));
        std::vector<std::string> wanted{"Null"};
        for (const ValueView& v : one.ascending)
            wanted.push_back(shownValue(v));
        if (one.type == FieldType::Boolean)
            wanted.erase(wanted.begin());
        auto got = column(static_cast<int>(i), up);
        EXPECT_EQ(got.size(), 9u);
        got.erase(std::unique(got.begin(), got.end()), got.end());
        EXPECT_EQ(got, wanted) << one.name;
        const auto cursor = store_->cursor("T", up);
        EXPECT_TRUE(cursor->seek(Comparison::Equal, {&one.ascending[1], 1})) << one.name;

        const auto addDown = [&] { store_->addIndex("T", indexNamed(down, {{one.name, true}})); };
        if (one.type == FieldType::Decimal) {  // nobody has seen such keys
            EXPECT_EQ(errorOf(addDown), 3251);
            continue;
        }
        addDown();
        auto back = column(static_cast<int>(i), down);
        back.erase(std::unique(back.begin(), back.end()), back.end());
        std::reverse(back.begin(), back.end());
        EXPECT_EQ(back, wanted) << one.name;
    }
    reopen();
    EXPECT_EQ(store_->layout("T").indexes.size(), cases.size() * 2 - (jet4() ? 1 : 0));
    expectSound();
}

TEST_P(Indexes, anIndexOverManyPagesAgreesWithTheRecords)
{
    makeTable({fieldDef("ID", FieldType::Long), fieldDef("NAME", FieldType::Text, 200)});
    constexpr int kRecords = 60000;
    {
        const auto writer = store_->writer("T");
        for (int i = 0; i < kRecords; ++i) {
            const int n = static_cast<int>(i * 48271LL % 60013);
            const std::string name = "a rather long common beginning of every name " +
                                     std::to_string(100000 + n) + " and its end";
            const ValueView row[] = {ValueView::integer(n), ValueView::text(name)};
            writer->insert(row);
        }
    }
    store_->addIndex("T", primaryKey({{"ID", false}}));
    store_->addIndex("T", indexNamed("ByName", {{"NAME", true}}));
    reopen();
    const auto byId = store_->cursor("T", "PrimaryKey");
    const auto byName = store_->cursor("T", "ByName");
    bool up = byId->last(), down = byName->first();
    int seen = 0;
    for (; up && down; up = byId->previous(), down = byName->next(), ++seen)
        ASSERT_EQ(byId->row(), byName->row());
    EXPECT_EQ(seen, kRecords);
    EXPECT_FALSE(up || down);
    expectSound();
}

TEST_P(Indexes, duplicatesInAUniqueIndexAre3022AndChangeNothing)
{
    makeNotes({primaryKey({{"ID", false}})});
    addNotes(300);
    const ValueView twin[] = {ValueView::integer(1000), ValueView::text("NAME 0"),
                              ValueView::null()};
    store_->writer("T")->insert(twin);
    store_->commit();
    const auto before = content();
    EXPECT_EQ(errorOf([&] { store_->addIndex("T", uniqueIndex("U", {{"NAME", false}})); }), 3022);
    store_->commit();
    EXPECT_EQ(content() == before, true);
    EXPECT_THAT(indexNames(), ElementsAre("PrimaryKey"));
    addNotes(10, 2000);  // the store goes on
    store_->addIndex("T", uniqueIndex("U", {{"NAME", false}, {"ID", false}}));
    EXPECT_EQ(entries("U"), 311u);
    expectSound();
}

TEST_P(Indexes, nullsAreKeptRepeatedIgnoredOrRefusedAsTheIndexSays)
{
    makeNotes();
    {
        const auto writer = store_->writer("T");
        for (int i = 0; i < 5; ++i) {
            const ValueView row[] = {i < 3 ? ValueView::integer(i) : ValueView::null(),
                                     i % 2 ? ValueView::text("odd") : ValueView::null(),
                                     ValueView::null()};
            writer->insert(row);
        }
    }
    EXPECT_EQ(errorOf([&] { store_->addIndex("T", primaryKey({{"ID", false}})); }), 3058);
    IndexDef required = indexNamed("Required", {{"NAME", false}});
    required.required = true;
    EXPECT_EQ(errorOf([&] { store_->addIndex("T", required); }), 3058);
    IndexDef ignoring = indexNamed("Ignoring", {{"NAME", false}});
    ignoring.ignoreNulls = true;
    store_->addIndex("T", ignoring);
    EXPECT_EQ(entries("Ignoring"), 2u);
    store_->addIndex("T", indexNamed("Keeping", {{"NAME", false}}));
    EXPECT_EQ(entries("Keeping"), 5u);
    store_->addIndex("T", uniqueIndex("Unique", {{"ID", false}}));  // two Nulls
    EXPECT_EQ(entries("Unique"), 5u);
    IndexDef both = indexNamed("Both", {{"ID", false}, {"NAME", false}});
    both.ignoreNulls = true;  // only where all fields are Null
    store_->addIndex("T", both);
    EXPECT_EQ(entries("Both"), 4u);
    expectSound();
}

TEST_P(Indexes, severalFieldsEachInItsOwnDirection)
{
    makeTable({fieldDef("CITY", FieldType::Text, 20), fieldDef("N", FieldType::Integer)});
    {
        const auto writer = store_->writer("T");
        for (const char* city : {"Rome", "Bonn", "Oslo"})
            for (const int n : {2, 3, 1}) {
                const ValueView row[] = {ValueView::text(city), ValueView::integer(n)};
                writer->insert(row);
            }
    }
    store_->addIndex("T", indexNamed("Place", {{"CITY", true}, {"N", false}}));
    EXPECT_THAT(column(0, "Place"), ElementsAre("Rome", "Rome", "Rome", "Oslo", "Oslo", "Oslo",
                                                "Bonn", "Bonn", "Bonn"));
    EXPECT_THAT(column(1, "Place"), ElementsAre("1", "2", "3", "1", "2", "3", "1", "2", "3"));
    expectSound();
}

TEST_P(Indexes, whatCannotBeAnIndexIsRefused)
{
    std::vector<FieldDef> fields;
    for (int i = 0; i < 11; ++i)
        fields.push_back(fieldDef("F" + std::to_string(i), FieldType::Long));
    fields.push_back(fieldDef("OLE", FieldType::LongBinary));
    makeTable(fields, {primaryKey({{"F0", false}})});
    const auto add = [&](const IndexDef& index) {
        return errorOf([&] { store_->addIndex("T", index); });
    };
    EXPECT_EQ(add(indexNamed("None", {})), 3018);
    EXPECT_EQ(add(indexNamed("Other", {{"NOT THERE", false}})), 3018);
    EXPECT_EQ(add(indexNamed("Ole", {{"OLE", false}})), 3018);
    std::vector<IndexFieldDef> eleven;
    for (int i = 0; i < 11; ++i)
        eleven.push_back({"F" + std::to_string(i), false});
    EXPECT_EQ(add(indexNamed("Eleven", eleven)), 3018);
    eleven.pop_back();
    EXPECT_EQ(add(indexNamed("Ten", eleven)), 0);
    EXPECT_EQ(add(indexNamed("TEN", {{"F1", false}})), 3367);
    IndexDef second = primaryKey({{"F1", false}});
    second.name = "Second";
    EXPECT_EQ(add(second), 3367);
    EXPECT_EQ(errorOf([&] { store_->addIndex("None", second); }), 3078);
    EXPECT_EQ(errorOf([&] { store_->addIndex("MSysObjects", second); }), 3251);
    EXPECT_EQ(errorOf([&] { store_->dropIndex("T", "Nothing"); }), 3015);
    while (store_->layout("T").indexes.size() < 32)
        ASSERT_EQ(add(indexNamed("I" + std::to_string(store_->layout("T").indexes.size()),
                                 {{"F1", false}})),
                  0);
    EXPECT_EQ(add(indexNamed("Last", {{"F1", false}})), 3018);
    expectSound();
}

TEST_P(Indexes, namesStandInTheOrderOfTheFile)
{
    makeNotes({indexNamed("beta", {{"ID", false}})});
    addNotes(20);
    store_->addIndex("T", indexNamed("Alpha", {{"NAME", false}}));
    store_->addIndex("T", indexNamed("Émile", {{"NAME", false}}));
    store_->addIndex("T", indexNamed("gamma", {{"NAME", false}}));
    store_->addIndex("T", primaryKey({{"ID", false}}));
    EXPECT_THAT(indexNames(), ElementsAre("Alpha", "beta", "Émile", "gamma", "PrimaryKey"));
    expectSound();
}

TEST_P(Indexes, aDroppedIndexGivesItsPagesBackAndTheOthersStay)
{
    makeNotes({primaryKey({{"ID", false}})});
    addNotes(3000);
    store_->commit();
    store_->addIndex("T", indexNamed("First", {{"NAME", false}}));
    store_->addIndex("T", indexNamed("Second", {{"NAME", false}, {"ID", false}}));
    store_->addIndex("T", indexNamed("Third", {{"ID", true}}));
    const auto size = content().size();
    store_->dropIndex("T", "first");
    EXPECT_THAT(indexNames(), ElementsAre("PrimaryKey", "Second", "Third"));
    EXPECT_EQ(entries("Second"), 3000u);
    EXPECT_EQ(column(0, "Third").front(), "2999");
    const ValueView key = ValueView::integer(77);
    EXPECT_TRUE(store_->cursor("T", "PrimaryKey")->seek(Comparison::Equal, {&key, 1}));
    EXPECT_EQ(errorOf([&] { store_->cursor("T", "First"); }), 3015);
    expectSound();
    store_->addIndex("T", indexNamed("Again", {{"NAME", false}}));
    EXPECT_EQ(content().size(), size) << "the pages given back are used again";
    addNotes(100, 5000);
    EXPECT_EQ(entries("Again"), 3100u);
    for (const char* name : {"PrimaryKey", "Second", "Third", "Again"})
        store_->dropIndex("T", name);
    EXPECT_TRUE(indexNames().empty());
    addNotes(10, 5000);  // numbers that were keys once
    EXPECT_EQ(store_->recordCount("T"), 3110);
    expectSound();
}

TEST_P(Indexes, recordsWrittenAfterwardsAreInTheIndex)
{
    makeNotes();
    addNotes(50);
    store_->addIndex("T", uniqueIndex("U", {{"ID", false}}));
    const auto writer = store_->writer("T");
    const ValueView twin[] = {ValueView::integer(7), ValueView::null(), ValueView::null()};
    EXPECT_EQ(errorOf([&] { writer->insert(twin); }), 3022);
    const ValueView other[] = {ValueView::integer(-7), ValueView::null(), ValueView::null()};
    writer->insert(other);
    EXPECT_EQ(column(0, "U").front(), "-7");
    expectSound();
}

TEST_P(Indexes, aWriterOfTheOldStructureWritesNoMore)
{
    makeNotes();
    addNotes(5);
    const auto writer = store_->writer("T");
    const auto cursor = store_->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->first());
    store_->addIndex("T", uniqueIndex("U", {{"ID", false}}));
    const ValueView row[] = {ValueView::integer(100), ValueView::null(), ValueView::null()};
    EXPECT_EQ(errorOf([&] { writer->insert(row); }), 3420);
    EXPECT_EQ(errorOf([&] { writer->remove(cursor->row()); }), 3420);
    EXPECT_TRUE(cursor->next()) << "reading goes on";
    EXPECT_EQ(entries("U"), 5u);
    expectSound();
}

TEST_P(Indexes, recordsWrittenBeforeAFailedChangeStay)
{
    makeNotes();
    addNotes(5);
    addNotes(1, 3);  // not committed yet
    EXPECT_EQ(errorOf([&] { store_->addIndex("T", uniqueIndex("U", {{"ID", false}})); }), 3022);
    EXPECT_EQ(store_->recordCount("T"), 6);
    reopen();
    EXPECT_EQ(store_->recordCount("T"), 6);
}

TEST_P(Indexes, aDamagedIndexCanBeDroppedAndMadeAnew)
{
    makeNotes({indexNamed("ByName", {{"NAME", false}})});
    addNotes(2000);
    store_->commit();
    store_.reset();
    auto bytes = content();
    const std::size_t page = jet4() ? 4096 : 2048;
    int damaged = 0;
    for (std::size_t at = 20 * page; at < bytes.size(); at += page)
        if (bytes[at] == 4) {  // every leaf
            bytes[at + 30] ^= 0xFF;
            bytes[at] = 9;
            ++damaged;
        }
    ASSERT_GT(damaged, 3);
    files_.put(kTestFile, bytes);
    store_ = driver_.open(files_, writing());
    EXPECT_EQ(errorOf([&] { entries("ByName"); }), 3197);
    store_->dropIndex("T", "ByName");
    store_->addIndex("T", indexNamed("ByName", {{"NAME", false}}));
    EXPECT_EQ(entries("ByName"), 2000u);
    addNotes(10, 3000);
    EXPECT_EQ(store_->recordCount("T"), 2010);
}

INSTANTIATE_TEST_SUITE_P(Jet, Indexes, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
