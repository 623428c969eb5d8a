// Indexes that come and go on a table with records.
#include <algorithm>

#include "access/formats/jet/index_rules.h"
#include "access/formats/jet/new_table.h"
#include "access/formats/jet/structure.h"
#include "access/formats/jet/table_change.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

KeyBuilder keyBuilder(const JetFile& file, const IndexPlan& plan)
{
    return KeyBuilder(!file.format().wideText, &file.codePage(), plan.keyColumns);
}

/// Hands sorted entries on, counts their keys, and refuses one that comes twice where it may not.
class KeyWatch {
public:
    /// `nulls` is the key of a record of Nulls alone, which may repeat.
    KeyWatch(EntrySource entries, bool unique, KeyView nulls, const std::string& table)
        : entries_(std::move(entries)), unique_(unique), nulls_(nulls.begin(), nulls.end()),
          table_(table)
    {
    }
    std::optional<IndexEntry> next()
    {
        auto entry = entries_();
        if (!entry)
            return entry;
        if (!std::ranges::equal(last_, entry->key)) {
            ++keys_;
            last_.assign(entry->key.begin(), entry->key.end());
        } else if (unique_ && !std::ranges::equal(nulls_, entry->key)) {
            refuseDuplicateKey(table_);
        }
        return entry;
    }
    std::uint32_t keys() const { return keys_; }

private:
    EntrySource entries_;
    bool unique_;
    std::vector<std::uint8_t> nulls_, last_;
    const std::string& table_;
    std::uint32_t keys_ = 0;
};

}  // namespace

void TableChange::addIndex(const IndexDef& index)
{
    for (const LogicalIndex& other : def_.logicalIndexes) {
        if (paths::sameName(other.name, index.name))
            throw EngineError(EngineErrorNumber::ItemExists,
                              "There is an index \"" + index.name + "\" already.");
        if (index.primary && other.kind == LogicalKind::Primary)
            throw EngineError(EngineErrorNumber::ItemExists,
                              "Table \"" + entry_.name + "\" has a primary key already.");
    }
    def_.realIndexes.push_back(newRealIndex(def_, index, file_.format()));
    addLogicalIndex(file_, def_, index);
    buildTree(def_.realIndexes.back());
    write();
    touchCatalog();
}

EntryRun TableChange::collectEntries(const RealIndex& real, const IndexPlan& plan)
{
    constexpr std::size_t kBetweenBreaths = 1024;
    EntryRun entries(file_);
    KeyBuilder keys = keyBuilder(file_, plan);
    std::vector<ValueView> values(plan.fields.size());
    PhysicalCursor cursor(table_);
    std::size_t records = 0;
    for (bool on = cursor.first(); on; on = cursor.next()) {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = cursor.field(plan.fields[i]);
        const KeyView key = keys.build(values);
        requireKey(real, keys, entry_.name);
        if (takesKey(real, keys))
            entries.add(key, pointerOf(cursor.row()));
        if (++records % kBetweenBreaths == 0)
            file_.breathe();
    }
    return entries;
}

void TableChange::buildTree(RealIndex& real)
{
    const IndexPlan plan(def_, table_->plan(), real);
    EntryRun entries = collectEntries(real, plan);
    KeyBuilder keys = keyBuilder(file_, plan);
    const std::vector<ValueView> nulls(plan.fields.size());
    KeyWatch watch(entries.sorted(), real.unique(), keys.build(nulls), entry_.name);

    MapRecords maps(file_, def_.ownedMap.page);
    layIndex(file_, maps, def_.page(), real);
    UsageMap map(file_, real.map);
    IndexTree tree(file_, &map, real.root, def_.page());
    tree.build([&watch] { return watch.next(); });
    real.distinct = watch.keys();
}

void TableChange::dropIndex(std::string_view name)
{
    auto& all = def_.logicalIndexes;
    const auto index = std::find_if(all.begin(), all.end(), [&](const LogicalIndex& other) {
        return paths::sameName(other.name, name);
    });
    if (index == all.end())
        throw EngineError(EngineErrorNumber::IndexKeyMissing, "\"" + std::string(name) +
                                                                  "\" is not an index of table \"" +
                                                                  entry_.name + "\".");
    const std::uint32_t real = index->realIndex;
    const auto sameTree = [real](const LogicalIndex& other) { return other.realIndex == real; };
    for (const LogicalIndex& other : all)
        if (sameTree(other) && other.relation != RelationKind::None)
            throw EngineError(EngineErrorNumber::IndexInRelation,
                              "The index \"" + index->name + "\" of table \"" + entry_.name +
                                  "\" belongs to a relationship; delete that first.");
    all.erase(index);
    if (std::none_of(all.begin(), all.end(), sameTree))
        dropRealIndex(real);
    write();
    touchCatalog();
}

/// Real indexes are numbered by their place: those behind it move up by one.
void TableChange::dropRealIndex(std::uint32_t real)
{
    if (real >= def_.realIndexes.size())
        return;  // of a damaged definition
    try {
        table_->index(static_cast<int>(real)).tree->release();
        releaseMap(file_, def_.realIndexes[real].map);
    } catch (const EngineError& error) {
        // Of a damaged tree nobody knows which pages are its own: they are left until the file is
        // compacted. That the index goes is what mends the table.
        if (error.code() != EngineErrorNumber::Corrupt)
            throw;
    }
    def_.realIndexes.erase(def_.realIndexes.begin() + real);
    for (LogicalIndex& other : def_.logicalIndexes)
        if (other.realIndex > real)
            --other.realIndex;
}

}  // namespace velnor::jet
