#include "access/formats/jet/record_keys.h"

#include <algorithm>

namespace velnor::jet {

RecordKeys::RecordKeys(JetTable& table) : table_(table)
{
    const bool jet3 = !table.file().format().wideText;
    for (int i = 0; i < table.indexCount(); ++i) {
        Part part;
        part.open = &table.index(i);
        part.real = i;
        part.keys =
            std::make_unique<KeyBuilder>(jet3, &table.file().codePage(), part.open->keyColumns);
        for (const int field : part.open->fields)
            if (field >= 0)
                fields_.push_back(field);
        indexes_.push_back(std::move(part));
    }
    std::sort(fields_.begin(), fields_.end());
    fields_.erase(std::unique(fields_.begin(), fields_.end()), fields_.end());
}

std::uint64_t RecordKeys::waitingBytes() const
{
    std::uint64_t bytes = 0;
    for (const Part& part : indexes_)
        bytes += part.open->tree->waitingBytes();
    return bytes;
}

void RecordKeys::build(Part& part, std::span<const ValueView> values,
                       std::vector<std::uint8_t>& key, bool& has)
{
    const auto& fields = table_.plan().fields;
    keyValues_.clear();
    for (const int field : part.open->fields) {
        ValueView v = field < 0 ? ValueView::null() : values[static_cast<std::size_t>(field)];
        if (field >= 0 && v.isNull() &&
            fields[static_cast<std::size_t>(field)].type == column_type::kBoolean)
            v = ValueView::boolean(false);
        keyValues_.push_back(v);
    }
    const KeyView built = part.keys->build(keyValues_);
    key.assign(built.begin(), built.end());
    has = takesKey(definition(part), *part.keys);
}

void RecordKeys::startEmpty()
{
    for (Part& part : indexes_)
        part.hadOld = false;
}

void RecordKeys::start(std::span<const ValueView> values)
{
    for (Part& part : indexes_) {
        build(part, values, part.oldKey, part.hadOld);
        part.hasNew = false;
        part.changes = true;
        part.inserted = false;
    }
}

void RecordKeys::prepare(std::span<const ValueView> values, RowPointer self)
{
    for (Part& part : indexes_) {
        part.inserted = false;
        build(part, values, part.newKey, part.hasNew);
        part.changes = part.hasNew != part.hadOld || (part.hasNew && part.newKey != part.oldKey);
        if (!part.changes)
            continue;
        requireKey(definition(part), *part.keys, table_.name());
        part.canWait = !definition(part).unique();
        if (part.hasNew && definition(part).unique() && !part.keys->allNull())
            refuseDuplicate(part, self);
    }
}

void RecordKeys::refuseDuplicate(Part& part, RowPointer self)
{
    part.canWait = part.open->tree->beyondAll(part.newKey);
    if (!part.canWait && part.open->tree->otherWithKey(part.newKey, self))
        refuseDuplicateKey(table_.name());
}

void RecordKeys::insert(RowPointer home, bool later)
{
    for (Part& part : indexes_) {
        if (!part.changes || !part.hasNew)
            continue;
        if (later && part.canWait) {
            part.open->tree->insertLater(part.newKey, home);
            part.inserted = true;
        } else {
            part.inserted = part.open->tree->insert(part.newKey, home);
        }
    }
}

void RecordKeys::undoInsert(RowPointer home)
{
    for (Part& part : indexes_)
        if (part.inserted) {
            part.inserted = false;
            part.open->tree->erase(part.newKey, home);
        }
}

void RecordKeys::eraseOld(RowPointer home)
{
    for (Part& part : indexes_)
        if (part.changes && part.hadOld && !part.open->tree->erase(part.oldKey, home))
            eraseByPlace(*part.open->tree, home);
}

/// Of an entry whose key is not ours, for an order that is not known: it is found by its record.
void RecordKeys::eraseByPlace(IndexTree& tree, RowPointer home)
{
    IndexWalker walker(tree);
    for (bool on = walker.first(); on; on = walker.next())
        if (walker.row() == home) {
            const std::vector<std::uint8_t> key(walker.key().begin(), walker.key().end());
            tree.erase(key, home);
            return;
        }
}

}  // namespace velnor::jet
