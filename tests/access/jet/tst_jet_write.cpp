// Records added, changed and removed, judged by outside readers.
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/table_def.h"
#include "access/value_text.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

FieldDef fieldOf(const char* name, FieldType type, int size = 0)
{
    FieldDef field;
    field.name = name;
    field.type = type;
    field.size = size;
    return field;
}

IndexDef indexOf(const char* name, std::vector<IndexFieldDef> fields, bool primary = false,
                 bool unique = false)
{
    IndexDef index;
    index.name = name;
    index.fields = std::move(fields);
    index.primary = primary;
    index.unique = unique || primary;
    index.required = primary;
    return index;
}

/// ID autonumber key, Name, Count, Notes, Picture.
TableLayout people()
{
    TableLayout layout;
    layout.name = "People";
    layout.fields = {fieldOf("ID", FieldType::Long),
                     fieldOf("Name", FieldType::Text, 60),
                     fieldOf("Count", FieldType::Integer),
                     fieldOf("Notes", FieldType::Memo),
                     fieldOf("Picture", FieldType::LongBinary),
                     fieldOf("Done", FieldType::Boolean)};
    layout.fields[0].autonumber = true;
    layout.indexes = {indexOf("PrimaryKey", {{"ID", false}}, true),
                      indexOf("Name", {{"Name", false}}),
                      indexOf("CountName", {{"Count", true}, {"Name", false}})};
    return layout;
}

template <class Action> int errorOf(Action action)
{
    try {
        action();
    } catch (const EngineError& error) {
        return error.number();
    }
    return 0;
}

class Writing : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
        store_ = driver_.open(files_, writing());
    }
    void reopen()
    {
        store_->commit();
        store_.reset();
        store_ = driver_.open(files_, writing());
    }
    std::vector<std::uint8_t> content() const { return files_.content(kTestFile); }
    void expectSound()
    {
        store_->commit();
        const Verdict verdict = outsideCheck(content());
        if (verdict.available) {
            EXPECT_TRUE(verdict.sound) << verdict.output;
        }
    }
    RowId add(RowWriter& writer, std::string_view name, int count,
              std::optional<std::string_view> notes = std::nullopt)
    {
        std::vector<ValueView> row(6);
        row[1] = ValueView::text(name);
        row[2] = ValueView::integer(count);
        if (notes)
            row[3] = ValueView::text(*notes);
        return writer.insert(row);
    }

    MemoryFileSystem files_;
    jet::JetDriver driver_;
    std::unique_ptr<Store> store_;
};

