#include "access/formats/jet/jet_cursor.h"

#include <algorithm>

#include "access/formats/jet/long_value.h"
#include "access/formats/jet/text_compression.h"
#include "platform/paths.h"

namespace velnor::jet {

// ---- the record in hand

JetCursor::JetCursor(std::shared_ptr<JetTable> table)
    : table_(std::move(table)), reader_(table_->plan()), scratch_(table_->plan().fields.size())
{
}

bool JetCursor::take(std::optional<HeldRow> held)
{
    open_ = held && reader_.open(held->bytes);
    if (open_) {
        target_ = std::move(held->page);
        generation_ = table_->file().generation();
    }
    return open_;
}

bool JetCursor::openRow(RowPointer home)
{
    open_ = false;
    if (!page_ || page_.number() != home.page) {
        auto page = table_->dataPage(home.page);
        if (!page)
            return false;
        page_ = std::move(*page);
    }
    return openSlot(home.slot);
}

bool JetCursor::openSlot(int slot)
{
    home_ = {page_.number(), static_cast<std::uint8_t>(slot)};
    return take(table_->rowOn(page_, slot));
}

/// A writer was here: the record may lie elsewhere in its page, or be gone.
void JetCursor::refresh()
{
    const RowPointer home = home_;
    page_.release();
    target_.release();
    openRow(home);
}

ValueView JetCursor::field(int n)
{
    if (open_ && generation_ != table_->file().generation()) [[unlikely]]
        refresh();
    if (!open_)
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "No current record.");
    if (table_->plan().fields[n].longValue()) [[unlikely]]
        return longValue(n);
    return reader_.value(n, scratch_[n]);
}

