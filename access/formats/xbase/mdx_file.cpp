#include "access/formats/xbase/mdx_file.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::uint32_t kPage = 512, kNewBlock = 1024;
constexpr std::uint32_t kMostTags = 47;
// In the head of the file.
constexpr std::size_t kPagesPerBlockAt = 20, kBlockBytesAt = 22, kSlotBytesAt = 26;
constexpr std::size_t kTagCountAt = 28, kPagesAt = 32, kFreeAt = 36, kFreeCountAt = 40;
constexpr std::size_t kDateAt = 44;
// In the header of an index.
constexpr std::size_t kRootAt = 0, kOwnPagesAt = 4, kOptionsAt = 8, kLetterAt = 9, kMarkAt = 11;
constexpr std::size_t kKeyLengthAt = 12, kMostKeysAt = 14, kItemAt = 18, kSerialAt = 20;
constexpr std::size_t kExpressionAt = 24, kHasConditionAt = 245, kHasKeysAt = 246;
constexpr std::size_t kFirstNodeAt = 248, kLastNodeAt = 252, kTagDateAt = 257;
constexpr std::size_t kPlainAt = 480, kOursAt = 484, kConditionAt = 762;
constexpr std::size_t kTextBytes = 221;
constexpr std::uint8_t kAlways = 0x10, kDescending = 0x08, kUnique = 0x40, kPrimary = 0x80;
constexpr std::uint8_t kDistinct = 0x20, kPrimaryMark = 0x21;
/// In headers of unique indexes that we made: two records may not have one key.
constexpr std::string_view kOurs = "UNIQ";

[[noreturn]] void damaged(const char* how)
{
    throw EngineError(EngineErrorNumber::Corrupt,
                      std::string("The index file is damaged: ") + how + ".");
}

std::uint64_t bytesAt(std::uint32_t page)
{
    return std::uint64_t{page} * kPage;
}

std::uint32_t nameBytes(std::uint32_t slotBytes)
{
    return slotBytes <= 32 ? 11 : 33;
}

}  // namespace

class MdxNodes final : public NodeStore {
public:
    MdxNodes(MdxFile& file, const IndexTag& tag, const KeyForm& form)
        : NodeStore(form.length, false), file_(file), header_(bytesAt(tag.place)),
          block_(file.blockBytes())
    {
        shape_.head = 8;
        shape_.keyAt = 4;
        shape_.form = form;
        shape_.item = file.small(header_ + kItemAt, 2);
        if (shape_.item < form.length + 4 || shape_.item > block_.size() / 4)
            damaged("its entries have an impossible length");
        shape_.mostKeys = (static_cast<std::uint32_t>(block_.size()) - 12) / shape_.item;
        const std::uint32_t stated = file.small(header_ + kMostKeysAt, 2);
        fillKeys_ = stated >= 3 && stated < shape_.mostKeys ? stated : shape_.mostKeys;
    }

    std::uint32_t root() const override { return file_.number(header_ + kRootAt); }
    void setRoot(std::uint32_t at) override { file_.setNumber(header_ + kRootAt, at); }

    void load(std::uint32_t at, TreeNode& node) override
    {
        read(at);
        node.at = at;
        node.keyLength = keyLength_;
        decodePlainNode(block_, shape_, node);
    }

    bool fits(const TreeNode& node) const override { return node.count() <= fillKeys_; }

    void store(const TreeNode& node) override
    {
        read(node.at);
        encodePlainNode(node, shape_, block_);
        file_.file_.writeAt(bytesAt(node.at), block_);
        if (node.leaf && node.at == root())
            file_.setSmall(header_ + kHasKeysAt, node.count() > 0, 1);
        else
            hasKeys();
    }

    std::uint32_t allocate() override;
    void release(std::uint32_t at) override;
    void releaseAll(std::span<const std::uint32_t> nodes) override
    {
        for (std::size_t i = nodes.size(); i-- > 0;)
            file_.release(nodes[i]);
        setRoot(kNoNode);
        file_.setNumber(header_ + kFirstNodeAt, 0);
        file_.setNumber(header_ + kLastNodeAt, 0);
        file_.setNumber(header_ + kOwnPagesAt, 0);
    }

    std::size_t fill(const SortedEntries& entries, std::size_t first) override
    {
        return std::min<std::size_t>(fillKeys_, entries.count - first);
    }
    std::size_t mostChildren() const override { return fillKeys_ + std::size_t{1}; }
    std::uint64_t mostNodes() const override { return file_.file_.size() / kPage + 2; }

private:
    void read(std::uint32_t at)
    {
        if (!file_.isBlock(at) || file_.file_.readAt(bytesAt(at), block_) != block_.size())
            damaged("a node lies outside the file");
    }
    void hasKeys()
    {
        if (!file_.small(header_ + kHasKeysAt, 1))
            file_.setSmall(header_ + kHasKeysAt, 1, 1);
    }
    std::uint32_t pagesPerBlock() const
    {
        return static_cast<std::uint32_t>(block_.size()) / kPage;
    }