TEST_P(Writing, everyTypeComesBackAsItWasWritten)
{
    TableLayout layout;
    layout.name = "Types";
    layout.fields = {fieldOf("B", FieldType::Boolean),   fieldOf("Y", FieldType::Byte),
                     fieldOf("I", FieldType::Integer),   fieldOf("L", FieldType::Long),
                     fieldOf("C", FieldType::Currency),  fieldOf("S", FieldType::Single),
                     fieldOf("D", FieldType::Double),    fieldOf("T", FieldType::Date),
                     fieldOf("X", FieldType::Text, 255), fieldOf("N", FieldType::Binary, 255),
                     fieldOf("G", FieldType::Guid),      fieldOf("M", FieldType::Memo),
                     fieldOf("O", FieldType::LongBinary)};
    if (GetParam() == 4) {
        layout.fields.push_back(fieldOf("Q", FieldType::Decimal));
        layout.fields.back().precision = 28;
        layout.fields.back().scale = 5;
    }
    store_->createTable(layout);
    const std::uint8_t bytes[] = {0, 1, 255, 0};
    const std::string longText(255, 'z');
    const std::string accents = GetParam() == 4 ? "Zoë \u0416\u4E2D\U0001F600 e" : "Zoë ÄÖ";
    std::vector<std::vector<ValueView>> rows(4, std::vector<ValueView>(layout.fields.size()));
    rows[1] = {ValueView::boolean(true),
               ValueView::integer(255),
               ValueView::integer(-32768),
               ValueView::integer(-2147483648LL),
               ValueView::currency(-9223372036854775807LL),
               ValueView::real(0.1),
               ValueView::real(-1.0 / 3),
               ValueView::date(-1.25),
               ValueView::text(accents),
               ValueView::bytes(bytes),
               ValueView::text("{12345678-ABCD-EF01-2345-6789ABCDEF01}"),
               ValueView::text("short"),
               ValueView::bytes(bytes)};
    rows[2] = {ValueView::boolean(false), ValueView::integer(0),
               ValueView::integer(32767), ValueView::integer(2147483647),
               ValueView::currency(1),    ValueView::real(-2.5e10),
               ValueView::real(1e300),    ValueView::date(2958465),
               ValueView::text(""),       ValueView::bytes({}),
               ValueView::null(),         ValueView::text(""),
               ValueView::bytes({})};
    rows[3][8] = ValueView::text(longText);
    rows[3][11] = ValueView::text(accents);
    if (GetParam() == 4) {
        rows[1].push_back(ValueView::decimal(true, 0, 123456789, 5));
        rows[2].push_back(*parseDecimal("99999999999999999999999.99999"));
    }
    const auto writer = store_->writer("Types");
    for (const auto& row : rows)
        writer->insert(row);
    reopen();
    const auto cursor = store_->cursor("Types", std::nullopt);
    bool on = cursor->first();
    for (std::size_t r = 0; r < rows.size(); ++r, on = cursor->next()) {
        ASSERT_TRUE(on);
        for (std::size_t i = 0; i < layout.fields.size(); ++i) {
            const ValueView got = cursor->field(static_cast<int>(i)), wanted = rows[r][i];
            const std::string where = layout.fields[i].name + " of record " + std::to_string(r);
            if (layout.fields[i].type == FieldType::Boolean) {
                EXPECT_EQ(got.asBoolean(), !wanted.isNull() && wanted.asBoolean()) << where;
                continue;
            }
            ASSERT_EQ(got.kind(), wanted.kind()) << where;
            std::string a, b;
            appendText(a, got);
            appendText(b, wanted);
            EXPECT_EQ(a, b) << where;
        }
    }
    EXPECT_FALSE(on);
    expectSound();
}

TEST_P(Writing, memosOfAnyLengthComeBackWhole)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    std::vector<std::string> memos;
    for (const std::size_t length : {0,    1,    15,   16,   31,   32,   33,   63,    64,    65,
                                     900,  1731, 1732, 1800, 1907, 1908, 1909, 2032,  2033,  3000,
                                     3815, 3816, 3817, 4072, 4073, 8144, 8145, 20000, 300000})
        memos.push_back(std::string(length, static_cast<char>('a' + memos.size() % 26)));
    memos.push_back(std::string(2000, 'x') + "é" + std::string(3000, 'y'));
    for (const std::string& memo : memos)
        add(*writer, "someone", 1, memo);
    reopen();
    const auto cursor = store_->cursor("People", std::nullopt);
    bool on = cursor->first();
    for (const std::string& memo : memos) {
        ASSERT_TRUE(on);
        EXPECT_EQ(cursor->field(3).asText() == memo, true) << memo.size();
        on = cursor->next();
    }
    expectSound();

    // Shorter, longer, gone: the old rows and pages must not stay behind.
    auto again = store_->writer("People");
    int n = 0;
    std::vector<RowId> rows;
    for (on = cursor->first(); on; on = cursor->next())
        rows.push_back(cursor->row());
    const std::string changed(5000, 'q');
    for (const RowId row : rows) {
        FieldChange change{3, ValueView::null()};
        if (n % 3 == 0)
            change.value = ValueView::text(changed);
        if (n % 3 == 1)
            change.value = ValueView::text("tiny");
        again->update(row, std::span(&change, 1));
        ++n;
    }
    expectSound();
    for (const RowId row : rows)
        again->remove(row);
    expectSound();
    EXPECT_EQ(store_->recordCount("People"), 0);
}