ValueView JetCursor::longValue(int n)
{
    const auto stored = reader_.raw(n);
    if (!stored)
        return ValueView::null();
    const bool memo = table_->plan().fields[n].type == column_type::kMemo;
    JetFile& file = table_->file();
    const auto bytes = readLongValue(file, *stored, memo ? gathered_ : scratch_[n]);
    if (!bytes)
        return ValueView::null();  // damaged: the record's other fields are still good
    if (!memo)
        return ValueView::bytes(*bytes);
    const std::string_view chars(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    const std::string_view text = file.format().wideText
                                      ? decodeText(*bytes, scratch_[n])
                                      : file.codePage().decode(chars, scratch_[n]);
    // What was gathered serves the next memo of the record, too: the text moves to its own field.
    if (text.data() >= gathered_.data() && text.data() < gathered_.data() + gathered_.size()) {
        scratch_[n].assign(text);
        return ValueView::text(scratch_[n]);
    }
    return ValueView::text(text);
}

bool JetCursor::next()
{
    if (at_ == At::Before)
        return first();
    return at_ == At::Row && stepForward();
}

bool JetCursor::previous()
{
    if (at_ == At::After)
        return last();
    return at_ == At::Row && stepBackward();
}

// ---- physical order

bool PhysicalCursor::holdPage(std::size_t place)
{
    place_ = place;
    slots_ = 0;
    auto page = table().dataPage(table().pages()[place]);
    if (!page)
        return false;
    page_ = std::move(*page);
    slots_ = DataPage(table().file().format(), page_.data()).rowCount();
    return true;
}

/// Pages may have come or gone since the last step.
void PhysicalCursor::findPlace()
{
    table().pages();
    if (pagesVersion_ == table().pagesVersion())
        return;
    page_.release();  // it may be another one by now
    place_ = table().placeOf(home_.page);
    pagesVersion_ = table().pagesVersion();
}

bool PhysicalCursor::forward(std::size_t place, int slot)
{
    const auto& pages = table().pages();
    for (; place < pages.size(); ++place, slot = 0) {
        if (!page_ || page_.number() != pages[place] || place != place_) {
            if (!holdPage(place))
                continue;
        } else {
            slots_ = DataPage(table().file().format(), page_.data()).rowCount();
        }
        for (; slot < slots_; ++slot)
            if (openSlot(slot)) {
                at_ = At::Row;
                return true;
            }
    }
    close();
    page_.release();
    at_ = At::After;
    return false;
}

bool PhysicalCursor::backward(std::size_t place, int slot)
{
    const auto& pages = table().pages();
    // `place` counts from 1 here, so that it can run out.
    for (place = std::min(place + 1, pages.size()); place > 0; --place, slot = kMaxRowsPerPage) {
        if (!holdPage(place - 1))
            continue;
        for (slot = std::min(slot, slots_ - 1); slot >= 0; --slot)
            if (openSlot(slot)) {
                at_ = At::Row;
                return true;
            }
    }
    close();
    page_.release();
    at_ = At::Before;
    return false;
}

bool PhysicalCursor::first()
{
    table().pages();
    pagesVersion_ = table().pagesVersion();
    return forward(0, 0);
}

bool PhysicalCursor::last()
{
    const std::size_t count = table().pages().size();
    pagesVersion_ = table().pagesVersion();
    if (count == 0)
        return backward(0, -1);
    return backward(count - 1, kMaxRowsPerPage);
}

bool PhysicalCursor::stepForward()
{
    findPlace();
    const auto& pages = table().pages();
    // When the page itself went away, its place is that of the page behind it.
    const bool there = place_ < pages.size() && pages[place_] == home_.page;
    return forward(place_, there ? home_.slot + 1 : 0);
}

bool PhysicalCursor::stepBackward()
{
    findPlace();
    const auto& pages = table().pages();
    const bool there = place_ < pages.size() && pages[place_] == home_.page;
    if (there && home_.slot > 0)
        return backward(place_, home_.slot - 1);
    if (place_ == 0)
        return backward(0, -1);
    return backward(place_ - 1, kMaxRowsPerPage);
}

bool PhysicalCursor::moveTo(RowId row)
{
    const RowPointer home = pointerOf(row);
    if (!openRow(home))
        return false;
    place_ = table().placeOf(home.page);
    pagesVersion_ = table().pagesVersion();
    at_ = At::Row;
    return true;
}

bool PhysicalCursor::moveToOrdinal(std::int64_t n)
{
    std::int64_t before = 0;
    const auto place = table().placeOfRecord(n, before);
    pagesVersion_ = table().pagesVersion();
    if (!place || !holdPage(*place))
        return false;
    const DataPage view(table().file().format(), page_.data());
    for (int slot = 0; slot < slots_; ++slot)
        if (view.delivered(slot) && before++ == n) {
            at_ = At::Row;
            // A damaged record is stepped over, as by next().
            return openSlot(slot) || forward(*place, slot + 1);
        }
    return false;
}

std::int64_t PhysicalCursor::ordinal()
{
    if (at_ != At::Row)
        return -1;
    findPlace();
    std::int64_t n = table().recordsBefore(place_);
    if (!page_ && !holdPage(place_))
        return -1;
    const DataPage view(table().file().format(), page_.data());
    for (int slot = 0; slot < home_.slot; ++slot)
        n += view.delivered(slot);
    return n;
}

// ---- by an index

namespace {

KeyBuilder keyBuilderOf(JetTable& table, const OpenIndex& index)
{
    const bool jet3 = !table.file().format().wideText;
    return KeyBuilder(jet3, &table.file().codePage(), index.keyColumns);
}

bool beginsWith(KeyView key, KeyView begin)
{
    return key.size() >= begin.size() && std::equal(begin.begin(), begin.end(), key.begin());
}

}  // namespace

IndexCursor::IndexCursor(std::shared_ptr<JetTable> shared, int realIndex)
    : JetCursor(std::move(shared)), index_(table().index(realIndex)),
      keys_(keyBuilderOf(table(), index_)), walker_(*index_.tree)
{
}

/// Goes on until an entry leads to a record; entries of records that are gone are passed over.
bool IndexCursor::forward(bool standing)
{
    for (; standing; standing = walker_.next())
        if (openRow(walker_.row())) {
            at_ = At::Row;
            return true;
        }
    close();
    at_ = At::After;
    return false;
}

bool IndexCursor::backward(bool standing)
{
    for (; standing; standing = walker_.previous())
        if (openRow(walker_.row())) {
            at_ = At::Row;
            return true;
        }
    close();
    at_ = At::Before;
    return false;
}

bool IndexCursor::first()
{
    return forward(walker_.first());
}

bool IndexCursor::last()
{
    return backward(walker_.last());
}

bool IndexCursor::moveTo(RowId row)
{
    // Also for the record where this cursor stands: its key may have changed, and with it its
    // place.
    const RowPointer home = pointerOf(row);
    if (!openRow(home))
        return false;
    values_.clear();
    for (const int n : index_.fields)
        values_.push_back(n < 0 ? ValueView::null() : field(n));
    const KeyView key = keys_.build(values_);
    bool found = keys_.sure() && walker_.seekEntry(key, home) && walker_.row() == home;
    if (!found)  // its key is not known for sure: it is somewhere
        for (bool on = walker_.first(); on && !found; on = found || walker_.next())
            found = walker_.row() == home;
    at_ = found ? At::Row : At::After;
    return found && openRow(home);
}

/// A record that is gone although an entry names it is stepped over, as by next().
bool IndexCursor::moveToOrdinal(std::int64_t n)
{
    return forward(index_.ordinals->moveTo(walker_, n));
}

std::int64_t IndexCursor::ordinal()
{
    return at_ == At::Row ? index_.ordinals->of(walker_) : -1;
}

bool IndexCursor::placeByKey(Comparison comparison, KeyView key)
{
    switch (comparison) {
    case Comparison::Equal:
        for (bool on = walker_.seek(key); on && beginsWith(walker_.key(), key); on = walker_.next())
            if (openRow(walker_.row())) {
                at_ = At::Row;
                return true;
            }
        close();
        at_ = At::After;
        return false;
    case Comparison::GreaterEqual:
        return forward(walker_.seek(key));
    case Comparison::Greater:
        return forward(walker_.seekPast(key));
    case Comparison::LessEqual:
        return backward(walker_.seekLast(key));
    case Comparison::Less:
        return backward(walker_.seekBefore(key));
    }
    return false;
}

bool IndexCursor::seek(Comparison comparison, std::span<const ValueView> key)
{
    const KeyView built = keys_.build(key);
    if (!keys_.sure())
        return seekByValues(comparison, key);
    wanted_.assign(built.begin(), built.end());
    return placeByKey(comparison, wanted_);
}

/// The sort order is not understood for this text: equal values are found by looking at each.
bool IndexCursor::seekByValues(Comparison comparison, std::span<const ValueView> key)
{
    if (comparison != Comparison::Equal)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "The sort order of this index is not supported for such a search.");
    for (bool on = first(); on; on = next())
        if (sameValues(key))
            return true;
    return false;
}

bool IndexCursor::sameValues(std::span<const ValueView> key)
{
    for (std::size_t i = 0; i < key.size() && i < index_.fields.size(); ++i) {
        const ValueView value = index_.fields[i] < 0 ? ValueView::null() : field(index_.fields[i]);
        if (value.isNull() != key[i].isNull())
            return false;
        if (value.isNull())
            continue;
        if (value.kind() == ValueKind::Text && key[i].kind() == ValueKind::Text) {
            if (!paths::sameName(value.asText(), key[i].asText()))
                return false;
            continue;
        }
        KeyBuilder one(!table().file().format().wideText, &table().file().codePage(),
                       std::span(&index_.keyColumns[i], 1));
        const KeyView mine = one.build(std::span(&value, 1));
        wanted_.assign(mine.begin(), mine.end());
        const KeyView theirs = one.build(key.subspan(i, 1));
        if (!std::equal(theirs.begin(), theirs.end(), wanted_.begin(), wanted_.end()))
            return false;
    }
    return true;
}

}  // namespace velnor::jet