    MdxFile& file_;
    std::uint64_t header_;
    std::vector<std::uint8_t> block_;
    PlainShape shape_;
    std::uint32_t fillKeys_ = 0;
};

/// 1. Files without a chain, but with nodes, stay without.
std::uint32_t MdxNodes::allocate()
{
    const std::uint32_t at = file_.allocate();
    const std::uint32_t last = file_.number(header_ + kLastNodeAt);
    const bool fresh = root() == kNoNode || root() == 0;
    if (last == 0 && !fresh)
        return at;
    file_.setNumber(bytesAt(at) + 4, last);
    if (last == 0)
        file_.setNumber(header_ + kFirstNodeAt, at);
    file_.setNumber(header_ + kLastNodeAt, at);
    file_.setNumber(header_ + kOwnPagesAt, file_.number(header_ + kOwnPagesAt) + pagesPerBlock());
    return at;
}

/// 1. The node that was taken after this one is chained to the one before it.
void MdxNodes::release(std::uint32_t at)
{
    const std::uint32_t before = file_.number(bytesAt(at) + 4);
    std::uint32_t later = file_.number(header_ + kLastNodeAt);
    if (later != 0) {
        if (later == at)
            file_.setNumber(header_ + kLastNodeAt, before);
        if (later == at && before == 0)
            file_.setNumber(header_ + kFirstNodeAt, 0);
        for (std::uint64_t steps = mostNodes(); later != at && steps > 0; --steps) {
            if (!file_.isBlock(later))
                break;
            const std::uint32_t next = file_.number(bytesAt(later) + 4);
            if (next == at) {
                file_.setNumber(bytesAt(later) + 4, before);
                if (before == 0)
                    file_.setNumber(header_ + kFirstNodeAt, later);
                break;
            }
            later = next;
        }
        const std::uint32_t pages = file_.number(header_ + kOwnPagesAt);
        file_.setNumber(header_ + kOwnPagesAt, pages - std::min(pages, pagesPerBlock()));
    }
    file_.release(at);
}

std::uint32_t MdxFile::small(std::uint64_t at, std::size_t bytes) const
{
    std::array<std::uint8_t, 4> read{};
    file_.readAt(at, std::span(read).first(bytes));
    return loadLE<std::uint32_t>(read.data());
}

std::uint32_t MdxFile::number(std::uint64_t at) const
{
    return small(at, 4);
}

void MdxFile::setSmall(std::uint64_t at, std::uint32_t value, std::size_t bytes)
{
    std::array<std::uint8_t, 4> written;
    storeLE(written.data(), value);
    file_.writeAt(at, std::span(written).first(bytes));
}

void MdxFile::setNumber(std::uint64_t at, std::uint32_t value)
{
    setSmall(at, value, 4);
}

std::uint32_t MdxFile::blockBytes() const
{
    const std::uint32_t bytes = small(kBlockBytesAt, 2);
    if (bytes < kPage * 2 || bytes > 32768 || bytes % kPage ||
        small(kPagesPerBlockAt, 2) * kPage != bytes)
        damaged("its blocks have an impossible length");
    return bytes;
}

std::uint32_t MdxFile::slotBytes() const
{
    const std::uint32_t bytes = small(kSlotBytesAt, 1);
    if (bytes < 32 || bytes > 64)
        damaged("its table of indexes is none");
    return bytes;
}

std::uint64_t MdxFile::slotAt(std::uint32_t n) const
{
    return kPage + std::uint64_t{n} * slotBytes();
}

std::uint32_t MdxFile::tagCount() const
{
    const std::uint32_t count = small(kTagCountAt, 2);
    if (count > kMostTags)
        damaged("it has too many indexes");
    return count;
}

void MdxFile::setTagCount(std::uint32_t count)
{
    setSmall(kTagCountAt, count, 2);
    setSmall(kTagCountAt + 2, count + 1, 1);
}

bool MdxFile::isBlock(std::uint32_t page) const
{
    return page >= 4 && bytesAt(page) + blockBytes() <= file_.size();
}

/// A chain that leads nowhere is left alone: the block comes from the end of the file.
std::uint32_t MdxFile::allocate()
{
    const std::uint32_t bytes = blockBytes();
    const std::uint32_t free = number(kFreeAt);
    std::uint32_t page = free;
    if (free != 0 && isBlock(free)) {
        setNumber(kFreeAt, number(bytesAt(free) + 4));
        const std::uint32_t count = number(kFreeCountAt);
        setNumber(kFreeCountAt, count - std::min(count, 1u));
    } else {
        const auto end = static_cast<std::uint32_t>((file_.size() + kPage - 1) / kPage);
        page = std::max(number(kPagesAt), end);
        if (page > 0x3FFFFF)
            throw EngineError(EngineErrorNumber::DatabaseFull, "The index file is full.");
        file_.resize(bytesAt(page) + bytes);
        setNumber(kPagesAt, page + bytes / kPage);
    }
    file_.writeAt(bytesAt(page), std::vector<std::uint8_t>(bytes));
    return page;
}

