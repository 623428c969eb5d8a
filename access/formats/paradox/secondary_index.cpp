#include "access/formats/paradox/secondary_index.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"

namespace velnor::paradox {
namespace {

constexpr std::uint16_t kSign = 0x8000;
constexpr std::int64_t kEntriesBetweenLooks = 1024;

}  // namespace

SecondaryIndex::SecondaryIndex(const FileHeader& table, std::string extension, PageFile& file,
                               std::string_view codePage)
    : table_(table), extension_(std::move(extension)), file_(file),
      header_(readHeader(file, codePage)), blocks_(file, header_), upper_(*table.codePage)
{
    readFields();
}

void SecondaryIndex::refuseOther(const char* why) const
{
    throw EngineError(EngineErrorNumber::UnexpectedFormat, why);
}

void SecondaryIndex::readFields()
{
    if (header_.isTree() || header_.isTable())
        refuseOther("it is no secondary index");
    const std::size_t tail = kept() ? 1u + table_.keyFields : 3u;
    const std::size_t all = header_.fields.size();
    if (all <= tail || header_.keyFields != all - 1 || (kept() && table_.keyFields == 0))
        refuseOther("it does not fit the fields of the table");
    bool ascends = false;
    for (std::size_t i = 0; i < all - tail; ++i) {
        const std::uint16_t number = header_.fields[i].number;
        const std::size_t ordinal =
            header_.hasSecondHeader() ? number & ~kFieldDescends : header_.indexField;
        if (ordinal < 1 || ordinal > table_.fields.size() ||
            !table_.fields[ordinal - 1].sameKind(header_.fields[i]))
            refuseOther("it does not fit the fields of the table");
        fields_.push_back(ordinal - 1);
        indexedLength_ += header_.fields[i].length;
        (number & kFieldDescends ? descending_ : ascends) = true;
    }
    for (std::size_t i = 0; kept() && i < table_.keyFields; ++i)
        if (!table_.fields[i].sameKind(header_.fields[fields_.size() + i]))
            refuseOther("it does not fit the key of the table");
    if (header_.fields.back().code != FieldCode::Short ||
        (!kept() && (header_.fields[all - 2].code != FieldCode::Short ||
                     header_.fields[all - 3].code != FieldCode::Long)))
        refuseOther("its entries do not name records");
    if (descending_ && ascends)
        trouble_ = "some of its fields ascend and others descend";
    descending_ = descending_ || (header_.options & kDescending);
}

std::string SecondaryIndex::name() const
{
    if (!header_.label.empty()) {
        std::string scratch;
        return std::string(table_.codePage->decode(header_.label, scratch));
    }
    return table_.fields[fields_[0]].name;
}

bool SecondaryIndex::current() const
{
    return header_.parentLink == linkOf(table_.dataStamp, table_.sortByte) &&
           header_.structureStamp == table_.structureStamp;
}

std::uint32_t SecondaryIndex::hintOf(const std::uint8_t* entry) const
{
    return loadBE<std::uint16_t>(entry + entryLength() - 2) ^ kSign;
}

std::uint32_t SecondaryIndex::looseBlockOf(const std::uint8_t* entry) const
{
    return loadBE<std::uint16_t>(entry + entryLength() - 4) ^ kSign;
}

std::uint32_t SecondaryIndex::looseOffsetOf(const std::uint8_t* entry) const
{
    return loadBE<std::uint16_t>(entry + entryLength() - 2) ^ kSign;
}

void SecondaryIndex::makePart(std::size_t i, const std::uint8_t* value, std::uint8_t* to) const
{
    const StoredField& field = tableField(i);
    std::memcpy(to, value, field.length);
    if (!field.isText())
        return;
    if (blindToCase())
        return upper_.apply({to, field.length});
    std::uint8_t* const end = to + field.length;
    std::fill(std::find(to, end, std::uint8_t{0}), end, std::uint8_t{0});
}

void SecondaryIndex::makeEntry(const std::uint8_t* record, std::uint32_t block,
                               std::uint8_t* entry) const
{
    std::uint8_t* to = entry;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        makePart(i, record + tableField(i).offset, to);
        to += tableField(i).length;
    }
    const std::size_t key = table_.keyLength();
    std::memcpy(to, record, key);
    storeBE(to + key, static_cast<std::uint16_t>(block ^ kSign));
}

RecordChain& SecondaryIndex::chain()
{
    if (!chain_) {
        const std::span<const StoredField> keys(header_.fields.data(), header_.fields.size() - 1);
        KeyOrder order = keyOrderOf(table_, keys, descending_);
        order.byBytes = order.byBytes && trouble_.empty();
        chain_ = std::make_unique<RecordChain>(blocks_, entryKeyLength(), order);
    }
    return *chain_;
}

