// access/formats/driver.h - what a format implements.
//
// A Driver is stateless and opens Stores. A Store is an open folder (DBF, DB) or file (all others).
// The model above it has checked names, sizes, required fields and the state of the edit buffer, and has
// turned each value into the kind of its field (see `valueKindOf`); a Store only does. It throws
// EngineError and RunError; after an error every record written before it is still there.
//
// Cursors and writers of one Store may be open together. A cursor sees what was written through any
// writer of its Store at its next move. Nothing is safe on the disk before commit().
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "access/engine_error.h"
#include "access/layout.h"
#include "access/value.h"
#include "platform/file_system.h"

namespace velnor {

/// Names a record for as long as its store is open: a record number, a page and slot.
using RowId = std::uint64_t;

/// Comparisons of Seek, by the words the engine takes: "=" ">=" ">" "<=" "<".
enum class Comparison { Equal, GreaterEqual, Greater, LessEqual, Less };

/// The kind in which a field's values travel: Boolean; Integer for Byte, Integer, Long, BigInt; Currency;
/// Real for Single, Double, Float; Date for Date, Time, TimeStamp; Decimal for Decimal, Numeric;
/// Text for Text, Memo, Char, Guid; Bytes for Binary, VarBinary, LongBinary.
/// Cursors may hand out Decimal or Integer where Real is named: the same number, cheaper to read.
ValueKind valueKindOf(FieldType type);

/// Walks the records of one table, in physical order or by an index. Deleted records are not shown.
class RowCursor {
public:
    virtual ~RowCursor() = default;

    // Each returns whether it stands on a record now. After next() has passed the last record,
    // previous() gives the last one, and the other way round.
    virtual bool first() = 0;
    virtual bool last() = 0;
    virtual bool next() = 0;
    virtual bool previous() = 0;
    /// Stands on a record by its name; false when it is gone.
    virtual bool moveTo(RowId row) = 0;
    /// Stands on the n-th record in this cursor's order, from 0; false when there are fewer.
    /// Formats make this quick (whole pages are stepped over); the default walks.
    virtual bool moveToOrdinal(std::int64_t n);
    /// The place of the current record in this cursor's order, from 0. The default walks.
    virtual std::int64_t ordinal();
    /// By index only (3019 without one). `key` may have fewer values than the index has fields.
    /// The first record that fits in index order ("<=" and "<": the last). False when none does.
    virtual bool seek(Comparison comparison, std::span<const ValueView> key);

    virtual RowId row() const = 0;
    /// Decodes field n of the current record. The view is good until the cursor moves; reading
    /// another field does not end it.
    virtual ValueView field(int n) = 0;
    /// The first out.size() fields at once, for loops over all of them.
    virtual void fields(std::span<ValueView> out);
};

struct FieldChange {
    int field;
    ValueView value;
};

/// Adds, changes and removes records of one table, and keeps its indexes.
/// Each call does all or nothing: after a throw the record and the indexes are as before it.
class RowWriter {
public:
    virtual ~RowWriter() = default;
    /// One value for each field in layout order. A Null autonumber is given its number.
    virtual RowId insert(std::span<const ValueView> values) = 0;
    virtual void update(RowId row, std::span<const FieldChange> changes) = 0;
    virtual void remove(RowId row) = 0;
};

/// One finding of a check. `where` names table, page, record; `text` says what is wrong.
struct Problem {
    std::string where;
    std::string text;
    bool harmless = false;  ///< worth a note: stale, or a state that other programs leave, too
};
using ProblemSink = std::function<void(const Problem&)>;

class Store {
public:
    virtual ~Store() = default;

    /// Names and attributes only: cheap, in the format's own order. Folder kinds list the bare names.
    virtual std::vector<TableEntry> catalogue() = 0;
    /// 3078 when there is no such table (names are blind to case); 3274 when it cannot be read.
    virtual TableLayout layout(std::string_view table) = 0;
    /// Live records, exact.
    virtual std::int64_t recordCount(std::string_view table) = 0;

    virtual std::unique_ptr<RowCursor> cursor(std::string_view table,
                                              std::optional<std::string_view> index) = 0;
    virtual std::unique_ptr<RowWriter> writer(std::string_view table) = 0;

    // Structure. The defaults refuse with 3251.
    virtual void createTable(const TableLayout& layout);  ///< table and indexes in one step
    virtual void dropTable(std::string_view table);
    virtual void addField(std::string_view table, const FieldDef& field);
    virtual void dropField(std::string_view table, std::string_view field);
    virtual void addIndex(std::string_view table, const IndexDef& index);
    virtual void dropIndex(std::string_view table, std::string_view index);

