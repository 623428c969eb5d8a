#include "access/sql/grouped_rows.h"

#include <algorithm>
#include <cstring>

namespace velnor::sql {
namespace {

constexpr std::size_t kFirstBuckets = 256;

std::uint64_t mixed(std::uint64_t hash, std::uint64_t word)
{
    hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
    return hash ^ hash >> 32;
}

std::uint64_t hashBytes(std::uint64_t hash, std::string_view bytes)
{
    std::uint64_t word = 0;
    for (; bytes.size() >= sizeof word; bytes.remove_prefix(sizeof word)) {
        std::memcpy(&word, bytes.data(), sizeof word);
        hash = mixed(hash, word);
    }
    word = bytes.size();
    std::memcpy(reinterpret_cast<char*>(&word) + 1, bytes.data(),
                std::min<std::size_t>(bytes.size(), 7));
    return mixed(hash, word);
}

/// Of the value exactly as it is.
std::uint64_t exactHash(std::uint64_t hash, ValueView plain)
{
    switch (plain.kind()) {
    case ValueKind::Text:
        return hashBytes(hash, plain.asText());
    case ValueKind::Null:
        return mixed(hash, 1);
    default:
        return mixed(hash, hashPlain(plain));
    }
}

bool sameExactly(ValueView a, ValueView b)
{
    if (a.kind() == ValueKind::Text && b.kind() == ValueKind::Text)
        return a.asText() == b.asText();
    return comparePlain(a, b) == 0;
}

}  // namespace

GroupedRows::GroupedRows(std::vector<int> keyFields, const std::vector<int>& usedFields)
    : keyFields_(std::move(keyFields)), wanted_(keyFields_.size()), exact_(kFirstBuckets, kNone),
      folded_(kFirstBuckets, kNone)
{
    const auto place = [&](int field, int at) {
        if (static_cast<std::size_t>(field) >= place_.size())
            place_.resize(static_cast<std::size_t>(field) + 1);
        place_[static_cast<std::size_t>(field)] = at;
    };
    for (const int field : usedFields)
        if (std::find(keyFields_.begin(), keyFields_.end(), field) == keyFields_.end()) {
            place(field, static_cast<int>(otherFields_.size()));
            otherFields_.push_back(field);
        }
    for (std::size_t i = 0; i < keyFields_.size(); ++i)
        place(keyFields_[i], -1 - static_cast<int>(i));
}

std::size_t GroupedRows::bytes() const
{
    const std::size_t record = otherFields_.size() * sizeof(ValueView) + sizeof(std::uint32_t);
    return texts_.bytes() + blocks_.size() * kBlockRecords * record +
           spellings_.capacity() * (sizeof(Spelling) + 12) + keys_.capacity() * sizeof(ValueView);
}

bool GroupedRows::equalKeys(std::uint32_t a, std::uint32_t b) const
{
    for (std::size_t i = 0; i < keyFields_.size(); ++i)
        if (comparePlain(plainValue(keyValue(a, i)), plainValue(keyValue(b, i))) != 0)
            return false;
    return true;
}

/// A new spelling joins the group of an equal one, or begins a group.
void GroupedRows::joinEqual(std::uint32_t spelling)
{
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < keyFields_.size(); ++i)
        hash = mixed(hash, hashPlain(plainValue(keyValue(spelling, i))));
    std::uint32_t& head = folded_[hash & (folded_.size() - 1)];
    for (std::uint32_t leader = head; leader != kNone; leader = nextGroup_[leader])
        if (equalKeys(leader, spelling)) {
            spellings_[spelling].next = spellings_[leader].next;
            spellings_[leader].next = spelling;
            spellings_[spelling].leads = false;
            return;
        }
    nextGroup_[spelling] = head;
    head = spelling;
}

void GroupedRows::growBuckets()
{
    exact_.assign(exact_.size() * 4, kNone);
    folded_.assign(exact_.size(), kNone);
    for (std::uint32_t i = 0; i < spellings_.size(); ++i) {
        std::uint32_t& head = exact_[spellings_[i].hash & (exact_.size() - 1)];
        spellings_[i].bucket = head;
        head = i;
        if (!spellings_[i].leads)
            continue;
        std::uint64_t hash = 0;
        for (std::size_t k = 0; k < keyFields_.size(); ++k)
            hash = mixed(hash, hashPlain(plainValue(keyValue(i, k))));
        std::uint32_t& group = folded_[hash & (folded_.size() - 1)];
        nextGroup_[i] = group;
        group = i;
    }
}

