#include "access/formats/xbase/cdx_file.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/cdx_leaf.h"
#include "access/formats/xbase/index_tree.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kHeadBytes = 1024, kPoolAt = 512, kPoolBytes = 512;
constexpr std::size_t kRootAt = 0, kFreeAt = 4, kCounterAt = 8, kKeyLengthAt = 12, kOptionsAt = 14;
constexpr std::size_t kOrderAt = 15, kOursAt = 480, kCollationAt = 494, kDescendingAt = 502;
constexpr std::size_t kConditionAt = 504, kConditionLengthAt = 506, kKeyTextLengthAt = 510;
constexpr std::uint8_t kUnique = 0x01, kNullByte = 0x02, kCandidate = 0x04, kCondition = 0x08;
constexpr std::uint8_t kCompact = 0x20, kCompound = 0x40, kDirectory = 0x80;
constexpr std::uint8_t kBitmap = 5;
constexpr std::uint32_t kNameLength = 10;
constexpr std::size_t kMostTags = 1000;
/// In headers of unique indexes that we made: two records may not have one key.
constexpr std::string_view kOurs = "UNIQ";

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("The index file is damaged: ") + how + ".");
}

}  // namespace

std::string_view headerText(std::string_view bytes)
{
    std::string_view text = bytes.substr(0, bytes.find('\0'));
    while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ')
        text.remove_suffix(1);
    while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ')
        text.remove_prefix(1);
    return text;
}

class CdxNodes final : public NodeStore {
public:
    CdxNodes(CdxFile& file, std::uint32_t header, std::uint32_t keyLength, std::uint8_t pad)
        : NodeStore(keyLength, true), file_(file), header_(header), pad_(pad),
          packer_(keyLength, pad)
    {
    }

    std::uint32_t root() const override { return file_.number(header_ + kRootAt); }
    void setRoot(std::uint32_t at) override { file_.setNumber(header_ + kRootAt, at); }

    void load(std::uint32_t at, TreeNode& node) override
    {
        CdxFile::NodeBytes bytes;
        if (at < kCdxNodeBytes || file_.file_.readAt(at, bytes) != bytes.size())
            damaged("a node lies outside the file");
        node.at = at;
        node.keyLength = keyLength_;
        decodeCdxNode(bytes, pad_, node);
    }

    bool search(std::uint32_t at, const Wanted& wanted, NodeHit& hit) override
    {
        CdxFile::NodeBytes bytes;
        return at >= kCdxNodeBytes && file_.file_.readAt(at, bytes) == bytes.size() &&
               searchCdxNode(bytes, keyLength_, pad_, wanted, hit);
    }

    bool fits(const TreeNode& node) const override { return cdxNodeFits(node, pad_); }

    void store(const TreeNode& node) override
    {
        if (!storeIfFits(node))
            damaged("a node is too full");
    }
    bool storeIfFits(const TreeNode& node) override
    {
        CdxFile::NodeBytes bytes;
        const bool there = encodeCdxNode(node, pad_, node.at == root(), bytes);
        if (there)
            file_.file_.writeAt(node.at, bytes);
        return there;
    }
    bool insertsInLeaves() const override { return true; }
    bool insertInLeaf(std::uint32_t at, const std::uint8_t* key, std::uint32_t record) override
    {
        CdxFile::NodeBytes bytes;
        if (at < kCdxNodeBytes || file_.file_.readAt(at, bytes) != bytes.size() ||
            !insertIntoCdxLeaf(bytes, keyLength_, pad_, key, record))
            return false;
        file_.file_.writeAt(at, bytes);
        return true;
    }

    std::uint32_t allocate() override { return file_.allocate(); }
    void release(std::uint32_t at) override { file_.release(at); }
    void releaseAll(std::span<const std::uint32_t> nodes) override
    {
        for (std::size_t i = nodes.size(); i-- > 0;)
            file_.release(nodes[i]);
        setRoot(kNoNode);
    }

    std::size_t fill(const SortedEntries& entries, std::size_t first) override
    {
        packer_.begin();
        std::size_t i = first;
        while (i < entries.count &&
               packer_.add(entries.key(i), i > first ? entries.key(i - 1) : nullptr,
                           entries.records[i]))
            ++i;
        return i - first;
    }
    void storeFilled(const SortedEntries& entries, std::size_t first, std::size_t,
                     TreeNode& leaf) override
    {
        CdxFile::NodeBytes bytes;
        packer_.write(entries.key(first), entries.records + first, bytes);
        putCdxHead(leaf, leaf.at == root(), bytes);
        file_.file_.writeAt(leaf.at, bytes);
    }
    std::size_t mostChildren() const override { return cdxMostItems(keyLength_); }
    std::uint64_t mostNodes() const override { return file_.file_.size() / kCdxNodeBytes + 2; }

private:
    CdxFile& file_;
    std::uint32_t header_;
    std::uint8_t pad_;
    CdxLeafPacker packer_;
};