TEST_P(Writing, autonumbersCountOnAndAreNotGivenTwice)
{
    store_->createTable(people());
    auto writer = store_->writer("People");
    const auto idOf = [&](RowId row) {
        const auto cursor = store_->cursor("People", std::nullopt);
        EXPECT_TRUE(cursor->moveTo(row));
        return cursor->field(0).asInteger();
    };
    EXPECT_EQ(idOf(add(*writer, "a", 1)), 1);
    const RowId second = add(*writer, "b", 1);
    EXPECT_EQ(idOf(second), 2);
    writer->remove(second);
    EXPECT_EQ(idOf(add(*writer, "c", 1)), 3);
    std::vector<ValueView> row(6);
    row[0] = ValueView::integer(100);
    writer->insert(row);
    writer.reset();
    reopen();
    writer = store_->writer("People");
    EXPECT_EQ(idOf(add(*writer, "d", 1)), 101);
    expectSound();
}

TEST_P(Writing, aDuplicateKeyIsRefusedAndLeavesNothingBehind)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    const RowId first = add(*writer, "one", 1, std::string(5000, 'm'));
    const RowId second = add(*writer, "two", 2);
    const std::string before = dumpTable(*store_, "People");
    std::vector<ValueView> row(6);
    row[0] = ValueView::integer(1);
    const std::string memo(9000, 'n');
    row[3] = ValueView::text(memo);
    EXPECT_EQ(errorOf([&] { writer->insert(row); }), 3022);
    const FieldChange change{0, ValueView::integer(1)};
    EXPECT_EQ(errorOf([&] { writer->update(second, std::span(&change, 1)); }), 3022);
    EXPECT_EQ(dumpTable(*store_, "People"), before);
    EXPECT_EQ(store_->recordCount("People"), 2);
    // To itself a record is no duplicate.
    const FieldChange same{0, ValueView::integer(1)};
    writer->update(first, std::span(&same, 1));
    expectSound();
}

TEST_P(Writing, aNullInAPrimaryKeyIsRefused)
{
    TableLayout layout = people();
    layout.fields[0].autonumber = false;
    store_->createTable(layout);
    const auto writer = store_->writer("People");
    EXPECT_EQ(errorOf([&] { add(*writer, "x", 1); }), 3058);
    EXPECT_EQ(store_->recordCount("People"), 0);
    expectSound();
}

TEST_P(Writing, aTooLargeRecordIsRefused)
{
    TableLayout layout;
    layout.name = "Wide";
    for (int i = 0; i < 20; ++i)
        layout.fields.push_back(fieldOf(("F" + std::to_string(i)).c_str(), FieldType::Text, 255));
    store_->createTable(layout);
    const auto writer = store_->writer("Wide");
    // Letters that Jet 4 cannot compress take two bytes each.
    const std::string text = [&] {
        std::string t;
        for (int i = 0; i < 255; ++i)
            t += GetParam() == 4 ? "\u0416" : "x";
        return t;
    }();
    std::vector<ValueView> row(20, ValueView::text(text));
    EXPECT_EQ(errorOf([&] { writer->insert(row); }), 3047);
    for (std::size_t i = 7; i < row.size(); ++i)
        row[i] = ValueView::null();
    writer->insert(row);
    EXPECT_EQ(store_->recordCount("Wide"), 1);
    expectSound();
}

TEST_P(Writing, tooLongAndWrongValuesAreRefused)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    EXPECT_EQ(errorOf([&] { add(*writer, std::string(61, 'x'), 1); }), 3163);
    EXPECT_EQ(errorOf([&] { add(*writer, "x", 40000); }), 3421);
    EXPECT_EQ(store_->recordCount("People"), 0);
}

