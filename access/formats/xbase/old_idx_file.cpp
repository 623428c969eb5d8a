#include <array>

#include "access/engine_error.h"
#include "access/formats/xbase/cdx_file.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {

namespace {

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("The index file is damaged: ") + how + ".");
}

[[noreturn]] void onlyRead()
{
    throw EngineError(EngineErrorNumber::IndexNotMaintained,
                      "Index files of this old form are only read.");
}

class OldIdxNodes final : public NodeStore {
public:
    OldIdxNodes(PageFile& file, std::uint32_t keyLength) : NodeStore(keyLength, true), file_(file)
    {
    }
    std::uint32_t root() const override
    {
        std::array<std::uint8_t, 4> bytes{};
        file_.readAt(0, bytes);
        return loadLE<std::uint32_t>(bytes.data());
    }
    void setRoot(std::uint32_t) override { onlyRead(); }
    void load(std::uint32_t at, TreeNode& node) override;
    bool fits(const TreeNode&) const override { return true; }
    void store(const TreeNode&) override { onlyRead(); }
    std::uint32_t allocate() override { onlyRead(); }
    void release(std::uint32_t) override { onlyRead(); }
    void releaseAll(std::span<const std::uint32_t>) override { onlyRead(); }
    std::size_t fill(const SortedEntries&, std::size_t) override { return 1; }
    std::size_t mostChildren() const override { return (kCdxNodeBytes - 12) / (keyLength_ + 4); }
    std::uint64_t mostNodes() const override { return file_.size() / kCdxNodeBytes + 2; }

private:
    PageFile& file_;
};

void OldIdxNodes::load(std::uint32_t at, TreeNode& node)
{
    std::array<std::uint8_t, kCdxNodeBytes> bytes;
    if (at < kCdxNodeBytes || file_.readAt(at, bytes) != bytes.size())
        damaged("a node lies outside the file");
    node.clear();
    node.at = at;
    node.keyLength = keyLength_;
    node.leaf = bytes[0] & 2;
    const std::size_t count = loadLE<std::uint16_t>(&bytes[2]);
    if (count > mostChildren())
        damaged("the entries of a node do not fit");
    const std::uint8_t* p = &bytes[12];
    for (std::size_t i = 0; i < count; ++i, p += keyLength_ + 4) {
        node.keys.insert(node.keys.end(), p, p + keyLength_);
        const auto number = loadBE<std::uint32_t>(p + keyLength_);
        node.records.push_back(node.leaf ? number : kNoNode);
        if (!node.leaf)
            node.children.push_back(number);
    }
}

}  // namespace

bool OldIdxFile::is(PageFile& file)
{
    std::array<std::uint8_t, 16> head{};
    file.readAt(0, head);
    return !(head[14] & 0x20);
}

std::vector<IndexTag> OldIdxFile::tags(std::string_view baseName)
{
    std::array<std::uint8_t, kCdxNodeBytes> head;
    if (file_.readAt(0, head) != head.size())
        damaged("it is too short");
    const ByteReader bytes(head, "the header of an index", EngineErrorNumber::Corrupt);
    IndexTag tag;
    std::string scratch;
    tag.name = baseName;
    tag.keyLength = bytes.u16(12);
    tag.unique = head[14] & 1;
    tag.expression = page_.decode(headerText(bytes.text(16, 220)), scratch);
    if (head[14] & 8)
        tag.condition = page_.decode(headerText(bytes.text(236, 220)), scratch);
    tag.walkable = tag.keyLength > 0 && tag.keyLength <= 240;
    tag.trouble = "index files of this old form are only read";
    return {tag};
}

std::unique_ptr<NodeStore> OldIdxFile::nodes(const IndexTag& tag, std::uint8_t, const KeyForm&)
{
    return std::make_unique<OldIdxNodes>(file_, tag.keyLength);
}

IndexTag OldIdxFile::addTag(const NewTag&)
{
    onlyRead();
}

void OldIdxFile::removeTag(const IndexTag&)
{
    onlyRead();
}

void OldIdxFile::touch(const std::vector<const IndexTag*>&) {}

}  // namespace velnor::xbase