std::uint32_t CdxFile::number(std::uint64_t at)
{
    std::array<std::uint8_t, 4> bytes{};
    file_.readAt(at, bytes);
    return loadLE<std::uint32_t>(bytes.data());
}

void CdxFile::setNumber(std::uint64_t at, std::uint32_t value)
{
    std::array<std::uint8_t, 4> bytes;
    storeLE(bytes.data(), value);
    file_.writeAt(at, bytes);
}

void CdxFile::create()
{
    std::array<std::uint8_t, kHeadBytes> head{};
    storeLE(&head[kKeyLengthAt], static_cast<std::uint16_t>(kNameLength));
    head[kOptionsAt] = kCompact | kCompound | kDirectory;
    head[kOrderAt] = 1;
    head[kConditionAt] = head[kConditionLengthAt] = head[kKeyTextLengthAt] = 1;
    file_.writeAt(0, head);
    CdxNodes nodes(*this, 0, kNameLength, ' ');
    setNumber(kRootAt, kNoNode);
    IndexTree(nodes).buildEmpty();
}

std::uint32_t CdxFile::extend(std::size_t bytes)
{
    const std::uint64_t at = (file_.size() + kCdxNodeBytes - 1) / kCdxNodeBytes * kCdxNodeBytes;
    if (at + bytes > 0x7FFFFFFF)
        throw EngineError(EngineErrorNumber::DatabaseFull, "The index file is full.");
    file_.resize(at + bytes);
    return static_cast<std::uint32_t>(at);
}

/// A chain that leads nowhere is left alone: the node comes from the end of the file.
std::uint32_t CdxFile::allocate()
{
    const std::uint32_t at = number(kFreeAt);
    const bool free = at != 0 && at != kNoNode && at % kCdxNodeBytes == 0 && at >= kHeadBytes &&
                      at + kCdxNodeBytes <= file_.size();
    if (!free)
        return extend(kCdxNodeBytes);
    setNumber(kFreeAt, number(at));
    return at;
}

void CdxFile::release(std::uint32_t at)
{
    NodeBytes empty{};
    storeLE(empty.data(), number(kFreeAt));
    file_.writeAt(at, empty);
    setNumber(kFreeAt, at);
}

IndexTag CdxFile::readTag(std::uint32_t place)
{
    std::array<std::uint8_t, kHeadBytes> head;
    if (file_.readAt(place, head) != head.size())
        damaged("a header lies outside the file");
    const ByteReader bytes(head, "the header of an index", EngineErrorNumber::Corrupt);
    const std::uint8_t options = head[kOptionsAt];
    IndexTag tag;
    tag.place = place;
    tag.options = options;
    tag.keyLength = bytes.u16(kKeyLengthAt);
    tag.unique = options & (kUnique | kCandidate);
    tag.nullByte = options & kNullByte;
    tag.descending = bytes.u16(kDescendingAt) == 1;
    tag.refusesEqual = (options & kCandidate) || bytes.text(kOursAt, kOurs.size()) == kOurs;
    const std::size_t keyText = std::min<std::size_t>(bytes.u16(kKeyTextLengthAt), kPoolBytes);
    std::string scratch;
    tag.expression = page_.decode(headerText(bytes.text(kPoolAt, keyText)), scratch);
    if (bytes.u16(kConditionLengthAt) > 1 && (options & kCondition)) {
        const std::size_t length = std::min<std::size_t>(bytes.u16(kConditionLengthAt), kPoolBytes);
        const std::size_t at = std::min(keyText, kPoolBytes - length);
        tag.condition = page_.decode(headerText(bytes.text(kPoolAt + at, length)), scratch);
    }
    const std::string_view collation = headerText(bytes.text(kCollationAt, 8));
    if (head[kOrderAt] == kBitmap) {
        tag.walkable = false;
        tag.trouble = "it is an index of bits";
    } else if (head[kOrderAt] == 2 && collation != "MACHINE") {
        tag.trouble = "its sort order " + std::string(collation) + " is not known";
    } else if (tag.keyLength == 0 || tag.keyLength > 240) {
        tag.walkable = false;
        tag.trouble = "its keys have an impossible length";
    } else if (!(options & kCompact) && place != 0) {
        tag.walkable = false;
        tag.trouble = "its form is not known";
    }
    return tag;
}

