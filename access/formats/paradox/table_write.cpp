// The part of DbTable that changes records and keeps the indexes.
#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/paradox/db_table.h"
#include "access/formats/paradox/new_table.h"
#include "access/formats/paradox/user_locks.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kMostInMemory = 8u << 20;  // of entries that are being sorted
constexpr std::size_t kMostChanged = 4u << 20;   // of pages while an index is filled

[[noreturn]] void duplicate(const DbTable& table, const std::string& index)
{
    throw EngineError(EngineErrorNumber::DuplicateKey, "A record with the same key is in " +
                                                           table.path() + " (index " + index +
                                                           ").");
}

}  // namespace

void DbTable::refuseUnknownOrder() const
{
    throw EngineError(EngineErrorNumber::IndexNotMaintained,
                      opening_.path + " sorts its texts by the order " + sortOrderWords(header_) +
                          ", whose weights are not known: a record could be put in a wrong place.");
}

void DbTable::openPrimaryTree()
{
    const Companion* file = findCompanion(companions_, "PX");
    const std::string path = file ? file->path : paths::withExtension(opening_.path, "PX");
    PageFile& pages = companion(path, !file);
    if (pages.size() > 0) {
        try {
            treeHeader_ = readHeader(pages, opening_.codePage);
            bool fits = treeHeader_.kind == FileKind::PrimaryTree &&
                        treeHeader_.fields.size() == header_.keyFields &&
                        treeHeader_.cipherKey == 0;
            for (std::size_t i = 0; fits && i < treeHeader_.fields.size(); ++i)
                fits = treeHeader_.fields[i].sameKind(header_.fields[i]);
            file = fits ? file : nullptr;
        } catch (const EngineError&) {
            file = nullptr;
        }
    }
    if (!file || pages.size() == 0) {
        treeHeader_ = newTreeHeader(header_, FileKind::PrimaryTree, name() + ".PX");
        pages.resize(0);
        pages.writeAt(0, headerBytes(treeHeader_));
    }
    tree_.reset();
    treeBlocks_ = std::make_unique<BlockFile>(pages, treeHeader_);
    tree_ = std::make_unique<TreeFile>(*treeBlocks_, *chain_);
}

void DbTable::openIndexTree(SecondaryIndex& index)
{
    const std::string extension = index.treeExtension();
    const Companion* file = findCompanion(companions_, extension);
    const std::string path = file ? file->path : paths::withExtension(opening_.path, extension);
    PageFile& pages = companion(path, !file);
    try {
        if (pages.size() > 0)
            return index.openTree(pages, opening_.codePage);
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat)
            throw;
    }
    const FileKind kind = index.header().isGroup() ? FileKind::GroupTree : FileKind::SingleTree;
    const FileHeader made = newTreeHeader(index.header(), kind, name() + "." + extension);
    pages.resize(0);
    pages.writeAt(0, headerBytes(made));
    index.openTree(pages, opening_.codePage);
}

void DbTable::prepareWriting()
{
    if (writing_)
        return;
    if (opening_.readOnly)
        throw EngineError(EngineErrorNumber::ReadOnly,
                          opening_.path + " is open for reading only.");
    if (const std::string why = whyNotUpdatable(); !why.empty())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          opening_.path + " cannot be written. " + why);
    refuseForeignUsers(*opening_.files, opening_.path);
    if (!chain().damage().empty())
        throw EngineError(EngineErrorNumber::Corrupt,
                          opening_.path + " is damaged and cannot be written: " + chain_->damage() +
                              ".");
    for (const auto& [file, why] : indexTroubles())
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index file " + file + " cannot be kept right: " + why + ".");
    try {
        openForWriting();
    } catch (...) {
        rollback();
        throw;
    }
    writing_ = true;
}

/// 1. and 2.
void DbTable::openForWriting()
{
    chain_->mendCounts();
    if (keyed())
        openPrimaryTree();
    entry_.clear();
    std::vector<SecondaryIndex*> wrong;
    for (const auto& index : indexes_) {
        if (!index->kept())
            continue;
        const bool known = index->chain().order().byBytes;
        const bool fits = fitsTable(*index);
        if (!fits && !known)
            continue;  // as it was found: wrong, and the next stamp says so
        if (!index->trouble().empty())
            throw EngineError(EngineErrorNumber::IndexNotMaintained,
                              "The index " + index->name() +
                                  " cannot be kept right: " + index->trouble() + ".");
        openIndexTree(*index);
        if (!fits || (known && !index->chain().ordered()))
            wrong.push_back(index.get());
        entry_.resize(std::max(entry_.size(), index->entryLength()));
    }
    oldEntry_.resize(entry_.size());
    for (SecondaryIndex* index : wrong)  // when all files are open: their pages may go to the disk
        rebuildIndex(*index);
    header_.writing = 0;
}

