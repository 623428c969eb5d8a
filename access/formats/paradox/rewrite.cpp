#include "access/formats/paradox/rewrite.h"

#include <algorithm>
#include <array>
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

/// The file that tells that all others of the folder are whole.
std::string markOf(const std::string& folder)
{
    return paths::join(folder, "complete");
}

/// The mark goes first: without it nothing of the rest is ever moved.
void clearFolder(FileSystem& files, const std::string& folder)
{
    if (files.fileExists(markOf(folder))) {
        files.remove(markOf(folder));
        files.syncFolder(folder);
    }
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

bool hasLongFields(FileSystem& files, const std::string& path)
{
    constexpr std::size_t kFieldCountAt = 0x21, kVersionAt = 0x39, kSecondHeaderEnd = 0x78;
    std::array<std::uint8_t, kSecondHeaderEnd + 2 * 255> head{};
    files.open(path, OpenMode::Read)->readAt(0, head);
    const std::size_t types = head[kVersionAt] >= 5 ? kSecondHeaderEnd : kFirstHeader;
    for (std::size_t i = 0; i < head[kFieldCountAt]; ++i) {
        const TypeInfo* type = typeInfo(head[types + 2 * i]);
        if (type && type->isLong)
            return true;
    }
    return false;
}

/// Files that the table has no longer: indexes made for its fields as they were before, the primary
/// index of a table that has no key now, the long values of one that has no such field.
void removeOldFiles(FileSystem& files, const std::string& path)
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
    if (const Companion* values = findCompanion(all, "MB"); values && !hasLongFields(files, path))
        files.remove(values->path);
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

/// An index of the old table, to be made for the new one: blind to case or not, as it was.
struct KeptIndex {
    std::vector<int> fields;  ///< positions in the old table
    std::uint8_t options = 0;
    std::string extension;
    std::string label;  ///< empty: named for its only field
};

std::vector<KeptIndex> keptIndexes(DbTable& table)
{
    std::vector<KeptIndex> all;
    for (const auto& index : table.indexes()) {
        if (!index->kept())
            continue;
        if (!index->trouble().empty())
            throw EngineError(EngineErrorNumber::IndexNotMaintained,
                              "The index " + index->name() +
                                  " cannot be kept right: " + index->trouble() + ".");
        KeptIndex kept;
        for (const std::size_t n : index->fields())
            kept.fields.push_back(static_cast<int>(n));
        kept.options = index->header().options;
        if (index->descending())
            kept.options |= kDescending;
        kept.extension = index->extension();
        if (index->header().isGroup())
            kept.label = index->name();
        all.push_back(std::move(kept));
    }
    return all;
}

void makeAgain(DbTable& made, const KeptIndex& index, const std::vector<int>& sources)
{
    std::vector<std::size_t> fields;
    for (const int n : index.fields)
        fields.push_back(static_cast<std::size_t>(std::find(sources.begin(), sources.end(), n) -
                                                  sources.begin()));
    const std::string extension = index.label.empty()
                                      ? singleExtension('X', static_cast<unsigned>(fields[0] + 1))
                                      : index.extension;
    made.makeIndex(extension, newIndexHeader(made.header(), fields, index.options, index.label,
                                             made.name() + "." + extension));
}

/// Long values that a record names in the old MB file, stored in the new one.
void moveLongValues(DbTable& from, DbTable& to, std::uint8_t* record)
{
    std::string bytes, why;
    for (const StoredField& field : to.header().fields) {
        if (!field.isLong())
            continue;
        std::uint8_t* place = record + field.offset + field.leader();
        const LongPointer pointer = LongPointer::read(place);
        if (pointer.length <= field.leader())
            continue;
        if (!from.mb()->read(pointer, bytes, why))
            throw EngineError(EngineErrorNumber::Corrupt,
                              "A value of the field " + field.name + " in " + from.path() +
                                  " is damaged (" + why + "): the fields stay as they are.");
        to.mb()
            ->store({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()})
            .write(place);
    }
}

void copyRecords(DbTable& from, DbTable& to, const std::vector<int>& sources, bool newValues)
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
            if (newValues)
                moveLongValues(from, to, record.data());
            to.addRecord(record.data());
            if (to.pendingBytes() > kBytesBetweenCommits)
                to.commit();
        }
    }
}

bool losesLongField(const FileHeader& before, const std::vector<int>& sources)
{
    for (std::size_t i = 0; i < before.fields.size(); ++i)
        if (before.fields[i].isLong() &&
            std::find(sources.begin(), sources.end(), static_cast<int>(i)) == sources.end())
            return true;
    return false;
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
    for (const Companion& companion : companionsOf(files, made))
        files.rename(companion.path, paths::join(home, paths::fileName(companion.path)));
    removeOldFiles(files, path);
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
        makeFile(files, markOf(folder), {});
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
    const bool moves = files.fileExists(markOf(folder)) &&
                       !files.fileExists(paths::join(folder, paths::fileName(path)));
    if (!moves) {
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
    header.blockBytes = std::max(header.blockBytes, blockBytesFor(header.recordSize));
    if (header.keyFields)
        makeKeyed(header, header.keyFields);
    const NewChecks checks(table, header, sources);
    const bool newValues = table.mb() && losesLongField(table.header(), sources);
    const std::vector<KeptIndex> indexes = keptIndexes(table);
    makeInNewFolder(files, path, [&](const std::string& newPath) {
        TableOpening opening = table.opening();
        opening.path = newPath;
        createTableFiles(files, opening.path, header);
        {
            DbTable made(opening);
            copyRecords(table, made, sources, newValues);
            made.noteChange();
            made.commit();
            for (const KeptIndex& index : indexes)
                makeAgain(made, index, sources);
        }
        if (table.mb() && !newValues)  // 4.: it was made only so that the new table could be opened
            files.remove(paths::withExtension(opening.path, "MB"));
        if (checks.any())
            makeFile(files, paths::withExtension(opening.path, "VAL"), checks.bytes());
    });
    table.withFilesClosed([&] { moveInto(files, path); });
}

}  // namespace velnor::paradox
