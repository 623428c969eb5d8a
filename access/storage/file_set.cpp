// The files of one store together: opening, commit, undoing.
#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "access/engine_error.h"
#include "access/storage/page_file_state.h"
#include "access/storage/replace_set.h"
#include "access/storage/undo_journal.h"
#include "platform/paths.h"

namespace velnor {

namespace {

EngineErrorNumber engineNumber(const RunError& error)
{
    switch (error.code()) {
    case RunErrorNumber::FileNotFound:
        return EngineErrorNumber::FileNotFound;
    case RunErrorNumber::PathNotFound:
    case RunErrorNumber::DeviceUnavailable:
    case RunErrorNumber::BadFileName:
        return EngineErrorNumber::PathInvalid;
    case RunErrorNumber::DiskFull:
        return EngineErrorNumber::DiskFull;
    default:
        return EngineErrorNumber::CannotOpen;
    }
}

std::unique_ptr<File> openFile(FileSystem& files, std::string_view path, OpenMode mode)
{
    try {
        return files.open(path, mode);
    } catch (const RunError& error) {
        throw EngineError(engineNumber(error), error.what());
    }
}

void lockFile(File& file, std::string_view path, LockKind kind)
{
    if (!file.tryLock(kind))
        throw EngineError(EngineErrorNumber::FileInUse,
                          std::string(path) + " is in use by somebody else");
}

/// The journal that must be undone before the files can be trusted.
struct OldJournal {
    std::unique_ptr<File> file;
    JournalHead head;
};

std::optional<OldJournal> findJournal(FileSystem& files, std::string_view mainPath, OpenMode mode)
{
    const std::string path = journalPath(mainPath);
    if (!files.fileExists(path))
        return std::nullopt;
    OldJournal found{openFile(files, path, mode), {}};
    auto head = readJournalHead(*found.file, mainPath);
    if (!head)
        return std::nullopt;
    if (head->owner.livesElsewhere() || head->kind == JournalHead::Kind::Replace)
        throw EngineError(EngineErrorNumber::FileInUse,
                          std::string(mainPath) + " is being written by somebody else");
    found.head = std::move(*head);
    return found;
}

/// The main file is locked. Undoing comes first, then the cut: 2 read backwards.
bool undoOldJournal(FileSystem& files, std::string_view mainPath)
{
    const auto journal = findJournal(files, mainPath, OpenMode::ReadWrite);
    if (!journal)
        return false;
    try {
        undoFiles(files, mainPath, *journal->file, journal->head);
        journal->file->resize(0);
        journal->file->sync();
        files.remove(journalPath(mainPath));
    } catch (const RunError& error) {
        throw EngineError(engineNumber(error), error.what());
    }
    return true;
}

/// Opens and locks the main file, with no journal standing.
std::unique_ptr<File> openMain(FileSystem& files, std::string_view path, bool readOnly)
{
    finishReplacement(files, path);
    auto file = openFile(files, path, readOnly ? OpenMode::Read : OpenMode::ReadWrite);
    lockFile(*file, path, readOnly ? LockKind::Shared : LockKind::Exclusive);
    if (!readOnly) {
        undoOldJournal(files, path);
        return file;
    }
    if (!findJournal(files, path, OpenMode::Read))
        return file;
    file.reset();
    recoverFiles(files, path);
    file = openFile(files, path, OpenMode::Read);
    lockFile(*file, path, LockKind::Shared);
    if (findJournal(files, path, OpenMode::Read))
        throw EngineError(EngineErrorNumber::FileInUse,
                          std::string(path) + " is being written by somebody else");
    return file;
}

}  // namespace

bool recoverFiles(FileSystem& files, std::string_view mainPath)
{
    if (finishReplacement(files, mainPath))
        return true;
    if (!findJournal(files, mainPath, OpenMode::Read))
        return false;
    const auto main = openFile(files, mainPath, OpenMode::ReadWrite);
    lockFile(*main, mainPath, LockKind::Exclusive);
    return undoOldJournal(files, mainPath);
}

struct FileSet::State {
    FileSystem& files;
    std::string path;
    FileOwner owner;
    bool undone = true;
    std::vector<std::unique_ptr<PageFile>> pageFiles;  // the main file first
    std::vector<StoredFile*> stored;
    std::unique_ptr<UndoJournal> journal;  // stands while pages of no commit are on the disk
    std::vector<StoredFile*> kept;         // what it keeps, by its numbers
    std::vector<StoredFile*> made;         // files since the last commit: the journal knows them
    bool savepoint = false;

