// access/formats/xbase/mdx_file.h - an MDX file of dBASE IV and later: up to 47 indexes.
//
// All places are pages of 512 bytes. Nodes and headers of indexes take a block of some pages.
// 1. The nodes of an index are chained in the order in which they were taken, where the file does
// that: by it other programs drop an index. Blocks that are free are in a chain of their own.
// 2. The names in the table of indexes are a search tree in the order of their making; it is made
// anew whenever an index comes or goes.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "access/formats/xbase/index_tag.h"
#include "access/formats/xbase/plain_node.h"
#include "access/storage/code_page.h"
#include "access/storage/page_file.h"

namespace velnor::xbase {

class MdxFile final : public IndexFileFormat {
public:
    MdxFile(PageFile& file, const CodePage& page) : file_(file), page_(page) {}

    /// Puts an empty table of indexes into an empty file.
    void create(std::string_view tableName, bool level7, std::uint8_t languageMark);
    std::vector<IndexTag> tags(std::string_view baseName) override;
    std::unique_ptr<NodeStore> nodes(const IndexTag& tag, std::uint8_t pad,
                                     const KeyForm& form) override;
    IndexTag addTag(const NewTag& made) override;
    void removeTag(const IndexTag& tag) override;
    void touch(const std::vector<const IndexTag*>& changed) override;

private:
    friend class MdxNodes;

    std::uint32_t number(std::uint64_t at) const;
    void setNumber(std::uint64_t at, std::uint32_t value);
    std::uint32_t small(std::uint64_t at, std::size_t bytes) const;
    void setSmall(std::uint64_t at, std::uint32_t value, std::size_t bytes);
    std::uint32_t blockBytes() const;
    std::uint32_t slotBytes() const;
    std::uint64_t slotAt(std::uint32_t n) const;
    std::uint32_t tagCount() const;
    bool isBlock(std::uint32_t page) const;
    std::uint32_t allocate();
    void release(std::uint32_t page);
    void setTagCount(std::uint32_t count);
    void makeNameTree(std::uint32_t count);
    IndexTag readTag(std::uint32_t slot);
    void setDate(std::uint64_t at);

    PageFile& file_;
    const CodePage& page_;
};

}  // namespace velnor::xbase
