// access/storage/replace_set.h - the files of one store replaced together by rewritten ones.
//
// 1. The new content of NAME.EXT is written to its sibling NAME.EXT-new; the old files stay
// untouched.
// 2. commit() syncs the siblings and their folder, then writes what is to be done to the journal
//    (NAME.EXT-undo, EXT of the main file), synced, with its folder: the moment of commit.
// 3. Then siblings are renamed, files that the new state lacks are removed, the folder is synced,
// and
//    the journal goes. Who opens the main file and finds such a journal finishes it first (3045
//    when its owner lives): doing it twice, or the rest of it, gives the same files.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/storage/undo_journal.h"
#include "platform/file_system.h"

namespace velnor {

class SetReplacement {
public:
    /// The caller holds the main file locked until this object is gone.
    SetReplacement(FileSystem& files, std::string_view mainPath);
    ~SetReplacement();  // without commit() the siblings are removed
    SetReplacement(const SetReplacement&) = delete;
    SetReplacement& operator=(const SetReplacement&) = delete;

    static std::string siblingOf(std::string_view path) { return std::string(path) + "-new"; }
    /// The sibling of this file takes its place. A sibling left over from a crash is removed now.
    void replace(std::string_view path);
    /// This file goes.
    void remove(std::string_view path);
    /// 3026 when the disk is full, 3051 for other failures. What was not begun then leaves the old
    /// files; what was begun is finished by the next opening.
    void commit();

private:
    void enter(std::string_view path, bool goes);
    void write(File& journal);

    FileSystem& files_;
    std::string mainPath_;
    JournalHead head_;
    bool decided_ = false;  // the journal may stand: the siblings are not ours to remove
};

/// 3. True when there was something to finish.
bool finishReplacement(FileSystem& files, std::string_view mainPath);

}  // namespace velnor