    PageFile& add(std::unique_ptr<PageFile> pageFile, StoredFile& file)
    {
        stored.push_back(&file);
        pageFiles.push_back(std::move(pageFile));
        return *pageFiles.back();
    }
    std::vector<StoredFile*> changedFiles() const;
    void commit(const std::vector<StoredFile*>& changed);
    void openJournal(std::vector<StoredFile*> keeps);
    void saveOld();
    void makeFiles(const std::vector<StoredFile*>& changed);
    void writeFiles(const std::vector<StoredFile*>& changed);
    void spill();
    void keepOld();
    void putBack();
    void dropChanges();
    template <class Work> void orDropChanges(Work work);
};

/// 4. In the order of their rank.
std::vector<StoredFile*> FileSet::State::changedFiles() const
{
    std::vector<StoredFile*> changed;
    std::copy_if(stored.begin(), stored.end(), std::back_inserter(changed),
                 [](const StoredFile* file) { return file->changed(); });
    std::stable_sort(changed.begin(), changed.end(), [](const StoredFile* a, const StoredFile* b) {
        return a->rank() < b->rank();
    });
    return changed;
}

void FileSet::State::openJournal(std::vector<StoredFile*> keeps)
{
    std::vector<FileBefore> before;
    for (const StoredFile* file : keeps)
        before.push_back({file->path(), file->savedSize(), !file->onDisk()});
    for (const FileBefore& file : before)
        if (file.missing && files.exists(file.path))
            throw EngineError(EngineErrorNumber::CannotOpen,
                              file.path + " was made by another program");
    journal = std::make_unique<UndoJournal>(files, path, std::move(before));
    kept = std::move(keeps);
}

/// 1.
void FileSet::State::saveOld()
{
    for (std::uint32_t i = 0; i < kept.size(); ++i)
        if (kept[i]->changed())
            kept[i]->saveOld(*journal, i);
    journal->seal();
}

void FileSet::State::commit(const std::vector<StoredFile*>& changed)
{
    if (!undone) {
        stored.front()->writeEarly();
        stored.front()->cutOff();
        return;
    }
    bool sealed = journal != nullptr;  // 6.
    if (!sealed)
        openJournal(changed);
    try {
        saveOld();
        sealed = true;
        writeFiles(changed);
    } catch (const std::exception&) {
        if (journal->isCut())
            owner.broken = true;  // which state a crash would leave is open: either is whole
        else if (sealed)
            putBack();
        else
            journal->remove();
        journal.reset();
        throw;
    }
    journal->remove();
    journal.reset();
    made.clear();
}

void FileSet::State::makeFiles(const std::vector<StoredFile*>& changed)
{
    for (StoredFile* file : changed)
        if (!file->onDisk()) {
            made.push_back(file);
            file->make(files);
        }
}

void FileSet::State::writeFiles(const std::vector<StoredFile*>& changed)
{
    makeFiles(changed);
    for (StoredFile* file : changed)
        file->write();
    // Files become shorter only when nothing can run out of room any more: putting the bytes back
    // would need that room. Until then no count points behind an end, either (4).
    for (StoredFile* file : changed)
        file->cutOff();
    if (!made.empty())
        files.syncFolder(paths::folder(path));
    journal->cut();
}

/// 6. What was written is in the journal's keeping before the pages are.
void FileSet::State::spill()
{
    const std::vector<StoredFile*> changed = changedFiles();
    const bool may = std::all_of(stored.begin(), stored.end(),
                                 [](const StoredFile* file) { return file->mayWriteEarly(); });
    if (changed.empty() || !may)
        return;
    if (undone)
        keepOld();
    makeFiles(changed);
    for (StoredFile* file : changed)
        file->writeEarly();
}

/// The journal names every file of the set: each of them may come to be changed before the commit.
void FileSet::State::keepOld()
{
    const bool first = !journal;
    if (first)
        openJournal(stored);
    try {
        saveOld();
    } catch (const std::exception&) {
        if (first) {  // nothing was written on its word yet
            journal->remove();
            journal.reset();
        }
        throw;
    }
}

/// 5. If the disk refuses even that, the journal stays for the next opening.
void FileSet::State::putBack()
{
    try {
        journal->undo();
        journal->remove();
    } catch (const std::exception&) {
        owner.broken = true;
    }
    for (StoredFile* file : made)
        file->unmake();
    made.clear();
}

void FileSet::State::dropChanges()
{
    ++owner.generation;
    if (journal)
        putBack();
    journal.reset();
    if (!undone && stored.front()->wroteEarly())
        owner.broken = true;
    for (StoredFile* file : stored)
        file->rollback();
}

template <class Work> void FileSet::State::orDropChanges(Work work)
{
    try {
        work();
    } catch (const RunError& error) {
        dropChanges();
        throw EngineError(error.code() == RunErrorNumber::DiskFull ? EngineErrorNumber::DiskFull
                                                                   : EngineErrorNumber::CannotOpen,
                          path + " could not be written: " + error.what());
    } catch (const std::exception&) {
        dropChanges();
        throw;
    }
}

FileSet::FileSet(FileSystem& files, std::string_view mainPath, const PageFileOptions& options,
                 bool readOnly)
    : state_(new State{files, std::string(mainPath), {0, readOnly, false}, options.undone, {}, {}, {}, {}, {}, false})
{
    auto state = std::make_unique<PageFile::State>(state_->owner, state_->path, options,
                                                   openMain(files, mainPath, readOnly));
    StoredFile& file = *state;
    state_->add(std::unique_ptr<PageFile>(new PageFile(std::move(state))), file);
}

FileSet::~FileSet()
{
    if (state_->journal)
        state_->putBack();
}

PageFile& FileSet::main()
{
    return *state_->pageFiles.front();
}

PageFile& FileSet::companion(std::string_view path, const PageFileOptions& options, bool create)
{
    State& set = *state_;
    if (!paths::sameName(paths::folder(path), paths::folder(set.path)))
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          std::string(path) + " is not in the folder of " + set.path);
    const auto known = std::find_if(set.stored.begin(), set.stored.end(), [&](StoredFile* file) {
        return paths::sameName(file->path(), path);
    });
    const bool make = create && !set.owner.readOnly;
    if (known != set.stored.end() && ((*known)->onDisk() || (*known)->toBeMade() || make)) {
        if (!(*known)->onDisk())
            (*known)->wantMade();
        return *set.pageFiles[static_cast<std::size_t>(known - set.stored.begin())];
    }
    if (set.journal)
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          std::string(path) + " comes to a set whose pages were written early");
    std::unique_ptr<File> file;
    if (!make || set.files.fileExists(path))
        file = openFile(set.files, path, set.owner.readOnly ? OpenMode::Read : OpenMode::ReadWrite);
    auto state =
        std::make_unique<PageFile::State>(set.owner, std::string(path), options, std::move(file));
    StoredFile& stored = *state;
    return set.add(std::unique_ptr<PageFile>(new PageFile(std::move(state))), stored);
}

