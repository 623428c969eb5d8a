#include "access/formats/paradox/rewrite.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/paradox/new_table.h"
#include "access/formats/paradox/structure.h"
#include "access/formats/paradox/user_locks.h"
#include "access/formats/paradox/val_file.h"
#include "platform/paths.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kBytesBetweenCommits = 8u << 20;

std::string newFolderOf(const std::string& path)
{
    return path + "-new";
}

void clearFolder(FileSystem& files, const std::string& folder)
{
    for (const FileInfo& file : files.list(folder))
        if (!file.folder)
            files.remove(paths::join(folder, file.name));
    files.removeFolder(folder);
}

std::uint8_t byteOf(FileSystem& files, const std::string& path, std::uint64_t at)
{
    std::uint8_t byte = 0;
    files.open(path, OpenMode::Read)->readAt(at, {&byte, 1});
    return byte;
}

/// Index files that the table has no longer: those made for its fields as they were before, and the
/// primary index of a table that has no key now.
void removeOldIndexes(FileSystem& files, const std::string& path)
{
    constexpr std::uint64_t kKindAt = 0x04, kStructureStampAt = 0x2E;
    const std::uint8_t stamp = byteOf(files, path, kStructureStampAt);
    const bool keyed =
        byteOf(files, path, kKindAt) == static_cast<std::uint8_t>(FileKind::KeyedTable);
    const std::vector<Companion> all = companionsOf(files, path);
    for (const Companion& companion : all) {
        const bool oldTree = companion.kind == CompanionKind::PrimaryTree && !keyed;
        const bool oldIndex = companion.kind == CompanionKind::Index &&
                              byteOf(files, companion.path, kStructureStampAt) != stamp;
        if (!oldTree && !oldIndex)
            continue;
        if (const Companion* tree = findCompanion(all, "Y" + companion.extension.substr(1));
            oldIndex && tree)
            files.remove(tree->path);
        files.remove(companion.path);
    }
}

/// The checks of a table, for its new fields.
class NewChecks {
public:
    NewChecks(DbTable& table, const FileHeader& header, const std::vector<int>& sources)
    {
        const Companion* file = findCompanion(table.companions(), "VAL");
        if (!file)
            return;
        const bool appends =
            std::equal(sources.begin(),
                       sources.begin() + static_cast<std::ptrdiff_t>(table.header().fields.size()),
                       identity(table.header().fields.size()).begin());
        if (!table.checks()) {
            if (appends)
                return;
            refuse(table);
        }
        if (table.checks()->relations)
            refuse(table);
        const auto opened = table.opening().files->open(file->path, OpenMode::Read);
        old_.resize(static_cast<std::size_t>(opened->size()));
        opened->readAt(0, old_);
        make(*table.checks(), header, sources);
    }
    bool any() const { return !made_.empty(); }
    const std::vector<std::uint8_t>& bytes() const { return made_; }

private:
    static std::vector<int> identity(std::size_t count)
    {
        std::vector<int> all(count);
        for (std::size_t i = 0; i < count; ++i)
            all[i] = static_cast<int>(i);
        return all;
    }
    [[noreturn]] static void refuse(const DbTable& table)
    {
        throw EngineError(EngineErrorNumber::NotSupported,
                          "The checks of " + table.path() +
                              " (its VAL file) could not be kept: the fields stay as they are.");
    }
    void make(const ValFile& val, const FileHeader& header, const std::vector<int>& sources);

    std::vector<std::uint8_t> old_, made_;
};

void append16(std::vector<std::uint8_t>& to, std::size_t value)
{
    to.push_back(static_cast<std::uint8_t>(value));
    to.push_back(static_cast<std::uint8_t>(value >> 8));
}

void NewChecks::make(const ValFile& val, const FileHeader& header, const std::vector<int>& sources)
{
    constexpr std::size_t kHead = 0x35;
    const std::size_t oldFooter = old_[9] | std::size_t{old_[10]} << 8 |
                                  std::size_t{old_[11]} << 16 | std::size_t{old_[12]} << 24;
    made_.assign(old_.begin(), old_.begin() + kHead);
    std::size_t count = 0;
    for (const FieldCheck& check : val.checks) {
        const auto at = std::find(sources.begin(), sources.end(), static_cast<int>(check.field));
        if (at == sources.end())
            continue;
        const std::size_t start = made_.size();
        made_.insert(made_.end(), check.stored.begin(), check.stored.end());
        made_[start] = static_cast<std::uint8_t>(at - sources.begin());
        ++count;
    }
    const std::size_t footer = made_.size();
    made_[0] = header.structureStamp;
    made_[2] = static_cast<std::uint8_t>(count);
    for (std::size_t i = 0; i < 4; ++i)
        made_[9 + i] = static_cast<std::uint8_t>(footer >> (8 * i));
    append16(made_, header.fields.size());
    for (std::size_t i = 0; i < 4; ++i)
        made_.push_back(old_[oldFooter + 2 + i]);
    for (const StoredField& field : header.fields)
        append16(made_, field.number);
    for (const StoredField& field : header.fields) {
        made_.push_back(static_cast<std::uint8_t>(field.code));
        made_.push_back(field.sizeByte);
    }
    std::string name = header.storedTableName.substr(0, storedNameBytes(val.version) - 1);
    name.resize(storedNameBytes(val.version), '\0');
    made_.insert(made_.end(), name.begin(), name.end());
    for (const StoredField& field : header.fields) {
        made_.insert(made_.end(), field.stored.begin(), field.stored.end());
        made_.push_back(0);
    }
}