    /// Whether a further open of this file may come in with `password`; formats without passwords take any.
    virtual bool acceptsPassword(std::string_view password);
    /// Sets the password that opens the file from now on, safe on the disk; empty: none. Everything
    /// written before it is committed. Default: 3251.
    virtual void changePassword(std::string_view password);

    /// Everything written so far is safe on the disk when this returns. On a failure (disk full: 3026)
    /// the files are back at the last commit.
    virtual void commit() = 0;
    /// Bytes changed since the last commit that are in memory, roughly.
    virtual std::size_t pendingBytes() const = 0;
    /// To be called every few records: what takes more than `mostBytes` of memory goes to the disk. By
    /// a commit, unless the store can do it without one.
    virtual void breathe(std::size_t mostBytes)
    {
        if (pendingBytes() > mostBytes)
            commit();
    }
    /// Reads every structure and reports what is wrong; changes nothing. For folder kinds only the
    /// named table is checked, for others the whole file when `table` is empty.
    virtual void check(std::string_view table, const ProblemSink& report) = 0;
    /// Facts for people, in order: format and version, code page, sort order, page size, ...
    virtual std::vector<std::pair<std::string, std::string>> info(std::string_view table) = 0;

    /// While one lives, the making of indexes asks now and then whether to stop: then it ends with
    /// 3059, and everything is as before it. A format whose indexes are quick may not ask.
    class Stoppable {
    public:
        Stoppable(Store& store, std::function<bool()> asked) : store_(store)
        {
            store_.stopAsked_ = std::move(asked);
        }
        ~Stoppable() { store_.stopAsked_ = nullptr; }
        Stoppable(const Stoppable&) = delete;
        Stoppable& operator=(const Stoppable&) = delete;

    private:
        Store& store_;
    };

protected:
    void stopIfAsked() const
    {
        if (stopAsked_ && stopAsked_())
            throw EngineError(EngineErrorNumber::Cancelled, "Stopped by the user.");
    }

private:
    std::function<bool()> stopAsked_;
};

struct OpenRequest {
    std::string name;            ///< folder or file, "C:\..." form
    bool readOnly = true;
    bool exclusive = false;
    std::string connectWord;     ///< the word that chose the driver: "dBASE 5.0;"
    std::string password;
    std::string codePage;        ///< "866", "cp866": overrides what the file says; empty: believe it
    std::string options;         ///< the format's own words of the connect string: "HDR=No;IMEX=1"
};

/// The value of a key in OpenRequest::options, blind to case; nothing when it is not named.
std::optional<std::string_view> connectOption(std::string_view options, std::string_view key);

struct CreateRequest {
    std::string name;
    std::string connectWord;     ///< the word that chose the driver; tells the file's version for some
    std::string locale;          ///< ";LANGID=0x0409;CP=1252;COUNTRY=0"
    int options = 0;             ///< 32: the older file version
    std::string password;
    bool keepPassword = false;   ///< of compact: the copy has the password of its source
};

/// What differs between formats without code.
struct FormatTraits {
    bool folder = false;         ///< a database is a folder, a table a file in it
    int maxTableName = 64;       ///< characters
    int maxFieldName = 64;
    bool cutFieldNames = false;  ///< longer names are cut (3191 when two become equal), else refused
    int maxFields = 255;
    int maxText = 255;           ///< characters of a Text field
    bool canDelete = true;       ///< records can be deleted
    bool emptyTextIsNull = false;///< the format cannot tell an empty text from Null
};

class Driver {
public:
    virtual ~Driver() = default;
    /// Words as they stand in front of a connect string, with their ";".
    virtual std::span<const std::string_view> connectWords() const = 0;
    virtual const FormatTraits& traits(std::string_view connectWord) const = 0;
    virtual std::unique_ptr<Store> open(FileSystem& files, const OpenRequest& request) const = 0;
    virtual void create(FileSystem& files, const CreateRequest& request) const;  // default: 3251
    virtual void compact(FileSystem& files, const OpenRequest& from, const CreateRequest& to) const;
    /// Puts the file right in place, after a copy of it was set aside, and tells what it did: what is
    /// lost as a problem, all else as harmless.
    virtual void repair(FileSystem& files, const OpenRequest& request, const ProblemSink& report) const;
};

/// The driver for a connect string, by its first word; null when there is none (3170).
/// An empty word and ";pwd=..." mean Access.
const Driver* findDriver(std::string_view connectWord);

/// Adds a driver in front of the built-in ones for as long as this object lives; for tests.
class DriverAdded {
public:
    explicit DriverAdded(const Driver& driver);
    ~DriverAdded();
    DriverAdded(const DriverAdded&) = delete;
    DriverAdded& operator=(const DriverAdded&) = delete;

private:
    const Driver& driver_;
};

}  // namespace velnor
