#include "access/sql/group_keys.h"

#include <algorithm>
#include <cstring>

namespace velnor::sql {
namespace {

constexpr std::size_t kFirstBuckets = 256;
constexpr std::size_t kComparison = 40;  // as much work as so many bytes of text

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
    bytes.copy(reinterpret_cast<char*>(&word) + 1, sizeof word - 1);
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

GroupKeys::GroupKeys(std::vector<int> fields)
    : fields_(std::move(fields)), wanted_(fields_.size()), exact_(kFirstBuckets, kNone),
      folded_(kFirstBuckets, kNone)
{
}

std::size_t GroupKeys::bytes() const
{
    return texts_.bytes() + spellings_.capacity() * (sizeof(Spelling) + 8) +
           keys_.capacity() * sizeof(ValueView) + leaders_.capacity() * 8;
}

bool GroupKeys::equal(std::uint32_t a, std::uint32_t b) const
{
    for (std::size_t i = 0; i < fields_.size(); ++i)
        if (comparePlain(plainValue(value(a, i)), plainValue(value(b, i))) != 0)
            return false;
    return true;
}

std::uint64_t GroupKeys::foldedHash(std::uint32_t spelling) const
{
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < fields_.size(); ++i)
        hash = mixed(hash, hashPlain(plainValue(value(spelling, i))));
    return hash;
}

/// The group of an equal spelling, or a new one.
std::uint32_t GroupKeys::findGroup(std::uint32_t spelling)
{
    std::uint32_t& head = folded_[foldedHash(spelling) & (folded_.size() - 1)];
    for (std::uint32_t group = head; group != kNone; group = bucket_[group])
        if (equal(leaders_[group], spelling))
            return group;
    const std::uint32_t group = groups();
    leaders_.push_back(spelling);
    bucket_.push_back(head);
    head = group;
    return group;
}

void GroupKeys::growBuckets()
{
    exact_.assign(exact_.size() * 4, kNone);
    folded_.assign(exact_.size(), kNone);
    for (std::uint32_t i = 0; i < spellings_.size(); ++i) {
        std::uint32_t& head = exact_[spellings_[i].hash & (exact_.size() - 1)];
        spellings_[i].bucket = head;
        head = i;
    }
    for (std::uint32_t group = 0; group < leaders_.size(); ++group) {
        std::uint32_t& head = folded_[foldedHash(leaders_[group]) & (folded_.size() - 1)];
        bucket_[group] = head;
        head = group;
    }
}

std::uint32_t GroupKeys::addWanted(std::uint64_t hash)
{
    const std::uint32_t spelling = spellings();
    for (const ValueView v : wanted_)
        keys_.push_back(texts_.keep(v));
    std::uint32_t& head = exact_[hash & (exact_.size() - 1)];
    spellings_.push_back({hash, kNone, head});
    head = spelling;
    spellings_[spelling].group = findGroup(spelling);
    if (spellings_.size() > exact_.size())
        growBuckets();
    return spelling;
}

std::uint32_t GroupKeys::findWanted()
{
    std::uint64_t hash = 0;
    for (const ValueView v : wanted_)
        hash = exactHash(hash, plainValue(v));
    for (std::uint32_t s = exact_[hash & (exact_.size() - 1)]; s != kNone;
         s = spellings_[s].bucket) {
        bool same = spellings_[s].hash == hash;
        for (std::size_t i = 0; same && i < fields_.size(); ++i)
            same = sameExactly(plainValue(wanted_[i]), plainValue(value(s, i)));
        if (same)
            return s;
    }
    return addWanted(hash);
}

std::vector<std::uint32_t> GroupKeys::order(const std::vector<bool>& falling,
                                            RunContext& context) const
{
    std::vector<std::uint32_t> all(groups());
    for (std::uint32_t i = 0; i < all.size(); ++i)
        all[i] = i;
    const auto before = [&](std::uint32_t a, std::uint32_t b) {
        context.workOn(kComparison);
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            const int sign =
                comparePlain(plainValue(value(leaders_[a], i)), plainValue(value(leaders_[b], i)));
            if (sign != 0)
                return falling[i] ? sign > 0 : sign < 0;
        }
        return false;
    };
    std::sort(all.begin(), all.end(), before);
    return all;
}

}  // namespace velnor::sql
