#include "access/formats/paradox/db_cursor.h"

#include "access/engine_error.h"
#include "access/formats/paradox/field_codec.h"

namespace velnor::paradox {

DbCursor::DbCursor(std::shared_ptr<DbTable> table, bool byKey)
    : table_(std::move(table)), byKey_(byKey), view_(*table_)
{
}

void DbCursor::refresh()
{
    walker_.refresh(table_->chain(), table_->generation());
}

bool DbCursor::stand(bool on)
{
    view_.show(on ? walker_.record() : nullptr);
    return on;
}

bool DbCursor::first()
{
    refresh();
    return stand(walker_.first());
}

bool DbCursor::last()
{
    refresh();
    return stand(walker_.last());
}

bool DbCursor::next()
{
    refresh();
    return stand(walker_.next());
}

bool DbCursor::previous()
{
    refresh();
    return stand(walker_.previous());
}

RowId DbCursor::row() const
{
    if (!walker_.on())
        return 0;
    if (!table_->keyed())
        return std::uint64_t{walker_.block()} << 16 | (walker_.place().slot + 1);
    return table_->names().nameOf(walker_.record() ? walker_.record() : walker_.key(),
                                  walker_.block());
}

bool DbCursor::moveTo(RowId row)
{
    refresh();
    const auto place = table_->placeOf(row);
    return stand(place && walker_.moveTo(*place));
}

bool DbCursor::moveToOrdinal(std::int64_t n)
{
    refresh();
    const auto place = table_->chain().placeOf(n);
    return place && stand(walker_.moveTo(*place));
}

std::int64_t DbCursor::ordinal()
{
    refresh();
    return walker_.on() ? table_->chain().ordinalOf(walker_.place()) : 0;
}

bool makeKeyPrefix(const DbTable& table, std::span<const StoredField> fields,
                   std::span<const ValueView> values, std::vector<std::uint8_t>& key)
{
    bool same = true;
    std::string scratch;
    key.clear();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t at = key.size();
        key.resize(at + fields[i].length);
        same = encodeField(fields[i], values[i], *table.header().codePage, key.data() + at, scratch,
                           Fit::Nearest) &&
               same;
    }
    return same;
}

bool DbCursor::seek(Comparison comparison, std::span<const ValueView> key)
{
    if (!byKey_)
        return RowCursor::seek(comparison, key);
    refresh();
    const FileHeader& header = table_->header();
    if (key.empty() || key.size() > header.keyFields)
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "The primary key has another number of fields.");
    if (!table_->chain().ordered())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The key of " + table_->path() + " cannot be searched: its sort order " +
                              sortOrderWords(header) + " is not known.");
    std::vector<std::uint8_t> prefix;
    if (!makeKeyPrefix(*table_, header.fields, key, prefix) && comparison == Comparison::Equal) {
        walker_.leave(true);
        return stand(false);
    }
    return stand(walker_.seek(comparison, prefix.data(), prefix.size()));
}

}  // namespace velnor::paradox