TEST_P(Writing, recordsThatGrowMoveAndKeepTheirPlaceInTheOrder)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    std::vector<RowId> rows;
    for (int i = 0; i < 200; ++i)
        rows.push_back(add(*writer, "n" + std::to_string(i), i));
    const std::string wide(60, 'W');
    for (std::size_t i = 0; i < rows.size(); i += 2) {
        const FieldChange change{1, ValueView::text(wide)};
        writer->update(rows[i], std::span(&change, 1));
    }
    expectSound();
    const auto cursor = store_->cursor("People", std::nullopt);
    bool on = cursor->first();
    for (std::size_t i = 0; i < rows.size(); ++i, on = cursor->next()) {
        ASSERT_TRUE(on);
        EXPECT_EQ(cursor->row(), rows[i]);
        EXPECT_EQ(cursor->field(2).asInteger(), static_cast<int>(i));
    }
    for (std::size_t i = 0; i < rows.size(); i += 2) {
        const FieldChange change{1, ValueView::text("s")};
        writer->update(rows[i], std::span(&change, 1));
    }
    for (std::size_t i = 1; i < rows.size(); i += 2)
        writer->remove(rows[i]);
    expectSound();
    EXPECT_EQ(store_->recordCount("People"), 100);
}

TEST_P(Writing, aCursorSeesWhatAWriterDoes)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    const auto cursor = store_->cursor("People", std::nullopt);
    EXPECT_FALSE(cursor->first());
    const RowId a = add(*writer, "a", 1), b = add(*writer, "b", 2), c = add(*writer, "c", 3);
    ASSERT_TRUE(cursor->first());
    EXPECT_EQ(cursor->row(), a);
    const FieldChange change{1, ValueView::text("a much longer name than before")};
    writer->update(a, std::span(&change, 1));
    EXPECT_EQ(cursor->field(1).asText(), "a much longer name than before");
    writer->remove(b);
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(cursor->row(), c);
    writer->remove(c);
    EXPECT_FALSE(cursor->next());
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(cursor->row(), a);
    writer->remove(a);
    EXPECT_EQ(errorOf([&] { cursor->field(1); }), 3021);
    EXPECT_FALSE(cursor->first());
}

TEST_P(Writing, seeksStandOnTheRightRecords)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    for (int i = 0; i < 500; ++i)
        add(*writer, std::string(1, static_cast<char>('a' + i % 26)) + std::to_string(i / 26),
            i * 2);
    const auto cursor = store_->cursor("People", "PrimaryKey");
    const auto seek = [&](Comparison comparison, int id) -> std::int64_t {
        const ValueView key = ValueView::integer(id);
        return cursor->seek(comparison, std::span(&key, 1)) ? cursor->field(0).asInteger() : -1;
    };
    EXPECT_EQ(seek(Comparison::Equal, 250), 250);
    EXPECT_EQ(seek(Comparison::Equal, 501), -1);
    EXPECT_EQ(seek(Comparison::GreaterEqual, 250), 250);
    EXPECT_EQ(seek(Comparison::Greater, 250), 251);
    EXPECT_EQ(seek(Comparison::Less, 250), 249);
    EXPECT_EQ(seek(Comparison::LessEqual, 250), 250);
    EXPECT_EQ(seek(Comparison::Less, 1), -1);
    EXPECT_EQ(seek(Comparison::LessEqual, 1000), 500);
    const auto names = store_->cursor("People", "Name");
    const ValueView name = ValueView::text("C3");
    ASSERT_TRUE(names->seek(Comparison::Equal, std::span(&name, 1)));
    EXPECT_EQ(names->field(1).asText(), "c3");
    const auto both = store_->cursor("People", "CountName");
    const ValueView count = ValueView::integer(100);
    ASSERT_TRUE(both->seek(Comparison::Equal, std::span(&count, 1)));
    EXPECT_EQ(both->field(2).asInteger(), 100);
    ASSERT_TRUE(both->next());
    EXPECT_EQ(both->field(2).asInteger(), 98) << "descending";
    EXPECT_EQ(errorOf([&] { store_->cursor("People", "Nothing"); }), 3015);
}