void MdxFile::release(std::uint32_t page)
{
    setNumber(bytesAt(page), 0);
    setNumber(bytesAt(page) + 4, number(kFreeAt));
    setNumber(kFreeAt, page);
    setNumber(kFreeCountAt, number(kFreeCountAt) + 1);
}

void MdxFile::setDate(std::uint64_t at)
{
    const LocalTime now = host().clock->now();
    setSmall(at,
             static_cast<std::uint8_t>(now.year - 1900) |
                 static_cast<std::uint32_t>(now.month) << 8 |
                 static_cast<std::uint32_t>(now.day) << 16,
             3);
}

void MdxFile::create(std::string_view tableName, bool level7, std::uint8_t languageMark)
{
    std::array<std::uint8_t, kPage> head{};
    head[0] = level7 ? 3 : 2;
    const std::string name = paths::foldName(tableName);
    std::copy_n(name.begin(), std::min<std::size_t>(name.size(), 15), head.begin() + 4);
    storeLE(&head[kPagesPerBlockAt], static_cast<std::uint16_t>(kNewBlock / kPage));
    storeLE(&head[kBlockBytesAt], static_cast<std::uint16_t>(kNewBlock));
    head[24] = 1;
    head[25] = kMostTags + 1;
    head[kSlotBytesAt] = level7 ? 43 : 32;
    head[kTagCountAt + 2] = 1;
    head[31] = languageMark;
    const std::uint32_t pages = level7 ? 6 : 4;
    storeLE(&head[kPagesAt], pages);
    file_.resize(bytesAt(pages));
    file_.writeAt(0, head);
    setDate(1);
    setDate(kDateAt);
}

IndexTag MdxFile::readTag(std::uint32_t slot)
{
    const std::uint32_t slotLength = slotBytes(), nameLength = nameBytes(slotLength);
    std::vector<std::uint8_t> entry(slotLength), head(blockBytes());
    if (file_.readAt(slotAt(slot), entry) != entry.size())
        damaged("its table of indexes is cut short");
    IndexTag tag;
    tag.place = loadLE<std::uint32_t>(entry.data());
    if (!isBlock(tag.place) || file_.readAt(bytesAt(tag.place), head) != head.size())
        damaged("the header of an index lies outside the file");
    const ByteReader names(entry, "a table of indexes", EngineErrorNumber::Corrupt);
    const ByteReader bytes(head, "the header of an index", EngineErrorNumber::Corrupt);
    std::string scratch;
    tag.name = page_.decode(headerText(names.text(4, nameLength)), scratch);
    const std::uint8_t options = head[kOptionsAt];
    tag.options = options;
    tag.languageMark = head[kMarkAt];
    tag.keyLetter = static_cast<char>(head[kLetterAt]);
    tag.keyLength = bytes.u16(kKeyLengthAt);
    tag.primary = (options & kPrimary) && slotLength > 32;
    tag.unique = (options & kUnique) || tag.primary;
    tag.refusesEqual = tag.primary || bytes.text(kOursAt, kOurs.size()) == kOurs;
    tag.descending = options & kDescending;
    tag.expression = page_.decode(headerText(bytes.text(kExpressionAt, kTextBytes)), scratch);
    if (head[kHasConditionAt])
        tag.condition = page_.decode(headerText(bytes.text(kConditionAt, kTextBytes)), scratch);
    return tag;
}

std::vector<IndexTag> MdxFile::tags(std::string_view)
{
    if (file_.size() < bytesAt(4) || small(0, 1) < 2 || small(0, 1) > 3)
        damaged("it is no such file");
    std::vector<IndexTag> tags;
    for (std::uint32_t i = 1, count = tagCount(); i <= count; ++i)
        tags.push_back(readTag(i));
    return tags;
}

std::unique_ptr<NodeStore> MdxFile::nodes(const IndexTag& tag, std::uint8_t, const KeyForm& form)
{
    return std::make_unique<MdxNodes>(*this, tag, form);
}

