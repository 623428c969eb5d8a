// access/formats/xbase/cdx_file.h - a CDX file, or a compact IDX file, of FoxPro.
//
// A CDX holds a directory, itself a tree whose keys are the names of the indexes and whose "record
// numbers" are the places of their headers; a compact IDX is one index without a directory. Nodes
// that are not used are in one chain from the head of the file.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "access/formats/xbase/cdx_node.h"
#include "access/formats/xbase/index_tag.h"
#include "access/storage/code_page.h"
#include "access/storage/page_file.h"

namespace velnor::xbase {

class CdxFile final : public IndexFileFormat {
public:
    /// `single`: a compact IDX.
    CdxFile(PageFile& file, const CodePage& page, bool single = false)
        : file_(file), page_(page), single_(single)
    {
    }

    /// Puts an empty directory into an empty file.
    void create();
    std::vector<IndexTag> tags(std::string_view baseName) override;
    std::unique_ptr<NodeStore> nodes(const IndexTag& tag, std::uint8_t pad,
                                     const KeyForm& form) override;
    IndexTag addTag(const NewTag& made) override;
    void removeTag(const IndexTag& tag) override;
    void touch(const std::vector<const IndexTag*>& changed) override;

private:
    friend class CdxNodes;
    using NodeBytes = std::array<std::uint8_t, kCdxNodeBytes>;

    IndexTag readTag(std::uint32_t place);
    std::uint32_t number(std::uint64_t at);
    void setNumber(std::uint64_t at, std::uint32_t value);
    std::uint32_t allocate();
    std::uint32_t extend(std::size_t bytes);
    void release(std::uint32_t at);

    PageFile& file_;
    const CodePage& page_;
    bool single_;
};

/// A single index in the old form, which is not compact. Only read.
class OldIdxFile final : public IndexFileFormat {
public:
    OldIdxFile(PageFile& file, const CodePage& page) : file_(file), page_(page) {}
    /// Whether a file of FoxPro is of this form.
    static bool is(PageFile& file);
    std::vector<IndexTag> tags(std::string_view baseName) override;
    std::unique_ptr<NodeStore> nodes(const IndexTag& tag, std::uint8_t pad,
                                     const KeyForm& form) override;
    IndexTag addTag(const NewTag& made) override;
    void removeTag(const IndexTag& tag) override;
    void touch(const std::vector<const IndexTag*>& changed) override;

private:
    PageFile& file_;
    const CodePage& page_;
};

}  // namespace velnor::xbase