TEST_P(Writing, manyRandomChangesLeaveASoundFileWithTheRightRecords)
{
    store_->createTable(people());
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    const auto number = [&](int below) { return static_cast<int>(random() % below); };
    struct Record {
        std::string name, notes;
        int count;
    };
    std::map<RowId, Record> model;
    auto writer = store_->writer("People");
    const auto text = [&](int most) {
        std::string t(static_cast<std::size_t>(number(most)), ' ');
        for (char& c : t)
            c = static_cast<char>('a' + number(26));
        return t;
    };
    for (int step = 0; step < 4000; ++step) {
        const int what = number(10);
        if (what < 5 || model.empty()) {
            Record record{text(60), number(4) ? text(80) : text(6000), number(30000)};
            const RowId row = add(*writer, record.name, record.count, record.notes);
            ASSERT_TRUE(model.emplace(row, record).second);
            continue;
        }
        auto it = model.lower_bound(static_cast<RowId>(random()) % (model.rbegin()->first + 1));
        if (it == model.end())
            it = model.begin();
        if (what < 8) {
            it->second.name = text(60);
            it->second.notes = text(number(3) ? 100 : 9000);
            const FieldChange changes[] = {{1, ValueView::text(it->second.name)},
                                           {3, ValueView::text(it->second.notes)}};
            writer->update(it->first, changes);
        } else {
            writer->remove(it->first);
            model.erase(it);
        }
        if (step % 700 == 699)
            store_->commit();
    }
    EXPECT_EQ(store_->recordCount("People"), static_cast<std::int64_t>(model.size()));
    const auto compare = [&] {
        const auto cursor = store_->cursor("People", std::nullopt);
        std::size_t n = 0;
        for (bool on = cursor->first(); on; on = cursor->next(), ++n) {
            const auto found = model.find(cursor->row());
            ASSERT_TRUE(found != model.end());
            EXPECT_EQ(cursor->field(1).asText(), found->second.name);
            EXPECT_EQ(cursor->field(3).asText(), found->second.notes);
            EXPECT_EQ(cursor->field(2).asInteger(), found->second.count);
        }
        EXPECT_EQ(n, model.size());
        for (const char* index : {"PrimaryKey", "Name", "CountName"}) {
            const auto walker = store_->cursor("People", index);
            std::size_t entries = 0;
            for (bool on = walker->first(); on; on = walker->next())
                ++entries;
            EXPECT_EQ(entries, model.size()) << index;
        }
    };
    compare();
    writer.reset();
    reopen();
    compare();
    expectSound();
}

/// Turns every text column of a table into one of another sort order.
void setOrder(MemoryFileSystem& files, std::uint16_t lcid)
{
    jet::JetFile file(files, writing());
    for (jet::PageNumber page = 6; page < file.pageCount(); ++page) {
        if (file.isFree(page) || file.page(page).data()[0] != jet::page_type::kTableDef)
            continue;
        std::vector<jet::PageNumber> chain;
        const auto bytes = jet::readTableChain(file, page, chain);
        jet::TableDef def = jet::parseTableDef(bytes, file.names());
        for (jet::Column& column : def.columns)
            column.order.lcid = lcid;
        jet::writeTableChain(file, jet::buildTableDef(def, file.names()), chain);
    }
    file.commit();
}

