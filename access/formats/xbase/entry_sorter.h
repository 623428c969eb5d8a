// access/formats/xbase/entry_sorter.h - sorts the entries of a new index in little memory.
//
// Entries are sorted in chunks that stay in the processor's cache; what they give are runs, which
// are merged at the end. When the runs get too large for the memory they are merged into one on a
// file. Entries come in the order of their records, so equal keys keep that order.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "access/formats/xbase/entry_list.h"
#include "platform/file_system.h"

namespace velnor::xbase {

class EntrySorter final : public EntrySource {
public:
    /// `spillPath`: a file that is made when it is needed, and removed.
    EntrySorter(FileSystem& files, std::string spillPath, std::uint32_t keyLength,
                std::size_t mostBytes = 32u << 20);
    ~EntrySorter() override;

    void add(const std::uint8_t* key, std::uint32_t record);
    /// After the last add().
    bool more(EntryList& into) override;

private:
    class Merge;
    struct Run {
        std::vector<std::uint8_t> rows;  // in memory
        std::uint64_t from = 0, to = 0;  // or in the file
    };

    const std::uint8_t* row(std::size_t i) const { return chunk_.data() + i * rowBytes_; }
    std::uint64_t head(std::size_t row, std::size_t at) const;
    void endChunk();
    void sortFrom(std::span<std::uint64_t> items, std::size_t at);
    void sortByHeads(std::span<std::uint64_t> items);
    void spill();

    FileSystem& files_;
    std::string spillPath_;
    std::uint32_t keyLength_, rowBytes_;
    std::size_t mostRows_, mostBytes_;
    std::vector<std::uint8_t> chunk_;  // rows: key, record
    std::size_t rows_ = 0;
    std::vector<std::uint64_t> items_, other_;
    std::vector<Run> runs_;
    std::size_t runBytes_ = 0;
    std::unique_ptr<File> file_;
    std::uint64_t fileEnd_ = 0;
    std::unique_ptr<Merge> merge_;
};

}  // namespace velnor::xbase
