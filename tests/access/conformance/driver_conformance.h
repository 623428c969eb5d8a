// tests/access/conformance/driver_conformance.h - what every format must do, as cases over a
// description.
//
// A new format joins with a FormatUnderTest in tst_driver_conformance.cpp. After each case the file
// is opened again and its own check must find nothing.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "access/engine.h"
#include "platform/memory_file_system.h"

namespace velnor::test {

/// A type that the format keeps, with values at its limits.
struct FieldCase {
    FieldDef def;
    std::vector<Value> values;
    bool keepsNull = true;
};

struct FormatUnderTest {
    std::string name;  ///< for the test's name
    std::string connect;
    bool folder = true;  ///< a folder of tables; else one file, made by CreateDatabase
    int createOptions = 0;
    bool indexes = false;         ///< keeps indexes, so Index and Seek work
    bool keysBlindToCase = true;  ///< else texts are ordered and found by their bytes
    bool fallingIndexes = true;   ///< knows descending ones
    bool primaryKeys = true;  ///< has primary keys, which refuse Null; else they are unique only
    bool changesIndexes = false;  ///< Indexes().Append and Delete on a stored table
    bool changesFields = false;   ///< Fields().Append and Delete on a stored table
    bool edits = true;            ///< records can be changed
    bool needsKey = false;        ///< ... only in tables with a primary key, named TABLE#PX
    bool cutsNames = true;        ///< folder kinds: longer names of fields are cut
    bool deletes = true;          ///< and deleted
    bool blankRecords = true;     ///< a record of Nulls alone is kept
    std::size_t longestMemo = 200'000;
    std::string tableMark;  ///< stands behind the name in the list of tables: ".txt", ":"
    int longestTable = 64;
    int longestField = 10;
    std::vector<FieldCase> fields;
    std::vector<std::string> texts;  ///< every class of characters that it keeps
};

inline void PrintTo(const FormatUnderTest& format, std::ostream* out)
{
    *out << format.name;
}

/// The engine's number of what a step throws; 0 when it throws nothing.
template <class Step> int errorOf(Step&& step)
{
    try {
        step();
    } catch (const EngineError& e) {
        return e.number();
    }
    return 0;
}

/// The text of a value, "Null" for Null.
std::string shown(ValueView v);

class DriverConformance : public ::testing::TestWithParam<FormatUnderTest> {
protected:
    DriverConformance();
    void TearDown() override;

    const FormatUnderTest& format() const { return GetParam(); }
    /// What the primary key of table T is called.
    std::string primaryKey() const
    {
        return format().needsKey ? std::string(kTable) + "#PX" : "PrimaryKey";
    }
    Database open(bool readOnly = false);
    /// Closes and opens again, so that what follows is read from the file.
    void reopen();
    Recordset records(std::string_view table = kTable, RecordsetType type = RecordsetType::Table)
    {
        return db.OpenRecordset(table, type);
    }

    /// A table's name in the list of tables.
    std::string listed(const std::string& table) const { return table + format().tableMark; }
    /// So many characters, or what the format can hold.
    std::size_t memoLength(std::size_t wanted) const
    {
        return std::min(wanted, format().longestMemo);
    }

    /// A table with these fields and indexes.
    void makeTable(const std::vector<FieldDef>& fields, std::string_view name = kTable,
                   const std::vector<velnor::Index>& indexes = {});
    /// Table NOTES: ID Long, NAME Text 60, NOTE Memo; where there are indexes, a primary key on ID
    /// and `more`.
    void makeNotes(const std::vector<velnor::Index>& more = {});
    static void addNote(Recordset& rs, int id, std::string_view name, std::string_view note = {});
    /// Field n of all records of NOTES, in the order of `index`.
    std::vector<std::string> column(int n, std::string_view index = {});

    // What a format cannot do is refused by a number, and the record that stands there stays.
    void expectEditRefused();
    void expectDeleteRefused();
    void expectIndexRefused();
    void expectFieldRefused();

    /// Whether a Text field that was never set reads as Null, not as an empty text.
    bool keepsNullTexts() const;

    static constexpr const char* kTable = "NOTES";  // "T" is a sheet's letter
    static constexpr const char* kFolder = "C:\\tables";
    static constexpr const char* kFile = "C:\\tables\\test.mdb";
    MemoryFileSystem files;
    Workspace workspace{files};
    Database db;

private:
    Database makeDatabase();
};

struct Key {
    const char* field;
    bool descending = false;
};
Index indexOn(std::string_view name, std::initializer_list<Key> keys, bool unique = false);

FieldDef fieldDef(std::string_view name, FieldType type, int size = 0);

}  // namespace velnor::test
