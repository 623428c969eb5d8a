#include "access/formats/paradox/index_cursor.h"

#include "access/engine_error.h"
#include "access/formats/paradox/db_cursor.h"
#include "platform/paths.h"

namespace velnor::paradox {

SecondaryIndex* findIndex(DbTable& table, std::string_view name)
{
    for (const auto& index : table.indexes())
        if (paths::sameName(index->name(), name))
            return index.get();
    return nullptr;
}

IndexCursor::IndexCursor(std::shared_ptr<DbTable> table, std::string_view index)
    : table_(std::move(table)), name_(index), view_(*table_)
{
    refresh();
}

SecondaryIndex& IndexCursor::refresh()
{
    SecondaryIndex* index = findIndex(*table_, name_);
    if (!index)
        throw EngineError(EngineErrorNumber::IndexKeyMissing,
                          name_ + " is not an index of " + table_->path() + ".");
    // An index that is being written is tied to the table at the next commit.
    if (!index->writable() && !index->current())
        throw EngineError(EngineErrorNumber::IndexNotMaintained, "The index " + name_ + " of " +
                                                                     table_->path() +
                                                                     " is older than the table.");
    if (!index->kept() && table_->pendingBytes() > 0)
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index " + name_ + " is not kept right while the table changes.");
    index_ = index;
    walker_.refresh(index->chain(), table_->generation());
    return *index;
}

std::optional<Place> IndexCursor::recordOf(const std::uint8_t* entry)
{
    if (index_->kept())
        return table_->placeOfKey(index_->primaryKeyOf(entry), index_->hintOf(entry));
    RecordChain& chain = table_->chain();
    const auto at = chain.positionOf(index_->looseBlockOf(entry));
    const std::size_t slot = index_->looseOffsetOf(entry) / chain.recordSize();
    if (!at || slot >= chain.recordsAt(*at))
        return std::nullopt;
    return Place{static_cast<std::uint32_t>(*at), static_cast<std::uint32_t>(slot)};
}

/// On from an entry to the next one whose record is there.
bool IndexCursor::stand(bool on, bool forward)
{
    for (; on; on = forward ? walker_.next() : walker_.previous())
        if (const auto place = recordOf(walker_.record())) {
            const std::uint8_t* bytes = table_->chain().record(*place);
            record_.assign(bytes, bytes + table_->header().recordSize);
            row_ = table_->rowAt(*place);
            view_.show(record_.data());
            return true;
        }
    view_.show(nullptr);
    row_ = 0;
    return false;
}

bool IndexCursor::first()
{
    refresh();
    return stand(walker_.first(), true);
}

bool IndexCursor::last()
{
    refresh();
    return stand(walker_.last(), false);
}

bool IndexCursor::next()
{
    refresh();
    return stand(walker_.next(), true);
}

bool IndexCursor::previous()
{
    refresh();
    return stand(walker_.previous(), false);
}

bool IndexCursor::moveTo(RowId row)
{
    SecondaryIndex& index = refresh();
    const auto place = table_->placeOf(row);
    if (!place)
        return stand(false, true);
    if (!index.kept()) {
        for (bool on = first(); on; on = next())
            if (row_ == row)
                return true;
        return false;
    }
    std::vector<std::uint8_t> entry(index.entryLength());
    index.makeEntry(table_->chain().record(*place), 0, entry.data());
    const auto found = index.chain().find(entry.data(), index.entryKeyLength());
    return stand(found && walker_.moveTo(*found), true);
}

bool IndexCursor::moveToOrdinal(std::int64_t n)
{
    const auto place = refresh().chain().placeOf(n);
    return place && stand(walker_.moveTo(*place), true);
}

std::int64_t IndexCursor::ordinal()
{
    SecondaryIndex& index = refresh();
    return walker_.on() ? index.chain().ordinalOf(walker_.place()) : 0;
}

bool IndexCursor::seek(Comparison comparison, std::span<const ValueView> key)
{
    SecondaryIndex& index = refresh();
    if (key.empty() || key.size() > index.fields().size())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "The index " + name_ + " has another number of fields.");
    if (!index.chain().ordered())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index " + name_ + " cannot be searched: its sort order " +
                              sortOrderWords(table_->header()) + " is not known.");
    std::vector<std::uint8_t> plain, prefix;
    const std::span<const StoredField> fields = index.header().fields;
    const bool same = makeKeyPrefix(*table_, fields, key, plain);
    prefix.resize(plain.size());
    std::size_t at = 0;
    for (std::size_t i = 0; i < key.size(); at += fields[i++].length)
        index.makePart(i, plain.data() + at, prefix.data() + at);
    if (!same && comparison == Comparison::Equal) {
        walker_.leave(true);
        return stand(false, true);
    }
    const bool forward = comparison != Comparison::Less && comparison != Comparison::LessEqual;
    const bool on = walker_.seek(comparison, prefix.data(), prefix.size());
    if (comparison != Comparison::Equal)
        return stand(on, forward);
    return stand(on, true) && std::equal(prefix.begin(), prefix.end(), walker_.record());
}

}  // namespace velnor::paradox
