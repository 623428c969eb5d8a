#include "access/formats/paradox/check_index.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/paradox/field_codec.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

class IndexCheck {
public:
    IndexCheck(DbTable& table, SecondaryIndex& index, FileCheck& records, CheckReport& report)
        : table_(table), index_(index), records_(records), report_(report),
          file_(std::string(
                    paths::fileName(findCompanion(table.companions(), index.extension())->path)),
                index.file(), table.opening().codePage, report),
          entry_(index.entryLength())
    {
    }

    void run()
    {
        file_.checkHeader();
        compareWithTable();
        const bool stale = !index_.current();
        if (stale && index_.kept())
            file_.fault("it is out of date: its stamps are not those of the table");
        else if (stale)
            file_.note("it is out of date, and nobody keeps it right");
        file_.checkBlocks();
        if (index_.kept() || !stale)
            entries();
        tree();
    }

private:
    void compareWithTable();
    void entries();
    void keptEntry(const std::uint8_t* entry, std::uint32_t block);
    void looseEntry(const std::uint8_t* entry, std::uint32_t block);
    void twins();
    void tree();
    bool sameKey(const std::uint8_t* stored, const std::uint8_t* made) const;

    DbTable& table_;
    SecondaryIndex& index_;
    FileCheck& records_;
    CheckReport& report_;
    FileCheck file_;
    std::vector<std::uint8_t> entry_;
    std::int64_t oldHints_ = 0;
};

void IndexCheck::compareWithTable()
{
    const FileHeader& own = file_.header();
    const FileHeader& table = table_.header();
    if (own.blockBytes != table.blockBytes || own.version != table.version ||
        own.sortByte != table.sortByte || own.sortName != table.sortName ||
        own.codePageNumber != table.codePageNumber)
        file_.fault("it has another block size, version, sort order or code page than the table");
    if (own.link != 0xFF)
        file_.fault("header byte 2C is not FF");
    if (own.indexField != index_.fields()[0] + 1)
        file_.fault("header byte 15 names another field");
    if ((own.options & ~(kBlindToCase | kDescending | kUnique)) || (!own.isGroup() && own.options))
        file_.fault("its options are unknown");
    if (own.isGroup() && own.label.empty())
        file_.fault("it has no name");
    if (!own.isGroup() &&
        (index_.fields().size() != 1 ||
         index_.extension() != singleExtension('X', static_cast<unsigned>(index_.fields()[0] + 1))))
        file_.fault("its file name is that of another field");
}

/// Texts are the same up to their zero bytes: older programs leave rubbish behind them.
bool IndexCheck::sameKey(const std::uint8_t* stored, const std::uint8_t* made) const
{
    for (std::size_t i = 0; i + 1 < index_.header().fields.size(); ++i) {
        const StoredField& field = index_.header().fields[i];
        const char* a = reinterpret_cast<const char*>(stored + field.offset);
        const char* b = reinterpret_cast<const char*>(made + field.offset);
        if (field.isText() ? std::strncmp(a, b, field.length) != 0
                           : std::memcmp(a, b, field.length) != 0)
            return false;
    }
    return true;
}

void IndexCheck::keptEntry(const std::uint8_t* entry, std::uint32_t block)
{
    const std::uint32_t hint = index_.hintOf(entry);
    if (hint == 0)
        file_.fault("block " + std::to_string(block) + ": an entry names no block", "hint");
    const auto place = table_.placeOfKey(index_.primaryKeyOf(entry), hint);
    if (!place)
        return file_.fault("block " + std::to_string(block) + ": an entry has no record",
                           "norecord");
    const std::uint32_t at = table_.chain().blockAt(place->at);
    oldHints_ += at != hint;
    index_.makeEntry(table_.chain().record(*place), at, entry_.data());
    if (!sameKey(entry, entry_.data()))
        file_.fault("block " + std::to_string(block) + ": an entry differs from its record",
                    "differs");
}

void IndexCheck::looseEntry(const std::uint8_t* entry, std::uint32_t block)
{
    RecordChain& chain = table_.chain();
    const auto at = chain.positionOf(index_.looseBlockOf(entry));
    const std::size_t slot = index_.looseOffsetOf(entry) / chain.recordSize();
    const std::int64_t number = integerAt(entry + index_.entryLength() - 8, 4);
    bool fits = at && slot < chain.recordsAt(*at);
    if (fits) {
        const Place place{static_cast<std::uint32_t>(*at), static_cast<std::uint32_t>(slot)};
        fits = chain.ordinalOf(place) + 1 == number;
        const std::uint8_t* record = chain.record(place);
        std::size_t offset = 0;
        for (std::size_t i = 0; fits && i < index_.fields().size(); ++i) {
            const StoredField& field = index_.tableField(i);
            index_.makePart(i, record + field.offset, entry_.data());
            fits = std::memcmp(entry + offset, entry_.data(), field.length) == 0;
            offset += field.length;
        }
    }
    if (!fits)
        file_.fault("block " + std::to_string(block) + ": an entry points to another record",
                    "points");
}

void IndexCheck::entries()
{
    const std::span<const StoredField> keys(index_.header().fields.data(),
                                            index_.header().fields.size() - 1);
    file_.checkOrder(index_.entryKeyLength(),
                     keyOrderOf(table_.header(), keys, index_.descending()), true);
    for (const FileCheck::ChainBlock& block : file_.chain()) {
        const std::uint8_t* start = file_.recordsOf(block);
        const std::vector<std::uint8_t> bytes(start, start + block.records * index_.entryLength());
        for (std::size_t i = 0; i < block.records; ++i) {
            const std::uint8_t* entry = bytes.data() + i * index_.entryLength();
            if (index_.kept())
                keptEntry(entry, block.number);
            else
                looseEntry(entry, block.number);
        }
    }
    if (file_.records() != records_.records())
        file_.fault(std::to_string(file_.records()) + " entries for " +
                    std::to_string(records_.records()) + " records");
    if (oldHints_)
        file_.note(std::to_string(oldHints_) + " of " + std::to_string(file_.records()) +
                   " block hints are old, which is allowed");
    if (index_.unique())
        twins();
}

void IndexCheck::twins()
{
    std::vector<std::uint8_t> last;
    for (const FileCheck::ChainBlock& block : file_.chain()) {
        const std::uint8_t* entry = file_.recordsOf(block);
        for (std::size_t i = 0; i < block.records; ++i, entry += index_.entryLength()) {
            if (!last.empty() && std::memcmp(last.data(), entry, last.size()) == 0)
                file_.fault("a unique index has two records with the same values", "unique");
            last.assign(entry, entry + index_.indexedLength());
        }
    }
}

void IndexCheck::tree()
{
    const Companion* companion = findCompanion(table_.companions(), index_.treeExtension());
    if (!companion) {
        if (index_.kept())
            file_.fault("its file " + index_.treeExtension() + " is missing");
        return;
    }
    const std::string name(paths::fileName(companion->path));
    try {
        FileCheck tree(name, table_.companion(companion->path), table_.opening().codePage, report_);
        if (!tree.header().isTree())
            return tree.fault("it is no tree");
        tree.checkTree(file_, index_.entryKeyLength(),
                       linkOf(file_.header().dataStamp, file_.header().sortByte));
    } catch (const EngineError& error) {
        report_.fault(name, error.what());
    }
}

}  // namespace

void checkIndex(DbTable& table, SecondaryIndex& index, FileCheck& records, CheckReport& report)
{
    IndexCheck(table, index, records, report).run();
}

}  // namespace velnor::paradox
