// access/formats/xbase/ndx_file.h - an NDX file of dBASE III: one index.
//
// Pages of 512 bytes; page 0 is the head. Pages that get empty are not used again.
#pragma once

#include <memory>
#include <vector>

#include "access/formats/xbase/index_tag.h"
#include "access/formats/xbase/plain_node.h"
#include "access/storage/code_page.h"
#include "access/storage/page_file.h"

namespace velnor::xbase {

class NdxFile final : public IndexFileFormat {
public:
    NdxFile(PageFile& file, const CodePage& page) : file_(file), page_(page) {}

    std::vector<IndexTag> tags(std::string_view baseName) override;
    std::unique_ptr<NodeStore> nodes(const IndexTag& tag, std::uint8_t pad,
                                     const KeyForm& form) override;
    /// Makes the whole file.
    IndexTag addTag(const NewTag& made) override;
    void removeTag(const IndexTag&) override {}
    void touch(const std::vector<const IndexTag*>&) override {}

private:
    friend class NdxNodes;
    std::uint32_t number(std::uint64_t at) const;
    void setNumber(std::uint64_t at, std::uint32_t value);

    PageFile& file_;
    const CodePage& page_;
};

}  // namespace velnor::xbase
