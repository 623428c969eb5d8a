#include "access/formats/xbase/ndx_file.h"

#include <algorithm>
#include <array>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::uint32_t kPage = 512;
constexpr std::size_t kRootAt = 0, kPagesAt = 4, kKeyLengthAt = 12, kMostKeysAt = 14;
constexpr std::size_t kNumericAt = 16, kItemAt = 18, kUniqueAt = 23, kExpressionAt = 24;
constexpr std::size_t kLongestExpression = 100;
/// Of unique indexes that we made: two records may not have one key. Others read it as unique.
constexpr std::uint8_t kOursUnique = 0x41;

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("The index file is damaged: ") + how + ".");
}

std::uint64_t bytesAt(std::uint32_t page)
{
    return std::uint64_t{page} * kPage;
}

}  // namespace

class NdxNodes final : public NodeStore {
public:
    NdxNodes(NdxFile& file, const KeyForm& form) : NodeStore(form.length, false), file_(file)
    {
        shape_.head = 4;
        shape_.recordAt = 4;
        shape_.keyAt = 8;
        shape_.form = form;
        shape_.firstChildTells = true;
        shape_.item = file.number(kItemAt) & 0xFFFF;
        if (shape_.item < form.length + 8 || shape_.item > kPage / 4)
            damaged("its entries have an impossible length");
        shape_.mostKeys = (kPage - 8) / shape_.item;
    }

    std::uint32_t root() const override { return file_.number(kRootAt); }
    void setRoot(std::uint32_t at) override { file_.setNumber(kRootAt, at); }

    void load(std::uint32_t at, TreeNode& node) override
    {
        read(at);
        node.at = at;
        node.keyLength = keyLength_;
        decodePlainNode(page_, shape_, node);
    }

    bool fits(const TreeNode& node) const override { return node.count() <= shape_.mostKeys; }

    void store(const TreeNode& node) override
    {
        read(node.at);
        encodePlainNode(node, shape_, page_);
        file_.file_.writeAt(bytesAt(node.at), page_);
    }

    std::uint32_t allocate() override
    {
        const std::uint32_t at = std::max(file_.number(kPagesAt), 1u);
        if (at > 0x3FFFFF)
            throw EngineError(EngineErrorNumber::DatabaseFull, "The index file is full.");
        file_.file_.writeAt(bytesAt(at), std::array<std::uint8_t, kPage>{});
        file_.setNumber(kPagesAt, at + 1);
        return at;
    }

    void release(std::uint32_t) override {}
    void releaseAll(std::span<const std::uint32_t>) override
    {
        setRoot(kNoNode);
        file_.setNumber(kPagesAt, 1);
    }

    std::size_t fill(const SortedEntries& entries, std::size_t first) override
    {
        return std::min<std::size_t>(shape_.mostKeys, entries.count - first);
    }
    std::size_t mostChildren() const override { return shape_.mostKeys + std::size_t{1}; }
    std::uint64_t mostNodes() const override { return file_.file_.size() / kPage + 2; }

private:
    void read(std::uint32_t at)
    {
        if (at == 0 || file_.file_.readAt(bytesAt(at), page_) != page_.size())
            damaged("a page lies outside the file");
    }

    NdxFile& file_;
    std::array<std::uint8_t, kPage> page_;
    PlainShape shape_;
};

std::uint32_t NdxFile::number(std::uint64_t at) const
{
    std::array<std::uint8_t, 4> bytes{};
    file_.readAt(at, bytes);
    return loadLE<std::uint32_t>(bytes.data());
}

void NdxFile::setNumber(std::uint64_t at, std::uint32_t value)
{
    std::array<std::uint8_t, 4> bytes;
    storeLE(bytes.data(), value);
    file_.writeAt(at, bytes);
}

std::vector<IndexTag> NdxFile::tags(std::string_view baseName)
{
    std::array<std::uint8_t, kPage> head;
    if (file_.readAt(0, head) != head.size())
        damaged("it is too short");
    const ByteReader bytes(head, "the header of an index", EngineErrorNumber::Corrupt);
    IndexTag tag;
    std::string scratch;
    tag.name = baseName;
    tag.keyLength = bytes.u16(kKeyLengthAt);
    tag.keyLetter = bytes.u16(kNumericAt) ? 'N' : 'C';
    tag.unique = head[kUniqueAt] != 0;
    tag.refusesEqual = head[kUniqueAt] == kOursUnique;
    tag.expression =
        page_.decode(headerText(bytes.text(kExpressionAt, kPage - kExpressionAt)), scratch);
    return {tag};
}

std::unique_ptr<NodeStore> NdxFile::nodes(const IndexTag&, std::uint8_t, const KeyForm& form)
{
    return std::make_unique<NdxNodes>(*this, form);
}

IndexTag NdxFile::addTag(const NewTag& made)
{
    if (made.expression.size() > kLongestExpression)
        throw EngineError(EngineErrorNumber::InvalidIndex, "The index expression is too long.");
    if (!made.condition.empty() || made.descending)
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "A dBASE III index has no condition and does not fall.");
    const std::uint32_t item = (8 + made.form.length + 3) / 4 * 4;
    std::array<std::uint8_t, kPage> head{};
    storeLE(&head[kRootAt], kNoNode);
    storeLE(&head[kPagesAt], std::uint32_t{1});
    storeLE(&head[kKeyLengthAt], static_cast<std::uint16_t>(made.form.length));
    storeLE(&head[kMostKeysAt], static_cast<std::uint16_t>((kPage - 8) / item));
    head[kNumericAt] = made.keyLetter != 'C';
    storeLE(&head[kItemAt], static_cast<std::uint16_t>(item));
    head[kUniqueAt] = !made.unique ? 0 : made.refusesEqual ? kOursUnique : 1;
    std::copy(made.expression.begin(), made.expression.end(), head.begin() + kExpressionAt);
    file_.writeAt(0, head);
    return tags(made.name)[0];
}

}  // namespace velnor::xbase
