// Names of records: they stay while records move and keys change.
#include "access/formats/paradox/record_names.h"
#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox;
using namespace velnor::paradox_testing;

namespace {

/// A table with a key of `length` characters: short keys are names by themselves, long ones not.
class RecordNamesTest : public ::testing::TestWithParam<int> {
protected:
    RecordNamesTest()
    {
        store = openStore(files);
        store->createTable(
            layoutOf({fieldDef("K", FieldType::Text, GetParam()), fieldDef("N", FieldType::Long)},
                     {primaryDef({"K"})}));
        writer = store->writer("T");
    }
    RowId add(const std::string& key, int n)
    {
        return writer->insert(std::array{text(key), whole(n)});
    }
    std::string at(RowId row)
    {
        const auto cursor = store->cursor("T", std::nullopt);
        return cursor->moveTo(row) ? rowOf(*cursor, 2) : "gone";
    }
    static std::string key(int n)
    {
        std::string made = std::to_string(10000 + n);
        return made;
    }

    MemoryFileSystem files;
    std::unique_ptr<Store> store;
    std::unique_ptr<RowWriter> writer;
};

}  // namespace

TEST_P(RecordNamesTest, aNameStaysWhileBlocksSplitAndEmpty)
{
    std::map<int, RowId> rows;
    for (int i = 0; i < 600; ++i)
        rows[i * 7 % 600] = add(key(i * 7 % 600), i * 7 % 600);
    for (int i = 0; i < 600; ++i)
        if (i % 5) {
            writer->remove(rows[i]);
        }
    for (int i = 0; i < 600; ++i)
        EXPECT_EQ(at(rows[i]), i % 5 ? "gone" : "'" + key(i) + "' " + std::to_string(i));
}

TEST_P(RecordNamesTest, aRecordKeepsItsNameWhenItsKeyChanges)
{
    const RowId a = add("a", 1), b = add("b", 2);
    writer->update(a, std::array{FieldChange{0, text("z")}});
    EXPECT_EQ(at(a), "'z' 1");
    EXPECT_EQ(at(b), "'b' 2");
    const RowId other = add("a", 3);  // takes over the key, not the name
    EXPECT_NE(other, a);
    EXPECT_EQ(at(a), "'z' 1");
    EXPECT_EQ(at(other), "'a' 3");
    writer->update(a, std::array{FieldChange{0, text("y")}});
    EXPECT_EQ(at(a), "'y' 1");
    writer->remove(a);
    EXPECT_EQ(at(a), "gone");
    EXPECT_EQ(at(other), "'a' 3");
}

TEST_P(RecordNamesTest, twoRecordsCanChangePlaces)
{
    const RowId a = add("a", 1), b = add("b", 2);
    writer->update(a, std::array{FieldChange{0, text("t")}});
    writer->update(b, std::array{FieldChange{0, text("a")}});
    writer->update(a, std::array{FieldChange{0, text("b")}});
    EXPECT_EQ(at(a), "'b' 1");
    EXPECT_EQ(at(b), "'a' 2");
    const auto cursor = store->cursor("T", std::nullopt);
    ASSERT_TRUE(cursor->first());
    EXPECT_EQ(cursor->row(), b);
    ASSERT_TRUE(cursor->next());
    EXPECT_EQ(cursor->row(), a);
}

INSTANTIATE_TEST_SUITE_P(Keys, RecordNamesTest, ::testing::Values(7, 60));
