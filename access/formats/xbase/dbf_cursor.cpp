#include "access/formats/xbase/dbf_cursor.h"

#include <algorithm>

#include "access/formats/xbase/field_decode.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kSmallestWindow = 4u << 10;
constexpr std::size_t kLargestWindow = 256u << 10;

}  // namespace

DbfCursor::DbfCursor(std::shared_ptr<DbfTable> table)
    : table_(std::move(table)), window_(kSmallestWindow), generation_(table_->generation()),
      texts_(table_->header().fields.size()), memos_(table_->header().fields.size())
{
}

void DbfCursor::dropStaleBlock()
{
    const std::uint64_t generation = table_->generation();
    if (generation == generation_)
        return;
    generation_ = generation;
    blockRecords_ = 0;
    window_ = kSmallestWindow;
}

/// Reads the stretch of records around a number: ahead of it when the walk goes on, behind it when
/// it goes back. A cursor that jumps, as one by an index does, reads single records.
void DbfCursor::load(std::uint32_t number)
{
    const bool ahead = blockRecords_ && number == blockFirst_ + blockRecords_;
    const bool back = blockRecords_ && number + 1 == blockFirst_;
    if (blockRecords_ && !ahead && !back)
        return loadLone(number);
    window_ =
        ahead || back ? std::clamp(window_ * 4, kSmallestWindow, kLargestWindow) : kSmallestWindow;
    const std::uint32_t length = table_->header().recordLength;
    const auto most = static_cast<std::uint32_t>(std::max<std::size_t>(1, window_ / length));
    const std::uint32_t start = !back ? number : number > most ? number - most + 1 : 1;
    const std::uint32_t records = std::min(most, table_->count() - start + 1);
    blockRecords_ = 0;
    if (block_.size() < std::size_t{records} * length)
        block_.resize(std::size_t{records} * length);
    table_->readRecords(start, records, block_);
    blockFirst_ = start;
    blockRecords_ = records;
}

void DbfCursor::loadLone(std::uint32_t number)
{
    blockRecords_ = 0;
    const std::uint32_t length = table_->header().recordLength;
    if (block_.size() < length)
        block_.resize(length);
    table_->readLoneRecord(number, block_);
    blockFirst_ = number;
    blockRecords_ = 1;
    window_ = 0;
}

const std::uint8_t* DbfCursor::recordAt(std::uint32_t number)
{
    if (number - blockFirst_ >= blockRecords_)
        load(number);
    return block_.data() + std::size_t{number - blockFirst_} * table_->header().recordLength;
}

const std::uint8_t* DbfCursor::liveRecord(std::uint32_t number)
{
    const std::uint8_t* record = recordAt(number);
    return *record == '*' ? nullptr : record;
}

bool DbfCursor::forwardFrom(std::uint64_t number)
{
    dropStaleBlock();
    const std::uint32_t count = table_->count();
    for (; number <= count; ++number)
        if (const std::uint8_t* record = liveRecord(static_cast<std::uint32_t>(number))) {
            record_ = record;
            number_ = static_cast<std::uint32_t>(number);
            beyond_ = false;
            return true;
        }
    record_ = nullptr;
    number_ = count + 1;
    beyond_ = true;
    return false;
}

bool DbfCursor::backFrom(std::uint64_t number)
{
    dropStaleBlock();
    for (number = std::min<std::uint64_t>(number, table_->count()); number > 0; --number)
        if (const std::uint8_t* record = liveRecord(static_cast<std::uint32_t>(number))) {
            record_ = record;
            number_ = static_cast<std::uint32_t>(number);
            beyond_ = false;
            return true;
        }
    record_ = nullptr;
    number_ = 0;
    beyond_ = false;
    return false;
}

bool DbfCursor::first()
{
    return forwardFrom(1);
}

bool DbfCursor::last()
{
    return backFrom(table_->count());
}

bool DbfCursor::next()
{
    return forwardFrom(beyond_ ? number_ : number_ + 1ull);
}

bool DbfCursor::previous()
{
    return backFrom(number_ ? number_ - 1ull : 0);
}

bool DbfCursor::moveTo(RowId row)
{
    dropStaleBlock();
    if (row == 0 || row > table_->count())
        return false;
    const std::uint8_t* record = liveRecord(static_cast<std::uint32_t>(row));
    if (!record) {
        record_ = nullptr;
        return false;
    }
    record_ = record;
    number_ = static_cast<std::uint32_t>(row);
    beyond_ = false;
    return true;
}

bool DbfCursor::moveToOrdinal(std::int64_t n)
{
    const LiveCounts& live = table_->liveCounts();
    if (n < 0 || n >= live.live())
        return false;
    if (live.live() == table_->count())
        return moveTo(static_cast<RowId>(n) + 1);
    std::size_t stretch = 0;
    for (; n >= live.liveIn(stretch); ++stretch)
        n -= live.liveIn(stretch);
    bool there = forwardFrom(stretch * std::uint64_t{LiveCounts::kStretch} + 1);
    while (there && n-- > 0)
        there = next();
    return there;
}

std::int64_t DbfCursor::ordinal()
{
    const LiveCounts& live = table_->liveCounts();
    if (number_ == 0 || live.live() == table_->count())
        return std::max(number_ - 1ll, 0ll);
    const std::size_t stretch = (number_ - 1) / LiveCounts::kStretch;
    std::int64_t before = 0;
    for (std::size_t i = 0; i < stretch; ++i)
        before += live.liveIn(i);
    const auto start = static_cast<std::uint32_t>(stretch * LiveCounts::kStretch + 1);
    return before + table_->countLive(start, number_ - start);
}

ValueView DbfCursor::memoField(std::size_t n, const DbfField& field)
{
    const std::uint64_t block = memoBlock(table_->header(), field, record_);
    MemoFile* memo = table_->memo();
    if (block == 0 || block == kBadPointer || !memo || !memo->read(block, memos_[n]))
        return {};
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(memos_[n].data()),
                          memos_[n].size());
    return field.coding == Coding::MemoText
               ? decodeText(bytes, *table_->header().codePage, texts_[n])
               : ValueView::bytes(bytes);
}

ValueView DbfCursor::field(int n)
{
    const auto at = static_cast<std::size_t>(n);
    const DbfHeader& header = table_->header();
    if (!record_ || at >= header.fields.size())
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "There is no current record.");
    const DbfField& field = header.fields[at];
    return field.isMemo() ? memoField(at, field) : decodeField(header, field, record_, texts_[at]);
}

void DbfCursor::fields(std::span<ValueView> out)
{
    const DbfHeader& header = table_->header();
    if (!record_ || out.size() > header.fields.size())
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "There is no current record.");
    for (std::size_t at = 0; at < out.size(); ++at) {
        const DbfField& field = header.fields[at];
        out[at] =
            field.isMemo() ? memoField(at, field) : decodeField(header, field, record_, texts_[at]);
    }
}

}  // namespace velnor::xbase
