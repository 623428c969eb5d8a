// access/storage/row_store.h - records that are no table's: written once, one behind the other, and
// read in any order. Beyond a bound the older ones lie in a temporary file without a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "access/value.h"
#include "platform/file_system.h"

namespace velnor {

class RowStore {
public:
    /// `fields`: values of a record. `memory`: bytes that may be kept, roughly; at least two
    /// stretches of records are.
    RowStore(std::size_t fields, std::size_t memory);
    ~RowStore();
    RowStore(const RowStore&) = delete;
    RowStore& operator=(const RowStore&) = delete;

    /// One value for each field; they are copied.
    void append(std::span<const ValueView> values);
    std::int64_t size() const { return size_; }
    /// A value of record n. A text is good until the next call of value() or append().
    ValueView value(std::int64_t n, std::size_t field);
    bool usesFile() const { return file_ != nullptr; }

private:
    struct Stretch;
    Stretch& stretchOf(std::int64_t n);
    void close(Stretch& stretch);
    void dropOldest();
    void load(Stretch& stretch);

    std::size_t fields_;
    std::size_t memory_;
    std::int64_t size_ = 0;
    std::vector<std::unique_ptr<Stretch>> stretches_;
    std::size_t kept_ = 0;  // bytes of stretches in memory
    std::uint64_t uses_ = 0;
    Stretch* last_ = nullptr;  // the one asked last
    std::unique_ptr<File> file_;
    std::uint64_t fileEnd_ = 0;
};

}  // namespace velnor
