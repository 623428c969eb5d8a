// access/storage/row_sorter.h - sorts rows of one length by the bytes at their start, in little memory:
// the entries of a new index.
//
// Rows are sorted in chunks that stay in the processor's cache; what they give are runs, which are
// merged at the end. When the runs get too large for the memory they are merged into one on a file.
// Rows with equal keys keep the order in which they came.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/file_system.h"

namespace velnor {

class RowSorter {
public:
    /// Rows of `rowBytes`, the key in front. `spillPath`: a file that is made when more than
    /// `mostBytes` of rows are there. Its name goes at once, so that nothing is left behind by
    /// whatever ends the program.
    RowSorter(FileSystem& files, std::string spillPath, std::size_t keyBytes, std::size_t rowBytes,
              std::size_t mostBytes);
    ~RowSorter();
    RowSorter(const RowSorter&) = delete;
    RowSorter& operator=(const RowSorter&) = delete;

    /// Where one more row is to be written, before the next call. 3026 when the disk is full.
    std::uint8_t* add();
    /// After the last add(): the least row that is left, null when there is none; good until next().
    const std::uint8_t* row();
    void next();
    bool usesFile() const { return file_ != nullptr; }

private:
    class Merge;
    struct Run {
        std::vector<std::uint8_t> rows;  // in memory
        std::uint64_t from = 0, to = 0;  // or in the file
    };

    const std::uint8_t* rowAt(std::size_t i) const { return chunk_.data() + i * rowBytes_; }
    std::uint64_t head(std::size_t row, std::size_t at) const;
    void endChunk();
    void sortFrom(std::span<std::uint64_t> items, std::size_t at);
    void sortByHeads(std::span<std::uint64_t> items);
    void openFile();
    void spill();

    FileSystem& files_;
    std::string spillPath_;
    std::size_t keyBytes_, rowBytes_;
    std::size_t mostRows_, mostBytes_;
    std::vector<std::uint8_t> chunk_;
    std::size_t rows_ = 0;  // in the chunk
    std::vector<std::uint64_t> items_, other_;
    std::vector<Run> runs_;
    std::size_t runBytes_ = 0;
    std::unique_ptr<File> file_;
    std::uint64_t fileEnd_ = 0;
    std::unique_ptr<Merge> merge_;
};

}  // namespace velnor
