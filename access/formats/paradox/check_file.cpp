#include "access/formats/paradox/check_file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "access/engine_error.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr std::uint16_t kSign = 0x8000;

/// Header bytes that programs fill with what only they know: pointers of theirs, times, counters.
struct Stretch {
    std::size_t from, to;
};
constexpr std::array kFreeBytes{Stretch{0x16, 0x1E}, Stretch{0x30, 0x39}, Stretch{0x3A, 0x3C},
                                Stretch{0x40, 0x48}, Stretch{0x60, 0x64}, Stretch{0x70, 0x78}};

bool isFree(std::size_t at, const FileHeader& header)
{
    if (at >= 0x58 && !header.hasSecondHeader())
        return false;
    return std::any_of(kFreeBytes.begin(), kFreeBytes.end(),
                       [&](const Stretch& s) { return at >= s.from && at < s.to; });
}

std::string hex(std::size_t value)
{
    char text[24];
    std::snprintf(text, sizeof text, "%02zX", value);
    return text;
}

std::string number(std::size_t value)
{
    return std::to_string(value);
}

}  // namespace

FileCheck::FileCheck(std::string fileName, PageFile& pages, std::string_view codePage,
                     CheckReport& report)
    : name_(std::move(fileName)), pages_(pages), header_(readHeader(pages, codePage)),
      blocks_(pages, header_), report_(report)
{
}

/// A header follows from what it says: made anew it must be the same.
void FileCheck::compareHeader(const std::vector<std::uint8_t>& stored)
{
    FileHeader made = header_;
    layOutHeader(made);
    if (header_.version >= 5 && header_.realSize != made.realSize)
        fault("the header says that it takes " + number(header_.realSize) + " bytes, it takes " +
              number(made.realSize));
    if (header_.version >= 5 && header_.headerSize < made.headerSize)
        fault("the header has " + number(header_.headerSize) + " bytes and needs " +
              number(made.headerSize));
    else if (header_.version >= 5 && header_.headerSize > made.headerSize)
        note("the header has " + number(header_.headerSize) + " bytes, " + number(made.headerSize) +
             " would do");
    made.headerSize = std::max(header_.headerSize, made.headerSize);
    made.realSize = header_.realSize;
    const std::vector<std::uint8_t> bytes = headerBytes(made);
    const std::size_t variable = header_.hasSecondHeader() ? 0x78 : 0x58;
    for (std::size_t at = 0; at < variable && at < stored.size(); ++at)
        if (bytes[at] != stored[at] && !isFree(at, header_))
            fault("header byte " + hex(at) + " is " + hex(stored[at]) + ", should be " +
                      hex(bytes[at]),
                  "header");
    for (std::size_t at = made.realSize; header_.version >= 5 && at < stored.size(); ++at)
        if (stored[at] != 0)
            return fault("the bytes behind the header's end are not zero");
}

void FileCheck::checkFields()
{
    for (std::size_t i = 0; !header_.isTree() && i < header_.fields.size(); ++i) {
        const std::string& stored = header_.fields[i].stored;
        if (header_.fields[i].isLong() && header_.fields[i].sizeByte > 250)
            fault("a long field is longer than 250");
        if (stored.empty() || stored.size() > 25)
            fault("a field name is empty or longer than 25");
        for (std::size_t j = 0; header_.isTable() && j < i; ++j)
            if (paths::sameName(header_.fields[i].name, header_.fields[j].name))
                fault("two fields have the name " + header_.fields[i].name);
        for (std::size_t j = 0; header_.isTable() && header_.hasSecondHeader() && j < i; ++j)
            if (header_.fields[i].number == header_.fields[j].number)
                fault("two fields have the id " + number(header_.fields[i].number));
    }
    if (!header_.hasSecondHeader())
        return;
    const bool ascii = header_.sortName == "ascii";
    if (ascii != (header_.sortByte == 0) ||
        (header_.sortName == "DBWINUS0" && header_.sortByte != 76))
        fault("the sort order " + header_.sortName + " has the number " + number(header_.sortByte));
    if (header_.childMark != 0x0101 && header_.childMark != 0x0102)
        fault("header word 6C is " + hex(header_.childMark));
    std::uint16_t highest = 0;
    for (const StoredField& field : header_.fields)
        highest = std::max<std::uint16_t>(highest, field.number & ~kFieldDescends);
    if (header_.nextFieldId <= highest)
        fault("the next field id is " + number(header_.nextFieldId) + ", ids go to " +
              number(highest));
    else if (header_.nextFieldId != highest + 1)
        note("the next field id is " + number(header_.nextFieldId) + ", ids go to " +
             number(highest));
}

