// tests/support/faulty_disk.h - a disk in memory that fails and loses power on demand.
//
// It knows what is safe (synced) and what is not. After a power cut, restart() keeps, drops or
// tears each unsynced write, and keeps or drops each name that was made, removed or changed in a
// folder that was not synced. A file's sync does not make its name safe.
//
//     FaultyDisk disk(seed);
//     disk.put("C:\\A.DBF", content);      // safe at once
//     disk.cutAt(17);                       // the 17th change from here on never happens
//     ... work ...                          // from the cut on every call throws RunError 57
//     disk.restart();                       // open handles stay dead, locks are gone
//     ... open, look ...
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace velnor::testing {

class FaultyDisk final : public FileSystem {
public:
    explicit FaultyDisk(unsigned seed = 1);
    ~FaultyDisk() override;

    enum class Lasts { Once, FromThenOn };
    /// The n-th change from now on, counted from 1, throws the error; a write may be done in part.
    /// With DiskFull, only what takes room is counted and refused: bytes that exist can be
    /// overwritten.
    void failAt(long n, RunErrorNumber error, Lasts lasts = Lasts::Once);
    /// The power goes at the n-th change from now on: a write is unsynced by a part, all else is
    /// not done.
    void cutAt(long n);
    /// Power is back, and no fault is set.
    void restart();
    void clearFaults();

    bool wasCut() const { return dead_; }
    /// True when the fault of failAt() came.
    bool hasFailed() const { return failed_; }
    /// Changes so far: writes, lengths, syncs, names made, changed and removed, folders synced.
    long changes() const { return changes_; }

    /// A file that is safe on the disk.
    void put(std::string_view path, ByteSpan content);
    std::vector<std::uint8_t> content(std::string_view path) const;
    /// Every file by its path, in capitals: to compare states.
    std::map<std::string, std::vector<std::uint8_t>> snapshot() const;

    std::unique_ptr<File> open(std::string_view path, OpenMode mode) override;
    std::optional<FileInfo> info(std::string_view path) override;
    std::vector<FileInfo> list(std::string_view folder) override;
    void remove(std::string_view path) override;
    void rename(std::string_view from, std::string_view to) override;
    void makeFolder(std::string_view path) override;
    void removeFolder(std::string_view path) override;
    void syncFolder(std::string_view folder) override;

private:
    using Bytes = std::vector<std::uint8_t>;
    struct Change;  // of a file's bytes, not yet safe
    struct Content;
    class Handle;
    struct Entry {
        std::string name;  // as spelled
        std::shared_ptr<Content> content;
    };
    using Names = std::map<std::string, Entry>;  // by folded path
    /// Of a name, not yet safe: made (`from` empty), removed (`to` empty) or renamed.
    struct NameChange {
        std::string folder;
        std::string from;
        std::string to;
        Entry entry;
    };

    enum class Room { Taken, NotTaken };
    /// Counts a change; throws when a fault says so, after `part` has done a part of it.
    template <class Part> void change(Room room, std::string_view path, Part part);
    void needPower() const;
    bool chance(unsigned percent) { return random_() % 100 < percent; }
    const Entry& existing(std::string_view path) const;
    void changeName(NameChange change);
    static void apply(const NameChange& change, Names& names);
    void settle(Content& content, unsigned keep, unsigned tear);

    std::mt19937 random_;
    Names names_;
    Names safeNames_;
    std::vector<NameChange> nameChanges_;
    std::set<std::string> folders_;
    static constexpr long kNever = std::numeric_limits<long>::max();
    long changes_ = 0;
    long cutAt_ = kNever;
    long failIn_ = kNever;
    RunErrorNumber failWith_ = RunErrorNumber::DeviceIo;
    Lasts failLasts_ = Lasts::Once;
    bool failed_ = false;
    bool dead_ = false;
    unsigned life_ = 0;  // handles of an earlier life are dead
};

}  // namespace velnor::testing
