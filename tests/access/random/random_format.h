// tests/access/random/random_format.h - what the random operations need to know of a format.
#pragma once

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "platform/memory_file_system.h"

namespace velnor::testing {

using Random = std::mt19937;

inline unsigned below(Random& random, unsigned limit)
{
    return static_cast<unsigned>(random() % limit);
}

/// One kind of table. The first field of `start` names the record: a whole number that no two
/// records share. Everything happens on a drive in memory.
struct RandomFormat {
    std::string name;  ///< of the run, for messages
    const Driver* driver = nullptr;
    OpenRequest open;      ///< how the folder or file is opened, to write
    bool creates = false;  ///< the driver makes an empty database first
    CreateRequest create;
    TableLayout start;
    std::vector<FieldDef> moreFields;   ///< added and dropped again
    std::vector<IndexDef> moreIndexes;  ///< added and dropped again
    /// The index that finds a record by its first field. Without one, records are found by the
    /// RowId that insert() gave; then a RowId must name its record until the store is closed.
    std::string keyIndex;

    bool removes = true;
    bool changes = true;        ///< records can be changed
    bool updatesKey = true;     ///< the first field of a record may be changed
    bool nullsInUnique = true;  ///< any number of Nulls fits into a unique index
    bool emptyTextIsNull = false;
    bool indexOrderIsSeekable = true;
    unsigned mostRecords = 500;
    bool renews = false;  ///< a full table, where nothing can be removed, is dropped and made anew
    unsigned structureEvery = 250;  ///< operations between two changes of structure; 0: none
    unsigned lookEvery = 400;       ///< between two full comparisons
    unsigned reopenEvery = 900;
    unsigned compactEvery = 0;

    /// A value for a field, never Null; by default `randomValue`.
    std::function<Value(const FieldDef&, Random&)> makeValue;
    /// Whether a field can be left Null.
    std::function<bool(const FieldDef&)> canBeNull;
    /// What reading gives back when `v` was written; by default the same.
    std::function<Value(const FieldDef&, const Value&)> readBack;
    /// Order of two values of a field in an ascending index; Null comes first. By default numbers
    /// by size, text blind to case in ASCII.
    std::function<int(const FieldDef&, ValueView, ValueView)> compare;
    /// Changes the files of the new, empty table before anything else happens.
    std::function<void(MemoryFileSystem&)> prepare;
    /// Runs while the store is closed; leaves the same records in the same place.
    std::function<void(MemoryFileSystem&)> compact;
    /// Asks a program that is not ours, while the store is closed; `expected` is the table as CSV.
    /// Returns what is wrong, or nothing.
    std::function<std::string(MemoryFileSystem&, const std::string& expected)> judge;
};

/// A value that every format can hold, by the field's type and size: short and long texts of
/// letters and digits, whole and broken numbers, days, moments, bytes.
Value randomValue(const FieldDef& field, Random& random);
int compareValues(ValueView a, ValueView b);

/// Runs `operations` random ones, or as many as VELNOR_RANDOM_OPS says; VELNOR_RANDOM_SEED picks
/// others. The judge is asked every 1,000 operations. Stops at the first failure, which names seed
/// and operation.
void runRandomOperations(const RandomFormat& format, int operations = 3000);

/// Copies every file of a folder to a new scratch folder of the host and returns its native path.
std::string copyOut(MemoryFileSystem& files, const std::string& folder);

/// A judge over judge.py: `kind` picks the outside readers ("jet", "xbase", "paradox", "sheet");
/// `file` is the table's file in the folder, `table` its name for kinds with many.
std::function<std::string(MemoryFileSystem&, const std::string&)>
outsideJudge(const std::string& kind, const std::string& folder, const std::string& file,
             const std::string& table);

}  // namespace velnor::testing