TEST_P(Writing, aKeyWhoseOrderIsNotKnownIsRefusedBeforeAnythingChanges)
{
    store_->createTable(people());
    add(*store_->writer("People"), "Anna", 1);
    store_->commit();
    store_.reset();
    setOrder(files_, 1042);
    store_ = driver_.open(files_, writing());
    const std::string before = dumpTable(*store_, "People");
    const auto writer = store_->writer("People");
    EXPECT_EQ(errorOf([&] { add(*writer, "Berta", 1, std::string(5000, 'x')); }), 3251);
    EXPECT_EQ(dumpTable(*store_, "People"), before);
    EXPECT_EQ(store_->pendingBytes(), 0u);
    for (const IndexDef& index : store_->layout("People").indexes)
        EXPECT_EQ(index.cannotKeep.empty(), index.name == "PrimaryKey") << index.name;
    // By the index as it stands, records are still walked and found.
    const auto cursor = store_->cursor("People", "Name");
    ASSERT_TRUE(cursor->first());
    EXPECT_EQ(cursor->field(1).asText(), "Anna");
    const ValueView key = ValueView::text("anna");
    EXPECT_TRUE(cursor->seek(Comparison::Equal, std::span(&key, 1)));
    // What does not touch the key can change, and the record can go.
    const FieldChange change{2, ValueView::integer(1)};
    writer->update(cursor->row(), std::span(&change, 1));
    writer->remove(cursor->row());
    EXPECT_EQ(store_->recordCount("People"), 0);
    EXPECT_FALSE(store_->cursor("People", "Name")->first());
}

TEST_P(Writing, outsideReadersGiveTheSameRecords)
{
    store_->createTable(people());
    const auto writer = store_->writer("People");
    for (int i = 0; i < 300; ++i)
        add(*writer, "name " + std::to_string(i), i,
            std::string(static_cast<std::size_t>(i) * 20, 'm'));
    store_->commit();
    int status = 0;
    const std::string out = runOn(content(), "mdb-export -H -d '|' -Q FILE People", status);
    if (status != 0)
        GTEST_SKIP() << "no mdb-export: " << out;
    std::size_t at = 0;
    for (int i = 0; i < 300; ++i) {
        const std::string wanted = std::to_string(i + 1) + "|name " + std::to_string(i) + "|" +
                                   std::to_string(i) + "|" +
                                   std::string(static_cast<std::size_t>(i) * 20, 'm') + "|";
        ASSERT_EQ(out.substr(at, wanted.size()), wanted);
        at = out.find('\n', at) + 1;
    }
}

INSTANTIATE_TEST_SUITE_P(Jet, Writing, ::testing::Values(3, 4));

/// Table1 refers to Table2 by otherfk1, which deletes with it, and to Table3 by otherfk2, whose new
/// keys it follows.
TEST(Relationships, areKeptAsTheFileAsks)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    for (const char* name : {"jahlborn-indexTestV1997.mdb", "jahlborn-indexTestV2000.mdb"}) {
        const auto files = memoryWith(readBytes(corpusFolder() + name));
        const auto store = jet::JetDriver().open(*files, writing());
        const auto rowWith = [&](const char* table, std::int64_t id) {
            const auto cursor = store->cursor(table, std::nullopt);
            for (bool on = cursor->first(); on; on = cursor->next())
                if (cursor->field(0).asInteger() == id)
                    return cursor->row();
            ADD_FAILURE() << "no record " << id << " in " << table;
            return RowId{0};
        };
        const auto child = [&](std::int64_t id, std::int64_t two, std::int64_t three) {
            std::vector<ValueView> row(store->layout("Table1").fields.size());
            row[0] = ValueView::integer(id);
            row[1] = ValueView::integer(two);
            row[2] = ValueView::integer(three);
            store->writer("Table1")->insert(row);
        };
        const ValueView parent[] = {ValueView::integer(60), ValueView::text("parent")};
        store->writer("Table2")->insert(parent);
        const auto change = [&](const char* table, std::int64_t id, int field, ValueView value) {
            const FieldChange one{field, value};
            return errorOf(
                [&] { store->writer(table)->update(rowWith(table, id), std::span(&one, 1)); });
        };
        EXPECT_EQ(errorOf([&] { child(50, 99, 10); }), 3201) << name;
        EXPECT_EQ(errorOf([&] { child(50, 60, 99); }), 3201) << name;
        EXPECT_EQ(errorOf([&] { child(50, 60, 12); }), 0) << name;
        EXPECT_EQ(change("Table2", 60, 0, ValueView::integer(77)), 3200);
        EXPECT_EQ(change("Table2", 60, 1, ValueView::text("changed")), 0);
        EXPECT_EQ(change("Table1", 50, 1, ValueView::integer(99)), 3201);
        EXPECT_EQ(change("Table3", 12, 0, ValueView::integer(120)), 0);
        {
            const auto cursor = store->cursor("Table1", std::nullopt);
            ASSERT_TRUE(cursor->moveTo(rowWith("Table1", 50)));
            EXPECT_EQ(cursor->field(2).asInteger(), 120);
        }
        EXPECT_EQ(errorOf([&] { store->writer("Table3")->remove(rowWith("Table3", 120)); }), 3200);
        const std::int64_t before = store->recordCount("Table1");
        store->writer("Table2")->remove(rowWith("Table2", 60));
        EXPECT_EQ(store->recordCount("Table1"), before - 1);
        EXPECT_EQ(errorOf([&] { store->writer("Table3")->remove(rowWith("Table3", 120)); }), 0);
        EXPECT_EQ(errorOf([&] { store->dropTable("Table2"); }), 3251);
        store->commit();
        const Verdict verdict = outsideCheck(files->content(kTestFile));
        if (verdict.available) {
            EXPECT_TRUE(verdict.sound) << verdict.output;
        }
    }
}