/// The indexes of the old table as definitions for the new one.
std::vector<IndexDef> keptIndexes(DbTable& table)
{
    std::vector<IndexDef> defs;
    for (const auto& index : table.indexes()) {
        if (!index->kept())
            continue;
        IndexDef def;
        def.name = index->name();
        def.unique = index->unique();
        for (const std::size_t n : index->fields())
            def.fields.push_back({table.header().fields[n].name, index->descending()});
        defs.push_back(std::move(def));
    }
    return defs;
}

void copyRecords(DbTable& from, DbTable& to, const std::vector<int>& sources)
{
    RecordChain& chain = from.chain();
    const FileHeader& before = from.header();
    const FileHeader& header = to.header();
    std::vector<std::uint8_t> record(header.recordSize);
    for (std::uint32_t at = 0; at < chain.blocks(); ++at) {
        for (std::uint32_t slot = 0; slot < chain.recordsAt(at); ++slot) {
            const std::uint8_t* old = chain.record({at, slot});
            std::fill(record.begin(), record.end(), std::uint8_t{0});
            for (std::size_t i = 0; i < sources.size(); ++i)
                if (sources[i] >= 0)
                    std::memcpy(record.data() + header.fields[i].offset,
                                old + before.fields[static_cast<std::size_t>(sources[i])].offset,
                                header.fields[i].length);
            to.testRecord(record.data(), nullptr);
            to.addRecord(record.data());
        }
        if (to.pendingBytes() > kBytesBetweenCommits)
            to.commit();
    }
}

}  // namespace

/// 2. of structure.h: the DB file first. After a crash it goes on where it was.
void moveInto(FileSystem& files, const std::string& path)
{
    const std::string folder = newFolderOf(path), home(paths::folder(path));
    const std::string made = paths::join(folder, paths::fileName(path));
    if (files.fileExists(made)) {
        files.rename(made, path);
        files.syncFolder(home);
    }
    for (const Companion& companion : companionsOf(files, made)) {
        const std::string to = paths::join(home, paths::fileName(companion.path));
        if (companion.kind == CompanionKind::LongValues && files.fileExists(to))
            files.remove(companion.path);  // 4.: made only so that the new table could be opened
        else
            files.rename(companion.path, to);
    }
    removeOldIndexes(files, path);
    files.syncFolder(home);
    clearFolder(files, folder);
}

void makeInNewFolder(FileSystem& files, const std::string& path,
                     const std::function<void(const std::string&)>& make)
{
    const std::string folder = newFolderOf(path);
    if (files.info(folder))
        clearFolder(files, folder);
    files.makeFolder(folder);
    try {
        make(paths::join(folder, paths::fileName(path)));
        files.syncFolder(folder);
    } catch (...) {
        clearFolder(files, folder);
        throw;
    }
}

void finishStructureChange(FileSystem& files, const std::string& path, bool readOnly)
{
    const std::string folder = newFolderOf(path);
    const auto left = files.info(folder);
    if (!left || !left->folder)
        return;
    if (files.fileExists(paths::join(folder, paths::fileName(path)))) {
        if (!readOnly)
            clearFolder(files, folder);
        return;
    }
    try {
        moveInto(files, path);
    } catch (const RunError&) {
        if (!readOnly)
            throw;
    }
}

void clearLongField(DbTable& table, std::size_t n)
{
    table.prepareWriting();
    RecordChain& chain = table.chain();
    const StoredField& field = table.header().fields[n];
    std::vector<std::uint8_t> record(table.header().recordSize);
    for (std::uint32_t at = 0; at < chain.blocks(); ++at) {
        for (std::uint32_t slot = 0; slot < chain.recordsAt(at); ++slot) {
            const Place place{at, slot};
            const std::uint8_t* bytes = chain.record(place);
            std::copy_n(bytes, record.size(), record.begin());
            table.mb()->release(LongPointer::read(bytes + field.offset + field.leader()));
            std::fill_n(record.begin() + field.offset, field.length, std::uint8_t{0});
            chain.overwrite(place, record.data());
            table.noteChange();
        }
        if (table.pendingBytes() > kBytesBetweenCommits)
            table.commit();
    }
    table.commit();
}

void rewriteTable(DbTable& table, FileHeader header, const std::vector<int>& sources)
{
    table.prepareWriting();
    table.commit();
    FileSystem& files = *table.opening().files;
    const std::string path = table.path();
    header.structureStamp = nextStamp(header.structureStamp);
    header.dataStamp = nextStamp(header.structureStamp);
    header.records = 0;
    header.usedBlocks = header.fileBlocks = header.firstBlock = header.lastBlock = 0;
    header.firstFree = 0;
    header.storedTableName = paths::fileName(path);
    layOutHeader(header);
    if (header.keyFields)
        makeKeyed(header, header.keyFields);
    header.blockBytes = std::max(header.blockBytes, blockBytesFor(header.recordSize));
    const NewChecks checks(table, header, sources);
    const std::vector<IndexDef> indexes = keptIndexes(table);
    makeInNewFolder(files, path, [&](const std::string& newPath) {
        TableOpening opening = table.opening();
        opening.path = newPath;
        createTableFiles(files, opening.path, header);
        {
            DbTable made(opening);
            copyRecords(table, made, sources);
            made.noteChange();
            made.commit();
            for (const IndexDef& index : indexes)
                addTableIndex(made, index);
        }
        if (checks.any())
            files.open(paths::withExtension(opening.path, "VAL"), OpenMode::Replace)
                ->writeAt(0, checks.bytes());
    });
    table.withFilesClosed([&] { moveInto(files, path); });
}

}  // namespace velnor::paradox
