#include "tests/access/random/random_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/paths.h"

namespace velnor::testing {
namespace {

int environmentNumber(const char* name, int otherwise)
{
    const char* text = std::getenv(name);
    return text && *text ? std::atoi(text) : otherwise;
}

std::int64_t nameOf(ValueView first)
{
    return first.kind() == ValueKind::Integer
               ? first.asInteger()
               : static_cast<std::int64_t>(plainText(first).empty() ? 0
                                                                    : std::stoll(plainText(first)));
}

std::vector<ValueView> viewsOf(const ModelRow& row)
{
    std::vector<ValueView> views;
    for (const Value& value : row)
        views.push_back(value.view());
    return views;
}

bool happens(unsigned every, int operation)
{
    return every > 0 && operation % static_cast<int>(every) == 0;
}

}  // namespace

RandomRun::RandomRun(const RandomFormat& format, unsigned seed)
    : format_(format), random_(seed), model_(format)
{
    if (format_.creates)
        format_.driver->create(files_, format_.create);
    openStore();
    store_->createTable(format_.start);
    if (format_.prepare) {
        store_.reset();
        format_.prepare(files_);
    }
    openStore();
}

RandomRun::~RandomRun() = default;

void RandomRun::openStore()
{
    cursor_.reset();
    writer_.reset();
    if (store_)
        store_->commit();
    store_.reset();
    store_ = format_.driver->open(files_, format_.open);
}

void RandomRun::reopen()
{
    openStore();
    places_.clear();
    if (!format_.keyIndex.empty())
        return;
    const auto all = store_->cursor(table(), std::nullopt);
    for (bool on = all->first(); on; on = all->next())
        places_[nameOf(all->field(0))] = all->row();
}

void RandomRun::judge()
{
    cursor_.reset();
    writer_.reset();
    store_->commit();
    store_.reset();
    const std::string said = format_.judge(files_, model_.csv());
    EXPECT_EQ(said, "");
    reopen();
}

void RandomRun::run(int operations)
{
    for (int i = 1; i <= operations && !::testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE(format_.name + ": operation " + std::to_string(i));
        try {
            one();
            everySoOften(i);
        } catch (const std::exception& e) {
            ADD_FAILURE() << e.what();
        }
    }
    if (::testing::Test::HasFailure())
        return;
    SCOPED_TRACE("at the end");
    reopen();
    compareAll();
}

void RandomRun::everySoOften(int operation)
{
    if (happens(format_.structureEvery, operation))
        changeStructure();
    if (happens(format_.lookEvery, operation))
        compareAll();
    if (happens(format_.reopenEvery, operation))
        reopen();
    if (format_.compact && happens(format_.compactEvery, operation)) {
        cursor_.reset();
        writer_.reset();
        store_->commit();
        store_.reset();
        format_.compact(files_);
        reopen();
    }
    if (format_.judge && operation % 1000 == 0)
        judge();
}

void RandomRun::one()
{
    if (!writer_)
        writer_ = store_->writer(table());
    if (model_.rows.size() >= format_.mostRecords)
        growing_ = false;
    if (model_.rows.size() < format_.mostRecords / 20)
        growing_ = true;
    const unsigned what = below(random_, 20);
    const unsigned inserts = growing_ || !format_.removes ? 9 : 3;
    if (what < inserts || model_.rows.empty())
        insertOne();
    else if (what < 12 && format_.removes)
        removeOne();
    else if (what < 17 && format_.changes)
        updateOne();
    else if (what < 19)
        seekOne();
    else
        walkSome();
}

// ---- records

Value RandomRun::makeValue(const FieldDef& field)
{
    const bool mayBeNull = !field.required && (!format_.canBeNull || format_.canBeNull(field));
    if (mayBeNull && below(random_, 10) == 0)
        return {};
    return format_.makeValue ? format_.makeValue(field, random_) : randomValue(field, random_);
}

Value RandomRun::readBack(const FieldDef& field, const Value& written) const
{
    if (format_.emptyTextIsNull && written.view().kind() == ValueKind::Text &&
        written.view().asText().empty())
        return {};
    return format_.readBack ? format_.readBack(field, written) : written;
}

ModelRow RandomRun::newRow()
{
    ModelRow row;
    row.emplace_back(ValueView::integer(1 + below(random_, 30000)));
    for (std::size_t i = 1; i < model_.fields.size(); ++i)
        row.push_back(makeValue(model_.fields[i]));
    return row;
}

void RandomRun::insertOne()
{
    if (!format_.removes && model_.rows.size() >= format_.mostRecords)
        return format_.renews ? makeAnew() : void();
    const ModelRow row = newRow();
    ModelRow kept;
    for (std::size_t i = 0; i < row.size(); ++i)
        kept.push_back(readBack(model_.fields[i], row[i]));
    const std::int64_t name = row[0].view().asInteger();
    const std::string collision = model_.collision(kept, nullptr);
    if (collision.empty() && model_.rows.contains(name))
        return;
    try {
        const RowId placed = writer_->insert(viewsOf(row));
        EXPECT_EQ(collision, "") << "a record came in that this index has already";
        places_[name] = placed;
        model_.rows[name] = std::move(kept);
    } catch (const EngineError& e) {
        EXPECT_EQ(e.number(), 3022) << e.what();
        EXPECT_NE(collision, "") << e.what();
    }
}

std::int64_t RandomRun::anyName()
{
    auto found = model_.rows.lower_bound(1 + below(random_, 30000));
    return found == model_.rows.end() ? model_.rows.begin()->first : found->first;
}

RowId RandomRun::place(std::int64_t name)
{
    if (format_.keyIndex.empty())
        return places_.at(name);
    if (!cursor_)
        cursor_ = store_->cursor(table(), format_.keyIndex);
    const ValueView key = model_.rows.at(name)[0].view();
    EXPECT_TRUE(cursor_->seek(Comparison::Equal, {&key, 1}))
        << "record " << name << " is not found";
    return cursor_->row();
}

void RandomRun::updateOne()
{
    const std::int64_t name = anyName();
    ModelRow row = model_.rows.at(name);
    std::vector<Value> made;
    std::vector<int> positions;
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i == 0 ? !format_.updatesKey || below(random_, 8) : below(random_, 3))
            continue;
        made.push_back(i == 0 ? Value(ValueView::integer(1 + below(random_, 30000)))
                              : makeValue(model_.fields[i]));
        positions.push_back(static_cast<int>(i));
        row[i] = readBack(model_.fields[i], made.back());
    }
    if (positions.empty())
        return;
    const std::int64_t newName = row[0].view().asInteger();
    const std::string collision = model_.collision(row, &name);
    if (newName != name && collision.empty() && model_.rows.contains(newName))
        return;
    std::vector<FieldChange> changes;
    for (std::size_t i = 0; i < made.size(); ++i)
        changes.push_back({positions[i], made[i].view()});
    const RowId placed = place(name);
    try {
        writer_->update(placed, changes);
        EXPECT_EQ(collision, "") << "a record was changed to one that this index has already";
        model_.rows.erase(name);
        model_.rows[newName] = std::move(row);
        places_.erase(name);
        places_[newName] = placed;
    } catch (const EngineError& e) {
        EXPECT_EQ(e.number(), 3022) << e.what();
        EXPECT_NE(collision, "") << e.what();
    }
}

