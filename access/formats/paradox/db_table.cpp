#include "access/formats/paradox/db_table.h"

#include <algorithm>
#include <array>
#include <utility>

#include "access/engine_error.h"
#include "access/formats/paradox/cipher.h"
#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

enum Rank { kRecordsRank = 1, kIndexRank = 2 };

PageFileOptions recordFileOptions()
{
    PageFileOptions options;
    options.pageSize = 4096;
    options.cacheBytes = 1u << 20;  // blocks in use are kept by BlockFile
    options.rank = kRecordsRank;
    return options;
}

PageFileOptions indexFileOptions()
{
    PageFileOptions options;
    options.pageSize = 4096;
    options.cacheBytes = 1u << 20;
    options.rank = kIndexRank;
    return options;
}

}  // namespace

/// The MB file of a table with a password.
class DbTable::MbCodec final : public PageCodec {
public:
    explicit MbCodec(std::uint32_t key) : key_(key) {}
    void decode(std::uint32_t, std::span<std::uint8_t> bytes) const override
    {
        decipherLongValues(bytes, key_);
    }
    void encode(std::uint32_t, std::span<std::uint8_t> bytes) const override
    {
        encipherLongValues(bytes, key_);
    }

private:
    std::uint32_t key_;
};

DbTable::DbTable(const TableOpening& opening) : opening_(opening)
{
    open();
}

DbTable::~DbTable() = default;

void DbTable::open()
{
    files_ = std::make_unique<FileSet>(*opening_.files, opening_.path, recordFileOptions(),
                                       opening_.readOnly);
    try {
        header_ = readHeader(files_->main(), opening_.codePage);
        if (!header_.isTable())
            throw EngineError(EngineErrorNumber::UnexpectedFormat, "it is an index, not a table");
        if (!keyed())
            header_.keyFields = 0;
        checkPassword();
    } catch (const EngineError& error) {
        throw EngineError(error.code(), opening_.path + ": " + error.what());
    }
    companions_ = companionsOf(*opening_.files, opening_.path);
    blocks_ = std::make_unique<BlockFile>(files_->main(), header_);
    openMb();
    openChecks();
    ++generation_;
}

void DbTable::close()
{
    indexes_.clear();
    troubles_.clear();
    indexesOpen_ = writing_ = changed_ = makesCompanions_ = false;
    tree_.reset();
    treeBlocks_.reset();
    chain_.reset();
    names_.reset();
    mb_.reset();
    checks_.reset();
    blocks_.reset();
    files_.reset();
    ++generation_;
}

void DbTable::checkPassword() const
{
    if (header_.cipherKey == 0)
        return;
    const bool known = std::any_of(
        opening_.passwords.begin(), opening_.passwords.end(), [&](const std::string& password) {
            std::string bytes;
            header_.codePage->encode(password, bytes);
            return !bytes.empty() && keyOfPassword(bytes) == header_.cipherKey;
        });
    if (!known)
        throw EngineError(EngineErrorNumber::InvalidPassword, "not a valid password");
}

void DbTable::openMb()
{
    if (!header_.hasLongFields())
        return;
    const Companion* file = findCompanion(companions_, "MB");
    if (!file)
        return header_.oddities.push_back("the MB file is missing");
    PageFileOptions options = mbFileOptions();
    if (header_.cipherKey) {
        mbCodec_ = std::make_unique<MbCodec>(header_.cipherKey);
        options.codec = mbCodec_.get();
    }
    mb_.emplace(set().companion(file->path, options));
}

void DbTable::openChecks()
{
    const Companion* file = findCompanion(companions_, "VAL");
    constexpr std::uint64_t kLongest = 1u << 20;
    if (!file || header_.version < 5)
        return;
    try {
        const auto opened = opening_.files->open(file->path, OpenMode::Read);
        std::vector<std::uint8_t> bytes(
            static_cast<std::size_t>(std::min<std::uint64_t>(opened->size(), kLongest)));
        opened->readAt(0, bytes);
        std::vector<std::uint16_t> lengths;
        for (const StoredField& field : header_.fields)
            lengths.push_back(field.length);
        checks_ = readValFile(bytes, lengths);
    } catch (const RunError&) {
        header_.oddities.push_back("the VAL file cannot be read");
    }
    // Rules that were made for other fields say nothing about these.
    if (checks_ && checks_->structureStamp != header_.structureStamp)
        checks_.reset();
}

/// Nothing but a failure while the files were opened again can have closed them.
FileSet& DbTable::set() const
{
    if (!files_)
        throw EngineError(EngineErrorNumber::CannotOpen,
                          opening_.path + " could not be kept open.");
    return *files_;
}

PageFile& DbTable::companion(const std::string& path, bool create)
{
    makesCompanions_ = makesCompanions_ || create;
    return set().companion(path, indexFileOptions(), create);
}

std::string DbTable::name() const
{
    return std::string(paths::baseName(opening_.path));
}

RecordChain& DbTable::chain()
{
    set();
    if (!chain_) {
        const std::span<const StoredField> keys(header_.fields.data(), header_.keyFields);
        chain_ = std::make_unique<RecordChain>(*blocks_, header_.keyLength(),
                                               keyOrderOf(header_, keys, false));
    }
    return *chain_;
}

RecordNames& DbTable::names()
{
    if (!names_)
        names_.emplace(header_.keyLength(), chain().ordered());
    return *names_;
}

