#include "access/sql/kept_rows.h"

#include <bit>
#include <cstring>

namespace velnor::sql {
namespace {

constexpr std::size_t kBlock = 64u << 10;

std::uint64_t mixed(std::uint64_t hash, ValueView plain)
{
    return (hash ^ hashPlain(plain)) * 0x9E3779B97F4A7C15u;
}

}  // namespace

std::string_view TextHeap::put(std::string_view text)
{
    if (text.size() > left_) {
        const std::size_t size = std::max(kBlock, text.size());
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
        bytes_ += size;
        free_ = blocks_.back().get();
        left_ = size;
    }
    char* const at = free_;
    if (!text.empty())
        std::memcpy(at, text.data(), text.size());
    free_ += text.size();
    left_ -= text.size();
    return {at, text.size()};
}

ValueView TextHeap::keep(ValueView v)
{
    if (v.kind() == ValueKind::Text)
        return ValueView::text(put(v.asText()));
    if (v.kind() != ValueKind::Bytes)
        return v;
    const auto bytes = v.asBytes();
    const auto kept = put({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    return ValueView::bytes({reinterpret_cast<const std::uint8_t*>(kept.data()), kept.size()});
}

KeptRows::KeptRows(std::vector<int> fields) : fields_(std::move(fields))
{
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const auto field = static_cast<std::size_t>(fields_[i]);
        if (field >= place_.size())
            place_.resize(field + 1, -1);
        place_[field] = static_cast<int>(i);
    }
}

void KeptRows::add(RowCursor& cursor)
{
    rows_.push_back(cursor.row());
    for (const int field : fields_)
        cells_.push_back(texts_.keep(cursor.field(field)));
}

std::size_t KeptRows::bytes() const
{
    return texts_.bytes() + cells_.capacity() * sizeof(ValueView) +
           rows_.capacity() * sizeof(RowId);
}

KeptTable::KeptTable(std::vector<int> fields, std::vector<int> keyFields)
    : keyFields_(std::move(keyFields)), rows_(std::move(fields))
{
}

bool KeptTable::fill(CursorRoad& road, std::size_t mostBytes)
{
    for (bool there = road.first(); there; there = road.next()) {
        rows_.add(road.cursor());
        if ((rows_.size() & 0xFF) == 0 && rows_.bytes() > mostBytes)
            return false;
    }
    heads_.assign(std::bit_ceil(rows_.size() + 1) * 2, kNone);
    chain_.assign(rows_.size(), kNone);
    for (std::size_t i = rows_.size(); i-- > 0;) {  // so that chains keep the records' order
        std::uint64_t hash = 0;
        for (const int field : keyFields_)
            hash = mixed(hash, plainValue(rows_.value(i, field)));
        std::uint32_t& head = heads_[hash >> 20 & (heads_.size() - 1)];
        chain_[i] = head;
        head = static_cast<std::uint32_t>(i);
    }
    return true;
}

std::uint32_t KeptTable::settle(std::uint32_t record, std::span<const Value> key) const
{
    for (; record != kNone; record = chain_[record]) {
        bool same = true;
        for (std::size_t i = 0; same && i < key.size(); ++i)
            same = comparePlain(plainValue(rows_.value(record, keyFields_[i])), key[i].view()) == 0;
        if (same)
            return record;
    }
    return kNone;
}

std::uint32_t KeptTable::find(std::span<const Value> key) const
{
    std::uint64_t hash = 0;
    for (const Value& v : key) {
        if (v.isNull())
            return kNone;  // equals nothing
        hash = mixed(hash, v.view());
    }
    return settle(heads_[hash >> 20 & (heads_.size() - 1)], key);
}

std::uint32_t KeptTable::findNext(std::uint32_t record, std::span<const Value> key) const
{
    return settle(chain_[record], key);
}

}  // namespace velnor::sql