void RandomRun::removeOne()
{
    const std::int64_t name = anyName();
    writer_->remove(place(name));
    model_.rows.erase(name);
    places_.erase(name);
}

// ---- structure

void RandomRun::changeStructure()
{
    cursor_.reset();
    writer_.reset();
    const bool fields = !format_.moreFields.empty();
    const bool indexes = !format_.moreIndexes.empty();
    if (fields && (!indexes || below(random_, 2)))
        addOrDropField();
    else if (indexes)
        addOrDropIndex();
    reopen();
    compareAll();
}

void RandomRun::addOrDropField()
{
    const FieldDef& field = format_.moreFields[random_() % format_.moreFields.size()];
    const int at = model_.fieldPosition(field.name);
    if (at < 0) {
        store_->addField(table(), field);
        model_.fields.push_back(field);
        for (auto& [name, row] : model_.rows)
            row.push_back(readBack(field, Value()));
    } else if (!model_.indexUses(field.name)) {
        store_->dropField(table(), field.name);
        model_.fields.erase(model_.fields.begin() + at);
        for (auto& [name, row] : model_.rows)
            row.erase(row.begin() + at);
    }
}

void RandomRun::addOrDropIndex()
{
    const IndexDef& index = format_.moreIndexes[random_() % format_.moreIndexes.size()];
    const auto same = [&](const IndexDef& other) {
        return paths::sameName(other.name, index.name);
    };
    const auto found = std::find_if(model_.indexes.begin(), model_.indexes.end(), same);
    if (found != model_.indexes.end()) {
        store_->dropIndex(table(), index.name);
        model_.indexes.erase(found);
        return;
    }
    for (const IndexFieldDef& part : index.fields)
        if (model_.fieldPosition(part.name) < 0)
            return;
    const bool refused = index.unique && model_.hasDuplicates(index);
    try {
        store_->addIndex(table(), index);
        EXPECT_FALSE(refused) << index.name << " was made over records that it cannot hold";
        model_.indexes.push_back(index);
    } catch (const EngineError& e) {
        EXPECT_EQ(e.number(), 3022) << e.what();
        EXPECT_TRUE(refused) << index.name << ": " << e.what();
    }
}

void RandomRun::makeAnew()
{
    compareAll();
    cursor_.reset();
    writer_.reset();
    store_->dropTable(table());
    store_->createTable(format_.start);
    model_.rows.clear();
    model_.fields = format_.start.fields;
    model_.indexes = format_.start.indexes;
    reopen();
}

void runRandomOperations(const RandomFormat& format, int operations)
{
    const auto seed = static_cast<unsigned>(environmentNumber("VELNOR_RANDOM_SEED", 7));
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomRun run(format, seed);
    run.run(environmentNumber("VELNOR_RANDOM_OPS", operations));
}

}  // namespace velnor::testing