void FileCheck::checkHeader()
{
    std::vector<std::uint8_t> stored(header_.headerSize);
    pages_.readAt(0, stored);
    compareHeader(stored);
    checkFields();
    if (header_.writing)
        fault("its last writer did not finish");
    if (header_.statedMostBlocks != header_.fileBlocks)
        note("it says it had " + number(header_.statedMostBlocks) + " blocks at most, it has " +
             number(header_.fileBlocks));
    const bool keyed = header_.kind != FileKind::PlainTable &&
                       (header_.isTree() || header_.isTable() || header_.isKept());
    if (header_.recordsPerBlock() < (keyed ? 3u : 1u))
        fault("a block holds only " + number(header_.recordsPerBlock()) + " records");
    if (header_.isTable() && (header_.link || header_.parentLink))
        fault("a table has the stamps of an index");
    if (!header_.isTree()) {
        if (header_.levels)
            fault("it is no tree and has levels");
        return;
    }
    if (header_.structureStamp || (header_.dataStamp > 1 && header_.version >= 5))
        fault("a tree has the stamps of a table");
    if (header_.root < 1 || header_.root > std::max<int>(header_.fileBlocks, 1) ||
        (header_.levels == 0 && header_.root != 1))
        fault("its root is block " + number(header_.root) + " of " + number(header_.fileBlocks));
}

void FileCheck::checkBlocks()
{
    const auto size = static_cast<int>(header_.recordSize);
    met_.assign(blocks_.count() + 1u, false);
    std::uint32_t before = 0;
    for (std::uint32_t block = header_.firstBlock; block;) {
        if (!blocks_.has(block) || met_[block]) {
            fault("the chain leads from block " + number(before) + " to block " + number(block) +
                  (blocks_.has(block) ? ", where it was already" : ", which is not there"));
            break;
        }
        if (block > header_.fileBlocks)
            fault("block " + number(block) + " of the chain is not counted in the header", "count");
        met_[block] = true;
        const BlockHead head = BlockHead::read(blocks_.block(block));
        if (head.previous != before)
            fault("block " + number(block) + " has block " + number(head.previous) +
                      " in front of it, should be " + number(before),
                  "previous");
        int count = head.last / size + 1;
        if (head.last % size != 0 || head.last < -size ||
            count > static_cast<int>(header_.recordsPerBlock())) {
            fault("the number of records in block " + number(block) + " cannot be right", "last");
            count = std::clamp(count, 0, static_cast<int>(header_.recordsPerBlock()));
        }
        chain_.push_back({static_cast<std::uint16_t>(block), static_cast<std::uint16_t>(count)});
        records_ += count;
        before = block;
        block = head.next;
    }
    for (const ChainBlock& block : chain_)
        if (block.records == 0 && chain_.size() > 1)
            fault("block " + number(block.number) + " of the chain is empty", "empty");
    bool broken = false;
    const std::vector<std::uint16_t> unused = blocks_.freeBlocks(broken);
    if (broken)
        fault("the chain of free blocks is broken");
    for (const std::uint16_t block : unused) {
        if (met_[block])
            fault("block " + number(block) + " is in use and free", "both");
        if (BlockHead::read(blocks_.block(block)).last != -size)
            fault("free block " + number(block) + " does not say that it is empty", "free");
        met_[block] = true;
    }
    checkCounters(unused.size());
}

void FileCheck::checkCounters(std::size_t freeBlocks)
{
    const auto differs = [&](const char* what, std::size_t stated, std::size_t found) {
        if (stated != found)
            fault(std::string("the header tells of ") + number(stated) + " " + what +
                  ", there are " + number(found));
    };
    differs("records", header_.records, static_cast<std::size_t>(records_));
    differs("used blocks", header_.usedBlocks, chain_.size());
    if (header_.lastBlock != (chain_.empty() ? 0 : chain_.back().number))
        fault("the header names another last block than the chain has");
    if (header_.firstBlock > 1)
        fault("the first block is not block 1");
    if (chain_.size() + freeBlocks != header_.fileBlocks)
        differs("blocks in all", header_.fileBlocks, chain_.size() + freeBlocks);
    const std::uint64_t bytes =
        header_.headerSize + std::uint64_t{header_.fileBlocks} * header_.blockBytes;
    if (pages_.size() != bytes)
        fault("the file has " + number(pages_.size()) + " bytes, should have " + number(bytes));
}

void FileCheck::checkOrder(std::size_t keyLength, const KeyOrder& order, bool unique)
{
    std::vector<std::uint8_t> last(keyLength);
    bool any = false;
    for (const ChainBlock& block : chain_) {
        const std::uint8_t* key = recordsOf(block);
        for (std::size_t i = 0; i < block.records; ++i, key += header_.recordSize) {
            const std::string where = "block " + number(block.number) + ", record " + number(i + 1);
            const int by = any ? order.compare(last.data(), key, keyLength) : -1;
            if (by == 0 && unique)
                fault(where + ": its key is there twice", "twice");
            else if (by > 0 && order.byBytes)
                fault(where + ": its key is out of order", "order");
            std::copy_n(key, keyLength, last.begin());
            any = true;
        }
    }
    if (!order.byBytes)
        note("the order of its texts is not checked: the sort order is not known");
}