/// 2.
void MdxFile::makeNameTree(std::uint32_t count)
{
    const std::uint32_t slotLength = slotBytes(), nameLength = nameBytes(slotLength);
    struct Links {
        std::string name;
        std::uint8_t smaller = 0, greater = 0, parent = 0;
    };
    std::vector<Links> tree(count + 1);
    for (std::uint32_t i = 1; i <= count; ++i) {
        tree[i].name.resize(nameLength);
        file_.readAt(slotAt(i) + 4,
                     {reinterpret_cast<std::uint8_t*>(tree[i].name.data()), tree[i].name.size()});
        tree[i].name.resize(tree[i].name.find('\0') == std::string::npos ? nameLength
                                                                         : tree[i].name.find('\0'));
        for (std::uint32_t at = 1; i > 1;) {
            std::uint8_t& link = tree[i].name < tree[at].name ? tree[at].smaller : tree[at].greater;
            if (link == 0) {
                link = static_cast<std::uint8_t>(i);
                tree[i].parent = static_cast<std::uint8_t>(at);
                break;
            }
            at = link;
        }
    }
    for (std::uint32_t i = 1; i <= count; ++i)
        file_.writeAt(slotAt(i) + 5 + nameLength,
                      std::array{tree[i].smaller, tree[i].greater, tree[i].parent});
    setSmall(slotAt(0) + 6 + nameLength, count > 0, 1);
}

IndexTag MdxFile::addTag(const NewTag& made)
{
    const std::uint32_t count = tagCount();
    if (count >= kMostTags)
        throw EngineError(EngineErrorNumber::InvalidIndex,
                          "A dBASE table can have 47 indexes at most.");
    if (made.expression.size() >= kTextBytes || made.condition.size() >= kTextBytes)
        throw EngineError(EngineErrorNumber::InvalidIndex, "The index expression is too long.");
    const std::uint32_t bytes = blockBytes();
    const std::uint32_t item = (4 + made.form.length + 3) / 4 * 4;
    std::vector<std::uint8_t> head(bytes);
    storeLE(&head[kRootAt], kNoNode);
    const auto kept = static_cast<std::uint8_t>(made.options & (kPrimary | kDistinct));
    head[kOptionsAt] = static_cast<std::uint8_t>(kAlways | (made.descending ? kDescending : 0) |
                                                 (made.unique ? kUnique : 0) | kept);
    head[kLetterAt] = static_cast<std::uint8_t>(made.keyLetter);
    head[kMarkAt] = made.languageMark;
    storeLE(&head[kKeyLengthAt], static_cast<std::uint16_t>(made.form.length));
    storeLE(&head[kMostKeysAt], static_cast<std::uint16_t>((bytes - 12) / item));
    head[16] = made.keyLetter == 'D';
    storeLE(&head[kItemAt], static_cast<std::uint16_t>(item));
    head[23] = kept & kPrimary ? kPrimaryMark : made.unique;
    std::copy(made.expression.begin(), made.expression.end(), head.begin() + kExpressionAt);
    head[kHasConditionAt] = !made.condition.empty();
    std::copy(made.condition.begin(), made.condition.end(), head.begin() + kConditionAt);
    head[kPlainAt] = made.plainField;
    if (made.refusesEqual && !kept)
        std::copy(kOurs.begin(), kOurs.end(), head.begin() + kOursAt);
    const std::uint32_t place = allocate();
    file_.writeAt(bytesAt(place), head);
    setDate(bytesAt(place) + kTagDateAt);

    const std::uint32_t slotLength = slotBytes(), nameLength = nameBytes(slotLength);
    std::vector<std::uint8_t> entry(slotLength);
    storeLE(entry.data(), place);
    std::copy_n(made.name.begin(), std::min<std::size_t>(made.name.size(), nameLength - 1),
                entry.begin() + 4);
    entry[4 + nameLength] = 0x10;
    entry[8 + nameLength] = 2;
    entry[9 + nameLength] = static_cast<std::uint8_t>(made.keyLetter);
    file_.writeAt(slotAt(count + 1), entry);
    setTagCount(count + 1);
    makeNameTree(count + 1);
    return readTag(count + 1);
}

void MdxFile::removeTag(const IndexTag& tag)
{
    const std::uint32_t count = tagCount();
    std::vector<std::uint8_t> entry(slotBytes());
    std::uint32_t kept = 0;
    for (std::uint32_t i = 1; i <= count; ++i) {
        file_.readAt(slotAt(i), entry);
        if (loadLE<std::uint32_t>(entry.data()) != tag.place)
            file_.writeAt(slotAt(++kept), entry);
    }
    std::fill(entry.begin(), entry.end(), std::uint8_t{0});
    for (std::uint32_t i = kept + 1; i <= count; ++i)
        file_.writeAt(slotAt(i), entry);
    release(tag.place);
    setTagCount(kept);
    makeNameTree(kept);
}

void MdxFile::touch(const std::vector<const IndexTag*>& changed)
{
    setDate(kDateAt);
    for (const IndexTag* tag : changed) {
        const std::uint64_t at = bytesAt(tag->place) + kSerialAt;
        setSmall(at, small(at, 2) + 1, 2);
    }
}

}  // namespace velnor::xbase
