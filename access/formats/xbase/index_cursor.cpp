#include "access/formats/xbase/index_cursor.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/field_encode.h"

namespace velnor::xbase {

IndexCursor::IndexCursor(std::shared_ptr<DbfTable> table, std::string_view index)
    : table_(table), name_(index), rows_(std::move(table))
{
    if (!this->index().tag().walkable)
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index " + name_ + " cannot be walked: " + index_->tag().trouble +
                              ".");
}

/// The index again, when the table has read its index files anew.
TableIndex& IndexCursor::index()
{
    IndexSet& set = table_->indexes();
    if (!index_ || epoch_ != set.epoch()) {
        index_ = &set.find(name_);
        epoch_ = set.epoch();
        walker_.emplace(index_->nodes());
        generation_ = 0;
        exact_ = false;
    }
    return *index_;
}

/// What was written since the last move is seen: the entry is looked for again.
void IndexCursor::refresh()
{
    index().flush();
    const std::uint64_t generation = table_->generation();
    if (generation == generation_)
        return;
    generation_ = generation;
    if (stand_ == Stand::On)
        exact_ = walker_->seekEntry(key_.data(), record_);
}

/// On from an entry to the next one whose record shows.
bool IndexCursor::settle(bool there, bool forward)
{
    const bool up = forward != index_->walksBackwards();
    for (; there; there = up ? walker_->next() : walker_->previous()) {
        record_ = walker_->record();
        if (!rows_.moveTo(record_))
            continue;
        std::copy_n(walker_->key(), index_->tag().keyLength, key_.data());
        stand_ = Stand::On;
        exact_ = true;
        return true;
    }
    stand_ = forward ? Stand::Behind : Stand::Before;
    rows_.moveTo(0);
    return false;
}

bool IndexCursor::first()
{
    refresh();
    return settle(index_->walksBackwards() ? walker_->last() : walker_->first(), true);
}

bool IndexCursor::last()
{
    refresh();
    return settle(index_->walksBackwards() ? walker_->first() : walker_->last(), false);
}

bool IndexCursor::step(bool forward)
{
    if (stand_ == (forward ? Stand::Before : Stand::Behind))
        return forward ? first() : last();
    if (stand_ != Stand::On)
        return false;
    refresh();
    const bool up = forward != index_->walksBackwards();
    if (!up)
        return settle(walker_->previous(), forward);
    return settle(exact_ ? walker_->next() : walker_->on(), forward);
}

bool IndexCursor::next()
{
    return step(true);
}

bool IndexCursor::previous()
{
    return step(false);
}

bool IndexCursor::moveTo(RowId row)
{
    refresh();
    if (row == 0 || row > table_->count() || !rows_.moveTo(row))
        return false;
    const auto number = static_cast<std::uint32_t>(row);
    if (const KeyMaker* keys = index_->keys()) {
        image_.resize(table_->header().recordLength);
        table_->readRecords(number, 1, image_);
        keys->makeKey(image_.data(), number, key_.data());
        exact_ = walker_->seekEntry(key_.data(), number);
        record_ = number;
        stand_ = Stand::On;
        return true;
    }
    for (bool on = first(); on; on = next())
        if (this->row() == row)
            return true;
    return false;
}

/// A record that has the wanted values; fields without one are filled up.
void IndexCursor::putSeekValues(std::span<const ValueView> key, std::uint8_t filler)
{
    const DbfHeader& header = table_->header();
    image_.assign(header.recordLength, 0);
    blankRecord(header, image_);
    cut_ = false;
    const std::vector<std::size_t>& fields = index_->fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const DbfField& field = header.fields[fields[i]];
        if (i >= key.size()) {
            std::fill_n(image_.data() + field.offset, field.length, filler);
            continue;
        }
        try {
            encodeField(header, field, key[i], image_.data(), scratch_);
        } catch (const EngineError& error) {
            if (error.code() != EngineErrorNumber::ValueTooLong || key[i].kind() != ValueKind::Text)
                throw;
            const auto bytes = encodeText(key[i].asText(), *header.codePage, scratch_);
            std::copy_n(bytes.data(), std::min<std::size_t>(bytes.size(), field.length),
                        image_.data() + field.offset);
            cut_ = true;
        }
    }
}

/// With fewer values than fields, the part of the key that does not depend on the others counts.
bool IndexCursor::makeSeekKey(std::span<const ValueView> key, std::size_t& length)
{
    const KeyMaker* keys = index_->keys();
    if (!keys || index_->fields().empty())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index " + name_ + " cannot be searched: " +
                              (keys ? "it names no field" : index_->tag().trouble) + ".");
    if (key.empty() || key.size() > index_->fields().size())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "The index " + name_ + " has another number of fields.");
    length = index_->tag().keyLength;
    putSeekValues(key, ' ');
    keys->makeKey(image_.data(), 0, wanted_.data());
    if (key.size() == index_->fields().size())
        return true;
    std::array<std::uint8_t, kLongestKey> other;
    for (const std::uint8_t filler : {std::uint8_t{'1'}, std::uint8_t{'z'}}) {
        putSeekValues(key, filler);
        keys->makeKey(image_.data(), 0, other.data());
        length = static_cast<std::size_t>(
            std::mismatch(wanted_.data(), wanted_.data() + length, other.data()).first -
            wanted_.data());
    }
    return length > 0;
}

bool IndexCursor::seek(Comparison comparison, std::span<const ValueView> key)
{
    refresh();
    std::size_t length = 0;
    const bool made = makeSeekKey(key, length);
    if (const std::string& why = index_->whyNotSearched(); !why.empty())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index " + name_ + " cannot be searched: " + why + ".");
    if (!made || (cut_ && comparison == Comparison::Equal))
        return settle(false, true);
    const bool falls = index_->walksBackwards();
    const auto equal = [&] { return std::memcmp(walker_->key(), wanted_.data(), length) == 0; };
    // Upwards in the tree from the first entry that is not less, or downwards from the last that
    // is not greater; "behind" moves past equal ones.
    const auto upward = [&](bool behind) { return walker_->seek(wanted_.data(), length, behind); };
    const auto downward = [&](bool behind) {
        walker_->seek(wanted_.data(), length, !behind);
        return walker_->previous();
    };
    switch (comparison) {
    case Comparison::Equal: {
        bool there = falls ? downward(false) : upward(false);
        for (; there && equal(); there = falls ? walker_->previous() : walker_->next())
            if (rows_.moveTo(walker_->record()))
                return settle(true, true);
        return settle(false, true);
    }
    case Comparison::GreaterEqual:
        return settle(falls ? downward(false) : upward(false), true);
    case Comparison::Greater:
        return settle(falls ? downward(true) : upward(true), true);
    case Comparison::LessEqual:
        return settle(falls ? upward(false) : downward(false), false);
    case Comparison::Less:
        return settle(falls ? upward(true) : downward(true), false);
    }
    return false;
}

}  // namespace velnor::xbase
