#include "access/storage/replace_set.h"

#include <algorithm>

#include "access/engine_error.h"
#include "platform/paths.h"

namespace velnor {
namespace {

void removeIfThere(FileSystem& files, const std::string& path)
{
    if (files.fileExists(path))
        files.remove(path);
}

/// 3. The journal is locked, so nobody else is at it.
void carryOut(FileSystem& files, std::string_view mainPath, const JournalHead& head, File& journal)
{
    for (const FileBefore& file : head.files) {
        const std::string sibling = SetReplacement::siblingOf(file.path);
        if (file.missing)
            removeIfThere(files, file.path);
        else if (files.fileExists(sibling))
            files.rename(sibling, file.path);
    }
    files.syncFolder(paths::folder(mainPath));
    journal.resize(0);
    journal.sync();
}

[[noreturn]] void failed(std::string_view mainPath, const RunError& error)
{
    throw EngineError(error.code() == RunErrorNumber::DiskFull ? EngineErrorNumber::DiskFull
                                                               : EngineErrorNumber::CannotOpen,
                      std::string(mainPath) + " could not be written: " + error.what());
}

}  // namespace

SetReplacement::SetReplacement(FileSystem& files, std::string_view mainPath)
    : files_(files), mainPath_(mainPath)
{
    head_.kind = JournalHead::Kind::Replace;
}

SetReplacement::~SetReplacement()
{
    if (decided_)
        return;
    for (const FileBefore& file : head_.files) {
        try {
            removeIfThere(files_, siblingOf(file.path));
        } catch (const RunError&) {
            // it is removed by the next replacement
        }
    }
}

void SetReplacement::enter(std::string_view path, bool goes)
{
    const auto known =
        std::find_if(head_.files.begin(), head_.files.end(),
                     [&](const FileBefore& file) { return paths::sameName(file.path, path); });
    if (known == head_.files.end())
        head_.files.push_back({std::string(path), 0, goes});
    else
        known->missing = goes;
}

void SetReplacement::replace(std::string_view path)
{
    enter(path, false);
    removeIfThere(files_, siblingOf(path));
    removeIfThere(files_, journalPath(siblingOf(path)));
}

void SetReplacement::remove(std::string_view path)
{
    enter(path, true);
}

/// 2.
void SetReplacement::write(File& journal)
{
    if (!journal.tryLock(LockKind::Exclusive))
        throw EngineError(EngineErrorNumber::FileInUse, mainPath_ + " is in use by somebody else");
    head_.mark = newJournalMark();
    head_.owner = JournalOwner::thisProcess();
    decided_ = true;
    journal.writeAt(0, journalHeadBytes(head_, mainPath_));
    journal.sync();
    files_.syncFolder(paths::folder(mainPath_));
}

void SetReplacement::commit()
{
    std::unique_ptr<File> journal;
    bool sealed = false;
    try {
        for (const FileBefore& file : head_.files)
            if (!file.missing)
                files_.open(siblingOf(file.path), OpenMode::ReadWrite)->sync();
        files_.syncFolder(paths::folder(mainPath_));
        journal = files_.open(journalPath(mainPath_), OpenMode::Replace);
        write(*journal);
        sealed = true;
        carryOut(files_, mainPath_, head_, *journal);
        journal.reset();
        files_.remove(journalPath(mainPath_));
    } catch (const RunError& error) {
        try {
            if (journal && !sealed) {
                journal->resize(0);
                journal->sync();
                decided_ = false;
                journal.reset();
                files_.remove(journalPath(mainPath_));
            }
        } catch (const RunError&) {
            // whether the journal counts is seen by the next opening: either state is whole
        }
        if (sealed && !journal)
            return;  // an empty journal says nothing
        failed(mainPath_, error);
    }
}

bool finishReplacement(FileSystem& files, std::string_view mainPath)
{
    const std::string path = journalPath(mainPath);
    if (!files.fileExists(path))
        return false;
    const auto isReplacement = [&](File& journal) {
        const auto head = readJournalHead(journal, mainPath);
        return head && head->kind == JournalHead::Kind::Replace ? head : std::nullopt;
    };
    try {
        if (!isReplacement(*files.open(path, OpenMode::Read)))
            return false;
        auto journal = files.open(path, OpenMode::ReadWrite);
        const bool locked = journal->tryLock(LockKind::Exclusive);
        const auto head = isReplacement(*journal);
        if (!head && locked)
            return true;  // somebody else has just finished it
        if (!locked || head->owner.livesElsewhere())
            throw EngineError(EngineErrorNumber::FileInUse,
                              std::string(mainPath) + " is being written by somebody else");
        carryOut(files, mainPath, *head, *journal);
        journal.reset();
        files.remove(path);
    } catch (const RunError& error) {
        failed(mainPath, error);
    }
    return true;
}

}  // namespace velnor
