// The indexes of a table that is copied.
#include <algorithm>

#include "access/formats/jet/definition_repair.h"
#include "access/formats/jet/index_rules.h"
#include "access/formats/jet/jet_cursor.h"
#include "access/formats/jet/table_copy.h"

namespace velnor::jet {

std::string TableCopy::indexName(int real) const
{
    for (const LogicalIndex& index : to_->def().logicalIndexes)
        if (static_cast<int>(index.realIndex) == real)
            return index.name;
    return std::to_string(real);
}

bool TableCopy::renumbersIndex(int real) const
{
    const auto& fields = from_.index(real).fields;
    return numberField_ >= 0 &&
           std::find(fields.begin(), fields.end(), numberField_) != fields.end();
}

/// What was damaged may have damaged its indexes: they are made anew wherever their order is known.
void TableCopy::copyIndex(int real)
{
    const bool sameKeys = !renumbersIndex(real);
    if (sameKeys && !options_.salvage && translate(real))
        return;
    if (makeIndex(real) || (sameKeys && options_.salvage && translate(real)))
        return;
    if (!options_.salvage)
        damaged("its index \"" + indexName(real) + "\", whose sort order is not supported");
    lostIndexes_.push_back(static_cast<std::uint32_t>(real));
}

/// An empty index over records would hide them.
void TableCopy::dropLostIndexes()
{
    for (auto real = lostIndexes_.rbegin(); real != lostIndexes_.rend(); ++real) {
        TableDef& def = to_->def();
        note("Its index \"" + indexName(static_cast<int>(*real)) +
                 "\" is gone: the sort order of its keys is not supported.",
             false);
        to_->index(static_cast<int>(*real)).tree->release();
        releaseMap(file_, def.realIndexes[*real].map);
        dropRealIndex(def, *real);
        definitionChanged_ = true;
    }
}

/// The old entries in their old order. False when they don't fit the records.
bool TableCopy::translate(int real)
{
    IndexTree& target = *to_->index(real).tree;
    std::uint64_t distinct = 0;
    std::uint64_t entries = 0;
    bool fits = true;
    try {
        IndexWalker walker(*from_.index(real).tree);
        std::vector<std::uint8_t> before;
        bool begun = false;
        entries = target.build([&]() -> std::optional<IndexEntry> {
            if (!(begun ? walker.next() : walker.first()))
                return std::nullopt;
            const auto place = places_.find(walker.row());
            if (!place) {
                fits = false;
                return std::nullopt;
            }
            const KeyView key = walker.key();
            if (!begun || !std::equal(key.begin(), key.end(), before.begin(), before.end())) {
                ++distinct;
                before.assign(key.begin(), key.end());
            }
            begun = true;
            return IndexEntry{key, *place};
        });
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::Corrupt &&
            error.code() != EngineErrorNumber::InvalidArgument)
            throw;
        fits = false;
    }
    const auto records = static_cast<std::int64_t>(to_->def().recordCount);
    if (!fits ||
        static_cast<std::int64_t>(entries) != records - without_[static_cast<std::size_t>(real)]) {
        target.clear();
        return false;
    }
    RealIndex& def = to_->def().realIndexes[static_cast<std::size_t>(real)];
    def.entries = static_cast<std::uint32_t>(entries);
    def.distinct = static_cast<std::uint32_t>(distinct);
    options_.breathe();
    return true;
}

/// Of a damaged definition an index may be on what has no keys.
bool TableCopy::makeIndex(int real)
try {
    return makeFromKeys(real);
} catch (const EngineError& error) {
    if (!options_.salvage || (error.code() != EngineErrorNumber::TypeMismatch &&
                              error.code() != EngineErrorNumber::TypeConversion))
        throw;
    return false;
}

/// From the keys of the records. False when the order of one is not known for sure.
bool TableCopy::makeFromKeys(int real)
{
    OpenIndex& open = to_->index(real);
    RealIndex& def = to_->def().realIndexes[static_cast<std::size_t>(real)];
    KeyBuilder keys(!file_.format().wideText, &file_.codePage(), open.keyColumns);
    std::vector<ValueView> values(open.fields.size());
    const KeyView allNull = keys.build(values);
    const std::vector<std::uint8_t> nothing(allNull.begin(), allNull.end());
    EntryRun run(file_);
    std::uint32_t nulls = 0;
    PhysicalCursor cursor(to_);
    for (bool on = cursor.first(); on; on = cursor.next()) {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = open.fields[i] < 0 ? ValueView::null() : cursor.field(open.fields[i]);
        const KeyView key = keys.build(values);
        if (!keys.sure())
            return false;
        nulls += keys.nulls() > 0;
        if (takesKey(def, keys))
            run.add(key, pointerOf(cursor.row()));
    }
    buildFrom(run, real, nothing);
    if (def.required() && nulls > 0)
        loosen(real, index_flag::kRequired, nulls, "have Null in its key");
    options_.breathe();
    return true;
}

/// `nothing` is the key of Nulls alone, which may repeat.
void TableCopy::buildFrom(EntryRun& run, int real, KeyView nothing)
{
    RealIndex& def = to_->def().realIndexes[static_cast<std::size_t>(real)];
    std::vector<std::uint8_t> before;
    std::uint32_t entries = 0, distinct = 0, repeated = 0;
    const EntrySource sorted = run.sorted();
    to_->index(real).tree->build([&] {
        auto entry = sorted();
        if (entry) {
            const bool again = entries > 0 && std::ranges::equal(before, entry->key);
            repeated += again && !std::ranges::equal(nothing, entry->key);
            distinct += !again;
            before.assign(entry->key.begin(), entry->key.end());
            ++entries;
        }
        return entry;
    });
    def.entries = entries;
    def.distinct = distinct;
    if (def.unique() && repeated > 0)
        loosen(real, index_flag::kUnique, repeated, "have a key that another has, too");
}

/// Records are worth more than a rule that they break: the index no longer asks for it.
void TableCopy::loosen(int real, std::uint8_t flag, std::uint32_t records, const char* why)
{
    const std::string what = "index \"" + indexName(real) + "\"";
    if (!options_.salvage)
        damaged("records of its " + what + " " + why);
    TableDef& def = to_->def();
    def.realIndexes[static_cast<std::size_t>(real)].flags &= static_cast<std::uint8_t>(~flag);
    for (LogicalIndex& index : def.logicalIndexes)
        if (static_cast<int>(index.realIndex) == real && index.kind == LogicalKind::Primary)
            index.kind = LogicalKind::Ordinary;
    definitionChanged_ = true;
    note("Of the records of " + what + " " + std::to_string(records) + " " + why +
             "; it is an ordinary index now.",
         false);
}

}  // namespace velnor::jet
