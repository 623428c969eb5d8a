// The reading half of a run: seeks, walks, and the comparison of the whole table with the model.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/access/random/random_run.h"

namespace velnor::testing {
namespace {

bool fits(Comparison comparison, int order)
{
    switch (comparison) {
    case Comparison::Equal:
        return order == 0;
    case Comparison::GreaterEqual:
        return order >= 0;
    case Comparison::Greater:
        return order > 0;
    case Comparison::LessEqual:
        return order <= 0;
    default:
        return order < 0;
    }
}

bool takesLast(Comparison comparison)
{
    return comparison == Comparison::LessEqual || comparison == Comparison::Less;
}

}  // namespace

void RandomRun::compareRecord(RowCursor& cursor, const ModelRow& row)
{
    std::vector<ValueView> values(row.size());
    cursor.fields(values);
    for (std::size_t i = 0; i < row.size(); ++i)
        EXPECT_EQ(plainText(values[i]), plainText(row[i].view()))
            << model_.fields[i].name << " of record " << plainText(row[0].view());
}

void RandomRun::seekOne()
{
    if (model_.indexes.empty() || model_.rows.empty())
        return;
    const IndexDef& index = model_.indexes[random_() % model_.indexes.size()];
    const ModelRow& like = model_.rows.at(anyName());
    std::vector<Value> key;
    const unsigned parts = 1 + below(random_, static_cast<unsigned>(index.fields.size()));
    for (unsigned i = 0; i < parts; ++i) {
        const auto at = static_cast<std::size_t>(model_.fieldPosition(index.fields[i].name));
        Value made = below(random_, 2) ? like[at]
                                       : readBack(model_.fields[at], makeValue(model_.fields[at]));
        if (made.isNull())
            return;
        key.push_back(std::move(made));
    }
    const auto comparison = static_cast<Comparison>(below(random_, 5));
    const ModelRow* expected = nullptr;
    for (const auto& [name, row] : model_.rows) {
        if (!model_.listed(index, row) || !fits(comparison, model_.compareWithKey(index, row, key)))
            continue;
        const int order = expected ? model_.compareKeys(index, row, *expected) : 0;
        if (!expected || (takesLast(comparison) ? order > 0 : order < 0))
            expected = &row;
    }
    std::vector<ValueView> views;
    std::string shown;
    for (const Value& value : key) {
        views.push_back(value.view());
        shown += plainText(value.view()) + "|";
    }
    const auto cursor = store_->cursor(table(), index.name);
    const bool found = cursor->seek(comparison, views);
    const std::string where = index.name + ", comparison " +
                              std::to_string(static_cast<int>(comparison)) + ", key " + shown;
    ASSERT_EQ(found, expected != nullptr) << where;
    if (!found)
        return;
    ModelRow row;
    for (std::size_t i = 0; i < model_.fields.size(); ++i)
        row.emplace_back(cursor->field(static_cast<int>(i)));
    EXPECT_EQ(model_.compareKeys(index, row, *expected), 0)
        << where << ": stands on record " << plainText(row[0].view()) << ", not on "
        << plainText((*expected)[0].view());
}

void RandomRun::walkSome()
{
    const IndexDef* index = model_.indexes.empty() || below(random_, 2)
                                ? nullptr
                                : &model_.indexes[random_() % model_.indexes.size()];
    const auto cursor = store_->cursor(table(), index ? std::optional<std::string_view>(index->name)
                                                      : std::nullopt);
    const auto all = static_cast<unsigned>(store_->recordCount(table()));
    ASSERT_EQ(all, model_.rows.size());
    if (all == 0 || (index && index->ignoreNulls))
        return;
    const auto n = below(random_, all);
    ASSERT_TRUE(cursor->moveToOrdinal(n)) << n << " of " << all;
    EXPECT_EQ(cursor->ordinal(), n);
    const RowId here = cursor->row();
    const bool further = cursor->next();
    EXPECT_EQ(further, n + 1 < all) << "behind the record at " << n << " of " << all;
    ASSERT_TRUE(cursor->previous());
    EXPECT_EQ(cursor->row(), here) << "a step on and back ends elsewhere";
    EXPECT_EQ(cursor->previous(), n > 0);
    EXPECT_TRUE(cursor->moveTo(here));
    EXPECT_FALSE(cursor->moveToOrdinal(all));
}

void RandomRun::compareAll()
{
    ASSERT_EQ(store_->recordCount(table()), static_cast<std::int64_t>(model_.rows.size()));
    const TableLayout layout = store_->layout(table());
    ASSERT_EQ(layout.fields.size(), model_.fields.size());
    ASSERT_EQ(layout.indexes.size(), model_.indexes.size());
    const auto cursor = store_->cursor(table(), std::nullopt);
    std::size_t seen = 0;
    for (bool on = cursor->first(); on; on = cursor->next(), ++seen) {
        const auto found = model_.rows.find(std::stoll("0" + plainText(cursor->field(0))));
        ASSERT_NE(found, model_.rows.end())
            << "record " << plainText(cursor->field(0)) << " should not be there";
        compareRecord(*cursor, found->second);
    }
    EXPECT_EQ(seen, model_.rows.size());
    for (const IndexDef& index : model_.indexes)
        compareInOrder(index);
    store_->check(table(), [](const Problem& problem) {
        if (!problem.harmless)
            ADD_FAILURE() << problem.where << ": " << problem.text;
    });
}

void RandomRun::compareInOrder(const IndexDef& index)
{
    SCOPED_TRACE("index " + index.name);
    std::size_t expected = 0;
    for (const auto& [name, row] : model_.rows)
        expected += model_.listed(index, row);
    const auto cursor = store_->cursor(table(), index.name);
    std::vector<std::int64_t> forth, back;
    const ModelRow* before = nullptr;
    for (bool on = cursor->first(); on; on = cursor->next()) {
        const std::int64_t name = std::stoll("0" + plainText(cursor->field(0)));
        forth.push_back(name);
        const auto found = model_.rows.find(name);
        ASSERT_NE(found, model_.rows.end());
        if (before)
            ASSERT_LE(model_.compareKeys(index, *before, found->second), 0)
                << "record " << name << " stands too late";
        before = &found->second;
    }
    for (bool on = cursor->last(); on; on = cursor->previous())
        back.push_back(std::stoll("0" + plainText(cursor->field(0))));
    std::reverse(back.begin(), back.end());
    EXPECT_EQ(forth, back) << "the way back differs";
    std::sort(forth.begin(), forth.end());
    EXPECT_EQ(std::unique(forth.begin(), forth.end()) - forth.begin(),
              static_cast<std::ptrdiff_t>(expected));
}

}  // namespace velnor::testing