/// Every real file takes a record in every table that can be changed, and stays sound.
TEST(RealFiles, takeANewRecordAndGiveItBack)
{
    if (corpusFolder().empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    const jet::JetDriver driver;
    int written = 0;
    for (const Json& entry : corpusManifest().list) {
        if (entry.has("damage"))
            continue;
        const auto original = readBytes(corpusFolder() + entry["file"].text);
        const auto files = memoryWith(original);
        const std::string password = entry["password"].text;
        const auto store = driver.open(*files, writing(password));
        for (const Json& table : entry["tables"].list) {
            const std::string name = table["name"].text;
            const TableLayout layout = store->layout(name);
            const std::string before = dumpTable(*store, name);
            std::vector<ValueView> row(layout.fields.size());
            for (std::size_t i = 0; i < row.size(); ++i) {
                const FieldDef& field = layout.fields[i];
                if (field.autonumber)
                    continue;
                switch (valueKindOf(field.type)) {
                case ValueKind::Integer:
                    row[i] = ValueView::integer(77);
                    break;
                case ValueKind::Text:
                    if (field.type != FieldType::Guid)
                        row[i] = ValueView::text("Z");
                    break;
                case ValueKind::Real:
                    row[i] = ValueView::real(7.5);
                    break;
                default:
                    break;
                }
            }
            RowId added = 0;
            const int error = errorOf([&] { added = store->writer(name)->insert(row); });
            if (error != 0) {
                // A key that is taken, a Null in a key, an order or a relationship that forbids it.
                EXPECT_TRUE(error == 3022 || error == 3058 || error == 3201 || error == 3251)
                    << entry["file"].text << " " << name << " " << error;
                EXPECT_EQ(dumpTable(*store, name), before);
                continue;
            }
            ++written;
            EXPECT_NE(dumpTable(*store, name), before);
            const FieldChange change{0, row[0]};
            if (!layout.fields[0].autonumber) {
                EXPECT_EQ(
                    errorOf([&] { store->writer(name)->update(added, std::span(&change, 1)); }), 0);
            }
            EXPECT_EQ(errorOf([&] { store->writer(name)->remove(added); }), 0) << name;
            EXPECT_EQ(dumpTable(*store, name), before) << entry["file"].text << " " << name;
        }
        store->commit();
        const Verdict is = outsideCheck(files->content(kTestFile), password);
        if (is.available && !is.sound) {  // some files have their faults from the start
            EXPECT_EQ(outsideCheck(original, password).sound, false) << entry["file"].text << "\n"
                                                                     << is.output;
        }
    }
    EXPECT_GT(written, 50);
}

}  // namespace
}  // namespace velnor::testing
