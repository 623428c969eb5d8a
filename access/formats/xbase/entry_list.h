// access/formats/xbase/entry_list.h - entries of an index in memory, for sorting and building.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "access/formats/xbase/index_node.h"

namespace velnor::xbase {

class EntryList {
public:
    explicit EntryList(std::uint32_t keyLength = 0) : keyLength_(keyLength) {}

    bool empty() const { return records_.empty(); }
    std::size_t count() const { return records_.size(); }
    std::size_t bytes() const { return keys_.size() + records_.size() * sizeof(std::uint32_t); }
    const std::uint8_t* key(std::size_t i) const { return keys_.data() + i * keyLength_; }
    std::uint32_t record(std::size_t i) const { return records_[i]; }
    void add(const std::uint8_t* key, std::uint32_t record)
    {
        keys_.insert(keys_.end(), key, key + keyLength_);
        records_.push_back(record);
    }
    void setRecord(std::size_t i, std::uint32_t record) { records_[i] = record; }
    void reserve(std::size_t entries);
    void clear();
    void eraseFront(std::size_t entries);
    /// By key, then by record.
    void sort();
    /// Takes in the entries of another sorted list.
    void merge(const EntryList& other);
    SortedEntries sorted() const
    {
        return {keyLength_, keys_.data(), records_.data(), records_.size()};
    }

private:
    struct Item {
        std::uint64_t head = 0;
        std::uint32_t index = 0;
    };
    bool before(std::size_t a, std::size_t b) const;
    void sortFrom(std::span<Item> items, std::size_t at) const;

    std::uint32_t keyLength_;
    std::vector<std::uint8_t> keys_;
    std::vector<std::uint32_t> records_;
};

/// Rising entries, some at a time.
class EntrySource {
public:
    virtual ~EntrySource() = default;
    /// Adds the next ones to a list; false when there are no more.
    virtual bool more(EntryList& into) = 0;
};

/// The entries of a sorted list.
class ListedEntries final : public EntrySource {
public:
    explicit ListedEntries(const EntryList& list) : list_(list) {}
    bool more(EntryList& into) override;

private:
    const EntryList& list_;
    std::size_t at_ = 0;
};

}  // namespace velnor::xbase