std::vector<IndexTag> CdxFile::tags(std::string_view baseName)
{
    std::vector<IndexTag> tags;
    if (file_.size() < kHeadBytes)
        damaged("it is too short");
    std::array<std::uint8_t, 16> head;
    file_.readAt(0, head);
    if (!(head[kOptionsAt] & kDirectory)) {
        tags.push_back(readTag(0));
        tags.back().name = baseName;
        return tags;
    }
    const auto length = loadLE<std::uint16_t>(&head[kKeyLengthAt]);
    if (length == 0 || length > 128)
        damaged("its directory is none");
    CdxNodes nodes(*this, 0, length, ' ');
    TreeWalker walker(nodes);
    std::string scratch;
    for (bool on = walker.first(); on && tags.size() < kMostTags; on = walker.next()) {
        const std::string_view name(reinterpret_cast<const char*>(walker.key()), length);
        tags.push_back(readTag(walker.record()));
        tags.back().name = page_.decode(headerText(name), scratch);
    }
    return tags;
}

std::unique_ptr<NodeStore> CdxFile::nodes(const IndexTag& tag, std::uint8_t pad, const KeyForm&)
{
    return std::make_unique<CdxNodes>(*this, tag.place, tag.keyLength, pad);
}

IndexTag CdxFile::addTag(const NewTag& made)
{
    const std::size_t keyText = made.expression.size() + 1;
    const std::size_t condition = made.condition.size() + 1;
    if (keyText + condition > kPoolBytes)
        throw EngineError(EngineErrorNumber::InvalidIndex, "The index expression is too long.");
    std::array<std::uint8_t, kHeadBytes> head{};
    storeLE(&head[kRootAt], kNoNode);
    storeLE(&head[kKeyLengthAt], static_cast<std::uint16_t>(made.form.length));
    const bool candidate = made.options & kCandidate;
    head[kOptionsAt] = static_cast<std::uint8_t>(
        kCompact | (single_ ? 0 : kCompound) | (made.unique && !candidate ? kUnique : 0) |
        (made.form.nullByte ? kNullByte : 0) | (candidate ? kCandidate : 0) |
        (condition > 1 ? kCondition : 0));
    head[kOrderAt] = 1;
    if (made.refusesEqual && !candidate)
        std::copy(kOurs.begin(), kOurs.end(), head.begin() + kOursAt);
    head[kDescendingAt] = made.descending;
    storeLE(&head[kConditionAt], static_cast<std::uint16_t>(keyText));
    storeLE(&head[kConditionLengthAt], static_cast<std::uint16_t>(condition));
    storeLE(&head[kKeyTextLengthAt], static_cast<std::uint16_t>(keyText));
    std::copy(made.expression.begin(), made.expression.end(), head.begin() + kPoolAt);
    std::copy(made.condition.begin(), made.condition.end(),
              head.begin() + static_cast<std::ptrdiff_t>(kPoolAt + keyText));
    if (single_) {
        file_.writeAt(0, head);
        IndexTag tag = readTag(0);
        tag.name = made.name;
        return tag;
    }
    const std::uint32_t place = extend(kHeadBytes);
    file_.writeAt(place, head);
    std::string name = made.name;
    name.resize(kNameLength, ' ');
    CdxNodes directory(*this, 0, kNameLength, ' ');
    IndexTree(directory).insert(reinterpret_cast<const std::uint8_t*>(name.data()), place);
    IndexTag tag = readTag(place);
    tag.name = made.name;
    return tag;
}

void CdxFile::removeTag(const IndexTag& tag)
{
    const std::uint32_t length = number(kKeyLengthAt) & 0xFFFF;
    CdxNodes directory(*this, 0, length, ' ');
    TreeWalker walker(directory);
    for (bool on = walker.first(); on; on = walker.next())
        if (walker.record() == tag.place) {
            const std::vector<std::uint8_t> name(walker.key(), walker.key() + length);
            IndexTree(directory).erase(name.data(), tag.place);
            release(tag.place + kCdxNodeBytes);
            release(tag.place);
            return;
        }
}

void CdxFile::touch(const std::vector<const IndexTag*>&)
{
    setNumber(kCounterAt, number(kCounterAt) + 1);
}

}  // namespace velnor::xbase
