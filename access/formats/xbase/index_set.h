// access/formats/xbase/index_set.h - the open indexes of a table, and the index files that nobody
// here keeps right.
//
// A writer asks before() with the old and new image of a record, writes the record, then calls
// after(). Deleted records stay in the indexes: removing one changes nothing here.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace velnor::xbase {

struct DbfHeader;
using RecordImage = std::span<const std::uint8_t>;

/// One index that is kept right. An empty image stands for a record that is not there.
class KeptIndex {
public:
    virtual ~KeptIndex() = default;
    /// Throws (3022 and others) when the change cannot be entered; changes nothing.
    virtual void before(std::uint32_t recordNumber, RecordImage oldImage, RecordImage newImage) = 0;
    virtual void after(std::uint32_t recordNumber, RecordImage oldImage, RecordImage newImage) = 0;
};

class IndexSet {
public:
    void add(std::unique_ptr<KeptIndex> index) { kept_.push_back(std::move(index)); }
    bool empty() const { return kept_.empty(); }

    void before(std::uint32_t recordNumber, RecordImage oldImage, RecordImage newImage)
    {
        for (const auto& index : kept_)
            index->before(recordNumber, oldImage, newImage);
    }
    void after(std::uint32_t recordNumber, RecordImage oldImage, RecordImage newImage)
    {
        for (const auto& index : kept_)
            index->after(recordNumber, oldImage, newImage);
    }

private:
    std::vector<std::unique_ptr<KeptIndex>> kept_;
};

/// The index files beside a table that would go stale if it were written: the production index that
/// its header tells of, and those that its INF file lists. Names without folder, only files that
/// are there.
std::vector<std::string> indexFilesOf(FileSystem& files, std::string_view tablePath,
                                      const DbfHeader& header);

/// Whether the file NAME.INF beside a table lists index files; others have that extension, too.
bool infListsIndexes(FileSystem& files, std::string_view tablePath);

}  // namespace velnor::xbase