bool FileSet::readOnly() const
{
    return state_->owner.readOnly;
}

const std::string& FileSet::path() const
{
    return state_->path;
}

void FileSet::commit()
{
    const std::vector<StoredFile*> changed = state_->changedFiles();
    if (changed.empty())
        return;
    state_->orDropChanges([&] { state_->commit(changed); });
    for (StoredFile* file : changed)
        file->changesAreSaved();
}

void FileSet::spill()
{
    state_->orDropChanges([&] { state_->spill(); });
}

void FileSet::rollback()
{
    state_->dropChanges();
}

std::size_t FileSet::pendingBytes() const
{
    std::size_t bytes = 0;
    for (const StoredFile* file : state_->stored)
        bytes += file->pendingBytes();
    return bytes;
}

FileSet::Savepoint::Savepoint(FileSet& set)
    : set_(std::exchange(set.state_->savepoint, true) ? nullptr : &set)
{
    if (set_)
        for (StoredFile* file : set_->state_->stored)
            file->beginSavepoint();
}

FileSet::Savepoint::~Savepoint()
{
    if (!set_)
        return;
    for (StoredFile* file : set_->state_->stored)
        file->endSavepoint();
    set_->state_->savepoint = false;
}

bool FileSet::Savepoint::goBack()
{
    bool changed = false;
    if (set_)
        for (StoredFile* file : set_->state_->stored)
            changed |= file->goBack();
    return changed;
}

std::uint64_t FileSet::generation() const
{
    return state_->owner.generation;
}

}  // namespace velnor
