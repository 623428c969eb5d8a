// access/formats/xbase/entry_sorter.h - the entries of a new index, sorted in little memory.
// Entries come in the order of their records, and equal keys keep it.
#pragma once

#include "access/formats/xbase/entry_list.h"
#include "access/storage/row_sorter.h"

namespace velnor::xbase {

class EntrySorter final : public EntrySource {
public:
    /// `spillPath`: where entries go that do not fit into the memory.
    EntrySorter(FileSystem& files, std::string spillPath, std::uint32_t keyLength);

    void add(const std::uint8_t* key, std::uint32_t record);
    /// After the last add().
    bool more(EntryList& into) override;

private:
    std::uint32_t keyLength_;
    RowSorter rows_;  // key, record
};

}  // namespace velnor::xbase
