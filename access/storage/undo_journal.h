// access/storage/undo_journal.h - the file NAME.EXT-undo: what a commit overwrites.
//
//   head   "VELUNDO1", u32 length of the head, u64 mark of this journal, owner, the files of the
//   set with
//          their lengths at the last commit, u64 checksum of all that
//   entry  u32 file, u32 length, u64 offset, u64 checksum (over these, the mark and the content),
//   content
//
// With "VELMOVE1" it is a head alone: what a replacement of whole files does (replace_set.h).
// All numbers little-endian. A file is named "*.EXT" when it shares the main file's base name, so
// that the journal follows a rename, else by its name; it is always in the main file's folder. A
// journal counts when its head is right; it ends in front of the first entry that is not. Undoing
// it twice, or again after half of it, gives the same files.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/storage/journal_owner.h"
#include "platform/file_system.h"

namespace velnor {

/// A file as it was at the last commit.
struct FileBefore {
    std::string path;
    std::uint64_t size = 0;
    bool missing = false;  ///< this commit makes it; of a replacement: this file goes
};

/// What a journal says at its start. Names are resolved against the main file.
struct JournalHead {
    enum class Kind { Undo, Replace };
    Kind kind = Kind::Undo;
    std::uint64_t mark = 0;
    JournalOwner owner;
    std::vector<FileBefore> files;
    std::uint64_t length = 0;
};

std::string journalPath(std::string_view mainPath);
/// A number that no journal had before.
std::uint64_t newJournalMark();
/// The head, when it is right: nothing is written on the word of another.
std::optional<JournalHead> readJournalHead(File& journal, std::string_view mainPath);
/// The bytes of a head.
std::vector<std::uint8_t> journalHeadBytes(const JournalHead& head, std::string_view mainPath);
/// Puts the files back to what the journal says, and syncs them.
void undoFiles(FileSystem& files, std::string_view mainPath, File& journal,
               const JournalHead& head);

class UndoJournal {
public:
    /// Makes the journal's file; nothing in it counts before seal().
    UndoJournal(FileSystem& files, std::string_view mainPath, std::vector<FileBefore> before);

    /// Keeps a piece (up to kLongestPiece bytes) of file number `file`.
    void save(std::uint32_t file, File& from, std::uint64_t offset, std::uint64_t length);
    /// 1. Returns when everything saved, and the journal's name, are safe on the disk.
    void seal();
    /// 2. The moment of commit. When it throws and isCut() is true, the new state stands, but
    /// may still be undone by a crash.
    void cut();
    bool isCut() const { return cut_; }
    /// 5. Puts the files back.
    void undo();
    /// Removes the file; if that fails, an empty journal is left, which nobody minds.
    void remove() noexcept;

    static constexpr std::uint64_t kLongestPiece = 2u << 20;

private:
    void flush();

    FileSystem& files_;
    std::string mainPath_;
    std::string path_;
    JournalHead head_;
    std::unique_ptr<File> file_;
    std::uint64_t end_ = 0;
    std::vector<std::uint8_t> buffer_;
    bool cut_ = false;
};

}  // namespace velnor
