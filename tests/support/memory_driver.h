// tests/support/memory_driver.h - a small real format that keeps its tables in memory, with ordered
// indexes: the object model's rules are tested on it without any file format.
//
// A database is a marker file in the FileSystem (so that paths, locks and permissions are real) and
// its tables here, by path. "Memory;" is the file kind, "MemoryFolder;" the folder kind.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "access/formats/driver.h"

namespace velnor::test {

struct MemoryIndex {
    struct Entry {
        std::vector<Value> key;
        RowId row;
    };
    struct Less {
        const std::vector<IndexFieldDef>* fields;
        bool operator()(const Entry& a, const Entry& b) const;
    };
    IndexDef def;
    std::vector<int> positions;
    std::set<Entry, Less> entries;

    MemoryIndex(IndexDef definition, const std::vector<FieldDef>& fields);
    MemoryIndex(const MemoryIndex&) = delete;
    MemoryIndex& operator=(const MemoryIndex&) = delete;
    Entry entryOf(RowId row, std::span<const Value> values) const;
    bool holdsKey(const Entry& entry) const;
};

struct MemoryTable {
    TableLayout layout;
    std::map<RowId, std::vector<Value>> rows;
    std::vector<std::unique_ptr<MemoryIndex>> indexes;
    RowId nextRow = 1;
    std::int64_t nextNumber = 1;
};

struct MemoryDatabase {
    std::map<std::string, MemoryTable> tables;  // by folded name
    std::string password;
    int commits = 0;
    std::size_t pending = 0;
};

class MemoryDriver final : public Driver {
public:
    /// The words it answers to; an empty one makes it the format of CreateDatabase.
    explicit MemoryDriver(std::vector<std::string_view> words = {"Memory;", "MemoryFolder;"});

    std::span<const std::string_view> connectWords() const override { return words_; }
    const FormatTraits& traits(std::string_view connectWord) const override;
    std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const override;
    void create(FileSystem& files, const CreateRequest& request) const override;
    void compact(FileSystem& files, const OpenRequest& from,
                 const CreateRequest& to) const override;
    void repair(FileSystem& files, const OpenRequest& request,
                const ProblemSink& report) const override;

    /// The tables of a path, made when there are none.
    MemoryDatabase& database(std::string_view path) const;

    FormatTraits fileTraits;  // tests change them before they open
    FormatTraits folderTraits;
    mutable int opened = 0;  // stores opened so far
    mutable int repaired = 0;

private:
    std::vector<std::string_view> words_;
    mutable std::map<std::string, std::shared_ptr<MemoryDatabase>> databases_;
};

}  // namespace velnor::test
