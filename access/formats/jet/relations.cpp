#include "access/formats/jet/relations.h"

#include <algorithm>

namespace velnor::jet {

Relations::Relations(JetTable& table, const TableByPage& tables) : table_(table)
{
    for (const LogicalIndex& logical : table.def().logicalIndexes) {
        if (logical.relation == RelationKind::None ||
            logical.realIndex >= table.def().realIndexes.size())
            continue;
        End end;
        end.parent = logical.relation == RelationKind::Parent;
        end.name = logical.name;
        const OpenIndex& mine = table.index(static_cast<int>(logical.realIndex));
        end.fields = mine.fields;
        end.other = logical.otherTable == table.page() ? nullptr : tables(logical.otherTable);
        // A table may be related to itself; it must not hold itself open.
        JetTable* other = logical.otherTable == table.page() ? &table : end.other.get();
        if (other)
            for (const LogicalIndex& theirs : other->def().logicalIndexes)
                if (static_cast<std::int32_t>(theirs.number) == logical.otherIndex &&
                    theirs.realIndex < other->def().realIndexes.size())
                    end.otherIndex = static_cast<int>(theirs.realIndex);
        const bool jet3 = !table.file().format().wideText;
        const CodePage* page = &table.file().codePage();
        end.here = std::make_unique<KeyBuilder>(jet3, page, mine.keyColumns);
        if (other && end.otherIndex >= 0)
            end.there =
                std::make_unique<KeyBuilder>(jet3, page, other->index(end.otherIndex).keyColumns);
        ends_.push_back(std::move(end));
    }
}

void Relations::refuse(const End& end, const char* why) const
{
    throw EngineError(EngineErrorNumber::NotSupported, "Table \"" + table_.name() +
                                                           "\" takes part in the relationship \"" +
                                                           end.name + "\": " + why);
}

bool Relations::otherHas(End& end, const std::function<ValueView(int)>& value)
{
    values_.clear();
    for (const int field : end.fields)
        values_.push_back(field < 0 ? ValueView::null() : value(field));
    // A record without a value refers to nothing.
    for (const ValueView& v : values_)
        if (v.isNull())
            return !end.parent;
    if (!end.there)
        refuse(end, "its other table cannot be found, so the change is not possible.");
    const KeyView key = end.there->build(values_);
    if (!end.there->sure())
        refuse(end, "the sort order of its key is not supported, so the change is not possible.");
    JetTable& other = end.other ? *end.other : table_;
    IndexWalker walker(*other.index(end.otherIndex).tree);
    return walker.seek(key) && walker.key().size() >= key.size() &&
           std::equal(key.begin(), key.end(), walker.key().begin());
}

bool Relations::changes(End& end, const std::function<ValueView(int)>& before,
                        const std::function<ValueView(int)>& after)
{
    const auto key = [&](const std::function<ValueView(int)>& value) {
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

void Relations::checkInsert(const std::function<ValueView(int)>& value)
{
    for (End& end : ends_)
        if (!end.parent && !otherHas(end, value))
            refuse(end, "there is no record in the other table for this one.");
}

void Relations::checkRemove(const std::function<ValueView(int)>& value)
{
    for (End& end : ends_)
        if (end.parent && otherHas(end, value))
            refuse(end, "records of the other table belong to this one; delete them first.");
}

void Relations::checkUpdate(const std::function<ValueView(int)>& before,
                            const std::function<ValueView(int)>& after)
{
    for (End& end : ends_) {
        if (!changes(end, before, after))
            continue;
        if (end.parent && otherHas(end, before))
            refuse(end, "records of the other table belong to this one; its key cannot change.");
        if (!end.parent && !otherHas(end, after))
            refuse(end, "there is no record in the other table for this one.");
    }
}

}  // namespace velnor::jet