std::vector<std::unique_ptr<SecondaryIndex>>& DbTable::indexes()
{
    openIndexes();
    return indexes_;
}

const std::vector<std::pair<std::string, std::string>>& DbTable::indexTroubles()
{
    openIndexes();
    return troubles_;
}

void DbTable::openIndexes()
{
    if (indexesOpen_)
        return;
    for (const Companion& file : companions_) {
        if (file.kind != CompanionKind::Index)
            continue;
        const std::string fileName(paths::fileName(file.path));
        try {
            indexes_.push_back(std::make_unique<SecondaryIndex>(
                header_, file.extension, companion(file.path), opening_.codePage));
        } catch (const EngineError& error) {
            troubles_.emplace_back(fileName, error.what());
        }
    }
    indexesOpen_ = true;
}

std::string DbTable::whyNotUpdatable()
{
    if (header_.writeProtected)
        return "The table is protected against writing.";
    if (header_.auxPasswords)
        return "The table has auxiliary passwords, so it is only read.";
    if (mbMissing())
        return "Its MB file is missing, so its records are only read.";
    return {};
}

RowId DbTable::rowAt(Place place)
{
    const std::uint32_t block = chain().blockAt(place.at);
    if (!keyed())
        return std::uint64_t{block} << 16 | (place.slot + 1);
    return names().nameOf(chain_->record(place), block);
}

std::optional<Place> DbTable::placeOfHash(RowId row, const RecordNames::Hint& hint)
{
    const auto fits = [&](const std::uint8_t* key) {
        return names_->hashFits(key, hint.hash) && names_->isNamed(key, row);
    };
    const auto inBlock = [&](std::size_t at) -> std::optional<Place> {
        const std::uint8_t* bytes = blocks_->block(chain_->blockAt(at)) + kBlockHead;
        for (std::uint32_t slot = 0; slot < chain_->recordsAt(at); ++slot)
            if (fits(bytes + slot * header_.recordSize))
                return Place{static_cast<std::uint32_t>(at), slot};
        return std::nullopt;
    };
    const auto at = chain_->positionOf(hint.block);
    if (at)
        if (const auto found = inBlock(*at))
            return found;
    for (std::size_t other = 0; other < chain_->blocks(); ++other)  // its block was split
        if (const auto found = inBlock(other))
            return found;
    return std::nullopt;
}

std::optional<Place> DbTable::placeOf(RowId row)
{
    chain();
    if (!keyed()) {
        const auto at = chain_->positionOf(static_cast<std::uint32_t>(row >> 16));
        const std::uint32_t slot = static_cast<std::uint32_t>(row & 0xFFFF) - 1;
        if (!at || slot >= chain_->recordsAt(*at))
            return std::nullopt;
        return Place{static_cast<std::uint32_t>(*at), slot};
    }
    const RecordNames::Hint hint = names().hintOf(row);
    if (hint.key.empty())
        return hint.block ? placeOfHash(row, hint) : std::nullopt;
    const auto* key = reinterpret_cast<const std::uint8_t*>(hint.key.data());
    const auto found = chain_->find(key, hint.key.size());
    return found && names_->isNamed(key, row) ? found : std::nullopt;
}

std::optional<Place> DbTable::placeOfKey(const std::uint8_t* key, std::uint32_t hintBlock)
{
    RecordChain& records = chain();
    const std::size_t length = header_.keyLength();
    if (records.ordered())
        return records.find(key, length);
    if (const auto at = records.positionOf(hintBlock))
        if (const auto found = records.findInBlock(*at, key, length))
            return found;
    return records.find(key, length);
}

void DbTable::noteChange()
{
    changed_ = true;
    ++generation_;
}

void DbTable::setLastNumber(std::uint32_t number)
{
    header_.lastNumber = number;
    changed_ = true;
}

std::size_t DbTable::pendingBytes() const
{
    if (!files_)
        return 0;
    std::size_t bytes = files_->pendingBytes() + blocks_->changedBytes();
    for (const auto& index : indexes_)
        bytes += index->changedBytes();
    return bytes + bytes / 4;  // a commit needs room beside the pages: the journal's, the trees'
}

/// 3. The next stamp is one under which no index that stays behind would look as old as the table.
void DbTable::stamp()
{
    for (int tries = 0; tries < 255; ++tries) {
        header_.dataStamp = nextStamp(header_.dataStamp);
        const std::uint8_t link = linkOf(header_.dataStamp, header_.sortByte);
        const bool mistaken = std::any_of(indexes_.begin(), indexes_.end(), [&](const auto& index) {
            return !index->writable() && index->header().parentLink == link;
        });
        if (!mistaken)
            return;
    }
}

void DbTable::commit()
{
    if (!changed_ || !files_)
        return;
    try {
        stamp();
        if (tree_) {
            treeHeader_.link = linkOf(header_.dataStamp, header_.sortByte);
            tree_->store();
        }
        for (const auto& index : indexes_)
            if (index->writable())
                index->store();
        blocks_->store();
        files_->commit();
    } catch (...) {
        rollback();
        throw;
    }
    changed_ = false;
    if (std::exchange(makesCompanions_, false))
        companions_ = companionsOf(*opening_.files, opening_.path);
}

/// 4.
void DbTable::rollback()
{
    if (!files_)
        return;
    files_->rollback();
    close();
    open();
}

}  // namespace velnor::paradox