void SecondaryIndex::openTree(PageFile& tree, std::string_view codePage)
{
    treeFile_ = &tree;
    treeHeader_ = readHeader(tree, codePage);
    bool fits = treeHeader_.isTree() && treeHeader_.fields.size() + 1 == header_.fields.size();
    for (std::size_t i = 0; fits && i < treeHeader_.fields.size(); ++i)
        fits = treeHeader_.fields[i].sameKind(header_.fields[i]);
    if (!fits)
        throw EngineError(EngineErrorNumber::UnexpectedFormat,
                          "the tree of the index has other fields");
    tree_.reset();
    treeBlocks_ = std::make_unique<BlockFile>(tree, treeHeader_);
    chain().mendCounts();
    tree_ = std::make_unique<TreeFile>(*treeBlocks_, *chain_);
    changed_ = changed_ || tree_->wasRebuilt();
}

bool SecondaryIndex::hasTwin(const std::uint8_t* entry, const std::uint8_t* own)
{
    Place place = chain().lowerBound(entry, indexedLength_);
    for (; chain_->settle(place); ++place.slot) {
        const std::uint8_t* other = chain_->record(place);
        if (std::memcmp(other, entry, indexedLength_) != 0)
            return false;
        if (!own || std::memcmp(other, own, entryKeyLength()) != 0)
            return true;
    }
    return false;
}

void SecondaryIndex::insert(const std::uint8_t* entry)
{
    chain_->insert(chain_->lowerBound(entry, entryKeyLength()), entry);
    changed_ = true;
}

bool SecondaryIndex::remove(const std::uint8_t* entry)
{
    const auto place = chain_->find(entry, entryKeyLength());
    if (!place)
        return false;
    chain_->remove(*place);
    changed_ = true;
    return true;
}

/// No entries; all blocks are free.
void SecondaryIndex::clear()
{
    tree_.reset();
    header_.firstBlock = header_.lastBlock = header_.usedBlocks = 0;
    header_.records = 0;
    header_.writing = 0;
    std::vector<std::uint16_t> all(blocks_.count());
    std::iota(all.begin(), all.end(), std::uint16_t{1});
    header_.fileBlocks = static_cast<std::uint16_t>(all.size());
    blocks_.setFree(all);
    chain_->load();
}

/// Turns the bits of the key of a falling index, whose entries are sorted as if they rose.
void SecondaryIndex::turn(std::uint8_t* entry) const
{
    if (descending_)
        std::transform(entry, entry + entryKeyLength(), entry,
                       [](std::uint8_t b) { return static_cast<std::uint8_t>(~b); });
}

bool SecondaryIndex::rebuild(RecordChain& records, RowSorter& sorter,
                             const std::function<void()>& relieve)
{
    for (std::uint32_t at = 0; at < records.blocks(); ++at)
        for (std::uint32_t slot = 0; slot < records.recordsAt(at); ++slot) {
            std::uint8_t* entry = sorter.add();
            makeEntry(records.record({at, slot}), records.blockAt(at), entry);
            turn(entry);
        }
    clear();
    std::vector<std::uint8_t> entry(entryLength()), last;
    for (; const std::uint8_t* row = sorter.row(); sorter.next()) {
        entry.assign(row, row + entryLength());
        turn(entry.data());
        if (unique() && !last.empty() && std::equal(last.begin(), last.end(), entry.begin()))
            return false;
        if (unique())
            last.assign(entry.begin(), entry.begin() + static_cast<std::ptrdiff_t>(indexedLength_));
        chain_->append(entry.data());
        if (chain_->records() % kEntriesBetweenLooks == 0)
            relieve();
    }
    tree_ = std::make_unique<TreeFile>(*treeBlocks_, *chain_);
    changed_ = true;
    return true;
}

void SecondaryIndex::store()
{
    if (changed_)
        header_.dataStamp = nextStamp(header_.dataStamp);
    header_.parentLink = linkOf(table_.dataStamp, table_.sortByte);
    header_.structureStamp = table_.structureStamp;
    blocks_.store();
    treeHeader_.link = linkOf(header_.dataStamp, header_.sortByte);
    tree_->store();
    changed_ = false;
}

std::size_t SecondaryIndex::changedBytes() const
{
    return blocks_.changedBytes() + (tree_ ? tree_->changedBytes() : 0);
}

}  // namespace velnor::paradox