/// Whether an index tells of the records as they are. A writer that did not finish has left its
/// mark in the table or in the index.
bool DbTable::fitsTable(SecondaryIndex& index)
{
    return index.current() && !header_.writing && !index.header().writing &&
           index.chain().damage().empty() && index.chain().records() == chain_->records();
}

void DbTable::makeIndex(const std::string& extension, const FileHeader& made)
{
    prepareWriting();
    commit();
    try {
        PageFile& pages = companion(paths::withExtension(opening_.path, extension), true);
        pages.resize(0);
        pages.writeAt(0, headerBytes(made));
        SecondaryIndex& index = *indexes_.emplace_back(
            std::make_unique<SecondaryIndex>(header_, extension, pages, opening_.codePage));
        if (!index.chain().order().byBytes)
            refuseUnknownOrder();
        openIndexTree(index);
        rebuildIndex(index);
        commit();
    } catch (...) {
        rollback();
        throw;
    }
    withFilesClosed([] {});  // the indexes in the order of their files again
}

void DbTable::rebuildIndex(SecondaryIndex& index)
{
    RowSorter sorter(*opening_.files, opening_.path + "-sort", index.entryKeyLength(),
                     index.entryLength(), kMostInMemory);
    const auto relieve = [this] {
        if (files_->pendingBytes() > kMostChanged)
            files_->spill();
    };
    if (!index.rebuild(*chain_, sorter, relieve))
        duplicate(*this, index.name());
    changed_ = true;
}

void DbTable::testRecord(const std::uint8_t* record, const std::uint8_t* own)
{
    prepareWriting();
    const std::size_t length = header_.keyLength();
    const bool newKey = keyed() && (!own || std::memcmp(own, record, length) != 0);
    if (newKey) {
        if (!chain_->ordered())
            refuseUnknownOrder();
        if (chain_->find(record, length))
            duplicate(*this, primaryIndexName());
        if (!tree_->hasRoom())
            throw EngineError(EngineErrorNumber::DatabaseFull, opening_.path + " is full.");
    }
    if ((newKey || !own) && !chain_->hasRoom())
        throw EngineError(EngineErrorNumber::DatabaseFull, opening_.path + " is full.");
    for (const auto& index : indexes_) {
        if (!index->writable())
            continue;
        index->makeEntry(record, 0, entry_.data());
        if (own) {
            index->makeEntry(own, 0, oldEntry_.data());
            if (std::memcmp(entry_.data(), oldEntry_.data(), index->entryKeyLength()) == 0)
                continue;
        }
        if (!index->chain().ordered())
            refuseUnknownOrder();
        if (!index->hasRoom())
            throw EngineError(EngineErrorNumber::DatabaseFull,
                              "The index " + index->name() + " is full.");
        if (index->unique() && index->hasTwin(entry_.data(), own ? oldEntry_.data() : nullptr))
            duplicate(*this, index->name());
    }
}

void DbTable::addEntries(const std::uint8_t* record, std::uint32_t block)
{
    for (const auto& index : indexes_)
        if (index->writable()) {
            index->makeEntry(record, block, entry_.data());
            index->insert(entry_.data());
        }
}

void DbTable::replaceEntries(const std::uint8_t* before, const std::uint8_t* record,
                             std::uint32_t block)
{
    for (const auto& index : indexes_) {
        if (!index->writable())
            continue;
        index->makeEntry(before, block, oldEntry_.data());
        if (record) {
            index->makeEntry(record, block, entry_.data());
            if (std::memcmp(entry_.data(), oldEntry_.data(), index->entryKeyLength()) == 0)
                continue;  // the hint may stay
        }
        index->remove(oldEntry_.data());
        if (record)
            index->insert(entry_.data());
    }
}

RowId DbTable::addRecord(const std::uint8_t* record)
{
    Place place;
    if (keyed())
        place = chain_->insert(chain_->lowerBound(record, header_.keyLength()), record);
    else
        place = chain_->append(record);
    const std::uint32_t block = chain_->blockAt(place.at);
    addEntries(record, block);
    noteChange();
    return keyed() ? names().added(record, block) : std::uint64_t{block} << 16 | (place.slot + 1);
}

void DbTable::changeRecord(RowId row, Place place, const std::uint8_t* before,
                           const std::uint8_t* record)
{
    if (std::memcmp(before, record, header_.keyLength()) == 0) {
        chain_->overwrite(place, record);
    } else {
        chain_->remove(place);
        place = chain_->insert(chain_->lowerBound(record, header_.keyLength()), record);
        names().renamed(row, before, record, chain_->blockAt(place.at));
    }
    replaceEntries(before, record, chain_->blockAt(place.at));
    noteChange();
}

void DbTable::removeRecord(Place place, const std::uint8_t* before)
{
    chain_->remove(place);
    replaceEntries(before, nullptr, 0);
    names().removed(before);
    noteChange();
}

}  // namespace velnor::paradox