std::uint32_t GroupedRows::addSpelling(std::uint64_t hash)
{
    const auto spelling = static_cast<std::uint32_t>(spellings_.size());
    spellings_.push_back({hash});
    nextGroup_.push_back(kNone);
    for (const ValueView v : wanted_)
        keys_.push_back(texts_.keep(v));
    std::uint32_t& head = exact_[hash & (exact_.size() - 1)];
    spellings_[spelling].bucket = head;
    head = spelling;
    joinEqual(spelling);
    if (spellings_.size() > exact_.size())
        growBuckets();
    return spelling;
}

std::uint32_t GroupedRows::spellingOf(RowCursor& cursor)
{
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < keyFields_.size(); ++i) {
        wanted_[i] = cursor.field(keyFields_[i]);
        hash = exactHash(hash, plainValue(wanted_[i]));
    }
    for (std::uint32_t s = exact_[hash & (exact_.size() - 1)]; s != kNone;
         s = spellings_[s].bucket) {
        bool same = spellings_[s].hash == hash;
        for (std::size_t i = 0; same && i < keyFields_.size(); ++i)
            same = sameExactly(plainValue(wanted_[i]), plainValue(keyValue(s, i)));
        if (same)
            return s;
    }
    return addSpelling(hash);
}

void GroupedRows::addRecord(std::uint32_t number, RowCursor& cursor)
{
    Spelling& spelling = spellings_[number];
    ++spelling.count;
    if (otherFields_.empty())  // the number of records is all there is to them
        return;
    const std::uint32_t record = records_++;
    const std::size_t at = record % kBlockRecords;
    if (at == 0)
        blocks_.push_back(
            {std::make_unique_for_overwrite<ValueView[]>(kBlockRecords * otherFields_.size()),
             std::make_unique_for_overwrite<std::uint32_t[]>(kBlockRecords)});
    Block& block = blocks_.back();
    for (std::size_t i = 0; i < otherFields_.size(); ++i)
        block.values[at * otherFields_.size() + i] = texts_.keep(cursor.field(otherFields_[i]));
    block.next[at] = kNone;
    if (spelling.first == kNone)
        spelling.first = record;
    else
        blocks_[spelling.last / kBlockRecords].next[spelling.last % kBlockRecords] = record;
    spelling.last = record;
}

void GroupedRows::fill(CursorRoad& road, std::size_t mostBytes)
{
    RowCursor& cursor = road.cursor();
    std::uint32_t looked = 0;
    for (bool there = road.first(); there; there = road.next()) {
        addRecord(spellingOf(cursor), cursor);
        if ((++looked & 0xFFF) == 0 && (bytes() > mostBytes || looked > 0xFFFF0000u))
            throw GroupsTooLarge();
    }
}

void GroupedRows::sort(const std::vector<bool>& falling, RunContext& context)
{
    order_.clear();
    for (std::uint32_t i = 0; i < spellings_.size(); ++i)
        if (spellings_[i].leads)
            order_.push_back(i);
    const auto before = [&](std::uint32_t a, std::uint32_t b) {
        context.workOn(sizeof(Spelling));
        for (std::size_t i = 0; i < keyFields_.size(); ++i) {
            const int order = comparePlain(plainValue(keyValue(a, i)), plainValue(keyValue(b, i)));
            if (order != 0)
                return falling[i] ? order > 0 : order < 0;
        }
        return false;
    };
    std::sort(order_.begin(), order_.end(), before);
}

bool GroupedRoad::toSpelling(std::uint32_t spelling)
{
    spelling_ = spelling;
    record_ = rows_.spellings_[spelling].first;
    left_ = rows_.spellings_[spelling].count;
    return true;
}

bool GroupedRoad::first()
{
    group_ = 0;
    return !rows_.order_.empty() && toSpelling(rows_.order_[0]);
}

bool GroupedRoad::next()
{
    if (--left_ > 0) {
        if (record_ != GroupedRows::kNone)
            record_ = rows_.next(record_);
        return true;
    }
    const auto& spellings = rows_.spellings_;
    if (spellings[spelling_].next != GroupedRows::kNone)
        return toSpelling(spellings[spelling_].next);
    return ++group_ < rows_.order_.size() && toSpelling(rows_.order_[group_]);
}

ValueView GroupedRoad::raw(int field)
{
    const int place = rows_.place_[static_cast<std::size_t>(field)];
    if (place < 0)
        return rows_.keyValue(spelling_, static_cast<std::size_t>(-1 - place));
    return rows_.value(record_, static_cast<std::size_t>(place));
}

}  // namespace velnor::sql
