#include "access/formats/jet/relations.h"

#include <algorithm>

namespace velnor::jet {
namespace {

const LogicalIndex* endNumbered(const JetTable& table, std::int32_t number)
{
    for (const LogicalIndex& index : table.def().logicalIndexes)
        if (static_cast<std::int32_t>(index.number) == number &&
            index.realIndex < table.def().realIndexes.size())
            return &index;
    return nullptr;
}

}  // namespace

Relations::Relations(JetTable& table, const TableByPage& tables) : table_(table), tables_(tables)
{
    findEnds();
}

void Relations::refresh()
{
    for (const End& end : ends_)
        if (end.other && end.other->retired()) {
            ends_.clear();
            return findEnds();
        }
}

void Relations::findEnds()
{
    const bool jet3 = !table_.file().format().wideText;
    const CodePage* page = &table_.file().codePage();
    for (const LogicalIndex& logical : table_.def().logicalIndexes) {
        if (logical.relation == RelationKind::None ||
            logical.realIndex >= table_.def().realIndexes.size())
            continue;
        End end;
        end.parent = logical.relation == RelationKind::Parent;
        end.name = logical.name;
        end.number = static_cast<std::int32_t>(logical.number);
        end.otherNumber = logical.otherIndex;
        end.updateRule = logical.updateRule;
        end.deleteRule = logical.deleteRule;
        const OpenIndex& mine = table_.index(static_cast<int>(logical.realIndex));
        end.fields = mine.fields;
        end.here = std::make_unique<KeyBuilder>(jet3, page, mine.keyColumns);
        end.otherPage = logical.otherTable;
        // A table may be related to itself; it must not hold itself open.
        const bool itself = logical.otherTable == table_.page();
        end.other = itself ? nullptr : tables_(logical.otherTable);
        if (JetTable* other = itself ? &table_ : end.other.get())
            if (const LogicalIndex* theirs = endNumbered(*other, logical.otherIndex)) {
                end.otherIndex = static_cast<int>(theirs->realIndex);
                const OpenIndex& index = other->index(end.otherIndex);
                end.otherFields = index.fields;
                end.there = std::make_unique<KeyBuilder>(jet3, page, index.keyColumns);
            }
        ends_.push_back(std::move(end));
    }
}

void Relations::refuse(const End& end, const char* why) const
{
    throw EngineError(EngineErrorNumber::NotSupported, "Table \"" + table_.name() +
                                                           "\" takes part in the relationship \"" +
                                                           end.name + "\": " + why);
}

void Relations::refuseParent(const End& end)
{
    throw EngineError(EngineErrorNumber::RelatedRecords,
                      "The record cannot be deleted or changed: table \"" + otherOf(end).name() +
                          "\" has records that belong to it.");
}

void Relations::refuseChild(const End& end)
{
    throw EngineError(EngineErrorNumber::NoRelatedRecord,
                      "The record cannot be added or changed: table \"" + otherOf(end).name() +
                          "\" has no record that it belongs to.");
}

std::optional<KeyView> Relations::keyThere(End& end, const FieldValue& value)
{
    values_.clear();
    for (const int field : end.fields)
        values_.push_back(field < 0 ? ValueView::null() : value(field));
    // A record without a value refers to nothing.
    for (const ValueView& v : values_)
        if (v.isNull())
            return std::nullopt;
    if (!end.there)
        refuse(end, "its other table cannot be found, so the change is not possible.");
    const KeyView key = end.there->build(values_);
    if (!end.there->sure())
        refuse(end, "the sort order of its key is not supported, so the change is not possible.");
    return key;
}

bool Relations::parentIsThere(End& end, const FieldValue& value)
{
    const auto key = keyThere(end, value);
    if (!key)
        return true;
    IndexWalker walker(*otherOf(end).index(end.otherIndex).tree);
    const bool found = walker.seek(*key) && walker.key().size() >= key->size() &&
                       std::equal(key->begin(), key->end(), walker.key().begin());
    return found || isOwnParent(end, value, *key);
}

/// In a table that is related to itself, a record may belong to itself.
bool Relations::isOwnParent(End& end, const FieldValue& value, KeyView key)
{
    if (end.other)
        return false;
    before_.assign(key.begin(), key.end());
    values_.clear();
    for (const int field : end.otherFields)
        values_.push_back(field < 0 ? ValueView::null() : value(field));
    const KeyView own = end.there->build(values_);
    return std::ranges::equal(own, before_);
}

/// The records of the other table under this record's key, but the record itself.
std::vector<RowPointer> Relations::children(End& end, RowPointer self, const FieldValue& value)
{
    std::vector<RowPointer> rows;
    const auto key = keyThere(end, value);
    if (!key)
        return rows;
    IndexWalker walker(*otherOf(end).index(end.otherIndex).tree);
    for (bool on = walker.seek(*key); on && walker.key().size() >= key->size() &&
                                      std::equal(key->begin(), key->end(), walker.key().begin());
         on = walker.next())
        if (end.other || walker.row() != self)
            rows.push_back(walker.row());
    return rows;
}

bool Relations::changes(End& end, const FieldValue& before, const FieldValue& after)
{
    const auto key = [&](const FieldValue& value) {
        values_.clear();
        for (const int field : end.fields)
            values_.push_back(field < 0 ? ValueView::null() : value(field));
        return end.here->build(values_);
    };
    const KeyView old = key(before);
    before_.assign(old.begin(), old.end());
    const KeyView now = key(after);
    return !std::equal(now.begin(), now.end(), before_.begin(), before_.end());
}

void Relations::checkInsert(const FieldValue& value)
{
    for (End& end : ends_)
        if (!end.parent && !parentIsThere(end, value))
            refuseChild(end);
}

void Relations::followRemove(RowPointer self, const FieldValue& value,
                             std::vector<LinkedChange>& out)
{
    for (End& end : ends_) {
        if (!end.parent)
            continue;
        for (const RowPointer child : children(end, self, value)) {
            LinkedChange change{
                end.otherPage, end.otherNumber, child, end.deleteRule == kCascade, {}};
            if (end.deleteRule == kSetNull)
                for (const int field : end.otherFields)
                    change.fields.emplace_back(field, Value());
            else if (end.deleteRule != kCascade)
                refuseParent(end);
            out.push_back(std::move(change));
        }
    }
}

void Relations::followOwnKey(const FieldValue& before, const FieldValue& after,
                             std::vector<std::pair<int, Value>>& out)
{
    for (End& end : ends_) {
        if (!end.parent || end.other || !changes(end, before, after))
            continue;
        const auto built = keyThere(end, before);
        if (!built)
            continue;
        const std::vector<std::uint8_t> key(built->begin(), built->end());
        // Not its own parent, or the same change gives it another one.
        if (!isOwnParent(end, before, key) || !isOwnParent(end, after, key))
            continue;
        if (end.updateRule != kCascade)
            refuseParent(end);
        for (std::size_t i = 0; i < end.otherFields.size() && i < end.fields.size(); ++i)
            out.emplace_back(end.otherFields[i], Value(after(end.fields[i])));
    }
}

void Relations::followUpdate(RowPointer self, const FieldValue& before, const FieldValue& after,
                             std::int32_t asked, std::vector<LinkedChange>& out)
{
    for (End& end : ends_) {
        if (!changes(end, before, after))
            continue;
        if (!end.parent) {
            if (end.number != asked && !parentIsThere(end, after))
                refuseChild(end);
            continue;
        }
        for (const RowPointer child : children(end, self, before)) {
            if (end.updateRule != kCascade)
                refuseParent(end);
            LinkedChange change{end.otherPage, end.otherNumber, child, false, {}};
            for (std::size_t i = 0; i < end.otherFields.size() && i < end.fields.size(); ++i)
                change.fields.emplace_back(end.otherFields[i], Value(after(end.fields[i])));
            out.push_back(std::move(change));
        }
    }
}

}  // namespace velnor::jet
