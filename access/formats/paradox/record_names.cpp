#include "access/formats/paradox/record_names.h"

namespace velnor::paradox {
namespace {

// The lowest bits of a name tell its form.
constexpr std::uint64_t kWholeKey = 1, kHash = 2, kGiven = 3, kForm = 3;
constexpr unsigned kHashBits = 46;

}  // namespace

/// FNV-1a, the upper bits folded in.
std::uint64_t RecordNames::hashOf(const std::uint8_t* key) const
{
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (std::size_t i = 0; i < keyLength_; ++i)
        hash = (hash ^ key[i]) * 0x100000001B3u;
    return (hash ^ hash >> kHashBits) & ((std::uint64_t{1} << kHashBits) - 1);
}

RowId RecordNames::natural(const std::uint8_t* key, std::uint32_t block) const
{
    if (!whole_)
        return std::uint64_t{block} << 48 | hashOf(key) << 2 | kHash;
    std::uint64_t name = 0;
    for (std::size_t i = 0; i < keyLength_; ++i)
        name = name << 8 | key[i];
    return name << 8 | kWholeKey;
}

RowId RecordNames::nameOf(const std::uint8_t* key, std::uint32_t block) const
{
    if (!nameOf_.empty())
        if (const auto found = nameOf_.find(text(key)); found != nameOf_.end())
            return found->second;
    return natural(key, block);
}

RecordNames::Hint RecordNames::hintOf(RowId name) const
{
    if (const auto found = keyOf_.find(name); found != keyOf_.end())
        return {found->second, 0, 0};
    Hint hint;
    if ((name & kForm) == kHash) {
        hint.block = static_cast<std::uint32_t>(name >> 48);
        hint.hash = name >> 2 & ((std::uint64_t{1} << kHashBits) - 1);
    } else if ((name & kForm) == kWholeKey && whole_) {
        hint.key.resize(keyLength_);
        for (std::size_t i = keyLength_; i-- > 0;)
            hint.key[i] = static_cast<char>(name >> (8 * (keyLength_ - i)));
    }
    return hint;
}

RowId RecordNames::added(const std::uint8_t* key, std::uint32_t block)
{
    const RowId name = natural(key, block);
    if (keyOf_.empty() || !keyOf_.contains(name))
        return name;
    const RowId given = ++given_ << 2 | kGiven;  // the record that had this key has the name
    keyOf_[given] = text(key);
    nameOf_[text(key)] = given;
    return given;
}

void RecordNames::removed(const std::uint8_t* key)
{
    if (nameOf_.empty())
        return;
    if (const auto found = nameOf_.find(text(key)); found != nameOf_.end()) {
        keyOf_.erase(found->second);
        nameOf_.erase(found);
    }
}

void RecordNames::renamed(RowId name, const std::uint8_t* from, const std::uint8_t* to,
                          std::uint32_t block)
{
    removed(from);
    if (whole_ && natural(to, block) == name)
        return;
    keyOf_[name] = text(to);
    nameOf_[text(to)] = name;
}

bool RecordNames::isNamed(const std::uint8_t* key, RowId name) const
{
    if (nameOf_.empty())
        return true;
    const auto found = nameOf_.find(text(key));
    return found == nameOf_.end() || found->second == name;
}

void RecordNames::forget()
{
    keyOf_.clear();
    nameOf_.clear();
}

}  // namespace velnor::paradox