void FileCheck::checkLeaf(FileCheck& data, const std::uint8_t* entry, std::uint32_t block,
                          std::uint32_t count)
{
    // An empty block at the end of an emptied file has no entry.
    if (leaves_ >= data.chain().size())
        return;
    const ChainBlock& wanted = data.chain()[leaves_++];
    const bool sameKey = std::memcmp(entry, data.recordsOf(wanted), keyLength_) == 0;
    if (block != wanted.number || count != wanted.records || !sameKey)
        fault("the entry for block " + number(wanted.number) + " has another " +
                  (block != wanted.number ? "block"
                   : sameKey              ? "count"
                                          : "key"),
              "leaf");
}

FileCheck::Subtree FileCheck::walkTree(FileCheck& data, std::uint32_t block, int level)
{
    Subtree found;
    const auto inChain = std::find_if(chain_.begin(), chain_.end(),
                                      [&](const ChainBlock& b) { return b.number == block; });
    if (inChain == chain_.end() || met_[block]) {
        fault("the tree leads to block " + number(block) + " twice, or out of the chain");
        return found;
    }
    met_[block] = true;
    if (inChain->records == 0) {
        fault("block " + number(block) + " of the tree is empty");
        return found;
    }
    const std::uint8_t* start = recordsOf(*inChain);
    const std::vector<std::uint8_t> entries(start, start + inChain->records * header_.recordSize);
    for (std::size_t i = 0; i < inChain->records; ++i) {
        const std::uint8_t* entry = entries.data() + i * header_.recordSize;
        const std::uint32_t child = loadBE<std::uint16_t>(entry + keyLength_) ^ kSign;
        const std::uint32_t count = loadBE<std::uint16_t>(entry + keyLength_ + 2) ^ kSign;
        if (loadBE<std::uint16_t>(entry + keyLength_ + 4) != kSign)
            fault("block " + number(block) + ": the third word of an entry is not 0", "third");
        if (level <= 1) {
            checkLeaf(data, entry, child, count);
            found.records += count;
            continue;
        }
        const Subtree below = walkTree(data, child, level - 1);
        if (!below.sound)
            continue;
        if ((below.records & 0xFFFF) != count)
            fault("block " + number(block) + ": the entry for block " + number(child) + " counts " +
                      number(count) + ", should be " + number(below.records),
                  "count");
        if (!std::equal(below.firstKey.begin(), below.firstKey.end(), entry))
            fault("block " + number(block) + ": the entry for block " + number(child) +
                      " has another key than it",
                  "childkey");
        found.records += below.records;
    }
    found.firstKey.assign(entries.begin(),
                          entries.begin() + static_cast<std::ptrdiff_t>(keyLength_));
    found.sound = true;
    return found;
}

void FileCheck::checkTree(FileCheck& data, std::size_t keyLength, std::uint8_t link)
{
    checkHeader();
    keyLength_ = keyLength;
    bool fits =
        header_.fields.size() <= data.header().fields.size() && header_.keyLength() == keyLength;
    for (std::size_t i = 0; fits && i < header_.fields.size(); ++i)
        fits = header_.fields[i].sameKind(data.header().fields[i]);
    if (!fits)
        return fault("its fields are not the key fields of " + data.name());
    if (header_.version != data.header().version || header_.sortByte != data.header().sortByte)
        fault("it has another version or sort order than " + data.name());
    checkBlocks();
    std::fill(met_.begin(), met_.end(), false);
    leaves_ = 0;
    if (header_.levels > 16)
        return fault("it has " + number(header_.levels) + " levels");
    if (header_.levels)
        walkTree(data, header_.root, header_.levels);
    else if (records_)
        fault("it has entries and no levels");
    const auto reached = static_cast<std::size_t>(std::count(met_.begin(), met_.end(), true));
    if (header_.levels && reached != chain_.size())
        fault(number(chain_.size() - reached) + " of its used blocks are not in the tree");
    const std::size_t wanted = data.records() ? data.chain().size() : 0;
    if (leaves_ != wanted)
        fault("its lowest level has " + number(leaves_) + " entries, " + data.name() + " has " +
              number(wanted) + " blocks");
    if (header_.link != link)
        fault("it is out of date: its stamp is " + number(header_.link) + ", should be " +
              number(link));
}

}  // namespace velnor::paradox
