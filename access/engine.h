// access/engine.h - the one way to data: workspaces, databases, tables, records. No Qt.
//
// Texts are UTF-8, paths in the form "C:\folder\file.ext". Errors are EngineError with the engine's
// number (engine_error.h) and RunError for files. Names of objects are blind to case.
// A name with a capital letter is the product's; a name with a small letter is this library's own.
//
//     Workspace workspace(files);
//     Database db = workspace.OpenDatabase("C:\\data", false, false, "dBASE 5.0;");
//     Recordset rs = db.OpenRecordset("CUSTOMER");
//     for (; !rs.Eof(); rs.MoveNext())
//         use(rs.value(0));
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "access/engine_error.h"
#include "access/layout.h"
#include "access/value.h"
#include "platform/file_system.h"

namespace velnor {

namespace model {
class DatabaseState;
class RecordsetState;
}  // namespace model

/// Fields, indexes or tables of something, in the file's order. Item(n) from 0, Item(name) blind to
/// case; both throw 3265. References stay good until the collection is changed or refreshed.
template <class T> class Collection {
public:
    int Count() const { return static_cast<int>(items_.size()); }
    T& Item(int n);
    T& Item(std::string_view name);
    T& operator[](int n) { return Item(n); }
    T& operator[](std::string_view name) { return Item(name); }
    bool contains(std::string_view name) const;
    /// Adds a draft; on a collection that belongs to a file, the file is changed now.
    void Append(T item);
    /// Removes by name, in the file as well. 3265 when it is not there.
    void Delete(std::string_view name);
    /// Reads the collection anew from the file.
    void Refresh();

    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }

private:
    friend class Database;
    friend class TableDef;
    friend class Index;
    friend class Recordset;
    friend class model::DatabaseState;
    friend class model::RecordsetState;

    std::vector<T> items_;
    // Set when the collection belongs to a file or an open recordset.
    std::function<void(T&)> onAppend_;
    std::function<void(T&)> onDelete_;
    std::function<std::vector<T>()> onRefresh_;
};

/// A field of a table, or of an open recordset; only there it has a Value.
class Field {
public:
    const std::string& Name() const { return def_.name; }
    int Type() const { return static_cast<int>(def_.type); }
    int Size() const { return def_.size; }
    bool Required() const { return def_.required; }
    void Required(bool required) { def_.required = required; }
    const FieldDef& def() const { return def_; }
    FieldDef& def() { return def_; }  // a draft's attributes

    ValueView Value() const;
    void Value(ValueView v);

    Field() = default;
    explicit Field(FieldDef def) : def_(std::move(def)) {}

private:
    friend class Recordset;
    friend class model::RecordsetState;
    FieldDef def_;
    model::RecordsetState* rows_ = nullptr;
    int position_ = -1;
};

class Index {
public:
    const std::string& Name() const { return name_; }
    bool Primary() const { return flags_.primary; }
    void Primary(bool on) { flags_.primary = on; }
    bool Unique() const { return flags_.unique; }
    void Unique(bool on) { flags_.unique = on; }
    bool Required() const { return flags_.required; }
    void Required(bool on) { flags_.required = on; }
    /// A key field for this index; it counts when it is appended to Fields.
    Field CreateField(std::string_view name) const;
    Collection<Field>& Fields() { return fields_; }
    /// Our additions: direction of a key field, nulls left out.
    void descending(std::string_view field, bool on);
    void ignoreNulls(bool on) { flags_.ignoreNulls = on; }
    IndexDef def() const;

    Index() = default;
    explicit Index(const IndexDef& def);

private:
    std::string name_;
    IndexDef flags_;
    Collection<Field> fields_;
};

/// A table: a draft until TableDefs().Append; from then on Append and Delete on its collections
/// change the file.
class TableDef {
public:
    const std::string& Name() const;
    std::uint32_t Attributes() const;
    std::int64_t RecordCount() const;      ///< live records, exact; 0 for a draft
    double DateCreated() const;            ///< Date values, 0 when the format has none
    double LastUpdated() const;
    const std::string& SourceTableName() const;
    bool Updatable() const;
    const std::string& ValidationText() const;
    const std::string& description() const;
    const std::string& whyNotUpdatable() const;

    Field CreateField(std::string_view name, int type, int size = 0) const;
    Index CreateIndex(std::string_view name) const;
    Collection<Field>& Fields();
    Collection<Index>& Indexes();
    /// The structure as plain data: of the draft, or as the file has it.
    const TableLayout& layout() const;

    TableDef() = default;
    explicit TableDef(std::string_view name);

private:
    friend class Database;
    friend class model::DatabaseState;
    struct State;
    std::shared_ptr<State> state_;  // read from the file at first use
};

enum class RecordsetType { Table = 1, Dynaset = 2, Snapshot = 4, ForwardOnly = 8 };

/// A cursor over the records of a table. Opens on the first record; on an empty one Bof and Eof are true.
class Recordset {
public:
    Recordset(Recordset&&) noexcept;
    Recordset& operator=(Recordset&&) noexcept;
    ~Recordset();

    bool Bof() const;
    bool Eof() const;
    bool NoMatch() const;
    /// Live records. Exact for tables; for a dynaset the records met so far until MoveLast was done.
    std::int64_t RecordCount();
    double PercentPosition();        ///< 0..100

    void MoveFirst();                ///< 3021 when there are no records; so the other moves
    void MoveLast();
    void MoveNext();                 ///< 3021 when Eof already
    void MovePrevious();             ///< 3021 when Bof already
    void Move(std::int64_t rows);    ///< relative to the current record
    /// Order for Seek and for moving, table type only; 3015 when there is no such index.
    void Index(std::string_view name);
    const std::string& Index() const;
    /// "=" ">=" ">" "<=" "<" and up to as many values as the index has fields. Sets NoMatch.
    void Seek(std::string_view comparison, std::span<const ValueView> key);

    void AddNew();
    void Edit();                     ///< 3021 without a current record, 3027 when read-only
    void Update();                   ///< 3020 without AddNew or Edit; 3022, 3314, 3163 ... refuse it
    void CancelUpdate();
    void Delete();
    void Close();

    Collection<Field>& Fields();
    /// The fast lane of Fields(n).Value: of the edit buffer after AddNew or Edit, else of the record.
    ValueView value(int n) const;
    /// 3020 without AddNew or Edit; 3421 when the value does not fit the type, 3163 a text too long.
    void setValue(int n, ValueView v);
    int fieldCount() const;
    /// The first out.size() fields of the current record at once (not of the edit buffer).
    void values(std::span<ValueView> out) const;

    // Our additions, for grids and tools.
    using Bookmark = std::uint64_t;
    Bookmark bookmark() const;               ///< of the current record; 3021 without one
    bool moveToBookmark(Bookmark bookmark);  ///< false when that record is gone
    bool moveToOrdinal(std::int64_t n);      ///< the n-th record from 0 in this order
    std::int64_t ordinal() const;            ///< of the current record, -1 when it is not known cheaply
    Bookmark lastModified() const;           ///< the record that the last Update wrote

private:
    friend class Database;
    friend class model::DatabaseState;
    explicit Recordset(std::unique_ptr<model::RecordsetState> state);
    std::unique_ptr<model::RecordsetState> state_;
};

class Database {
public:
    Database(Database&&) noexcept;
    Database& operator=(Database&&) noexcept;
    ~Database();                            ///< closes silently

    const std::string& Name() const;
    const std::string& Connect() const;
    bool Updatable() const;
    Collection<TableDef>& TableDefs();
    TableDef CreateTableDef(std::string_view name) const;
    /// `source` is a table's name (folder kinds: with or without its extension) or a SELECT statement,
    /// whose answer is for reading only. 3075 and 3131 syntax, 3061 unknown field, 3078 unknown
    /// table, 3464 values of different types. ForwardOnly keeps no records: MoveNext alone goes.
    Recordset OpenRecordset(std::string_view source, RecordsetType type = RecordsetType::Dynaset);
    void Close();                           ///< commits, and throws when that fails
    /// Sets, changes or (empty) removes the password of the file; 3031 when `old` is not the one it
    /// has, 3001 for one that cannot be stored.
    void NewPassword(std::string_view old, std::string_view now);

    /// Our additions. commit: everything written so far is safe on the disk when it returns. It is also
    /// done by itself whenever the changes since the last one pass a bound.
    void commit();
    struct Finding {
        std::string where, text;
        bool harmless = false;
    };
    /// A deep check of every structure; changes nothing. Folder kinds: of one table.
    void check(std::string_view table, const std::function<void(const Finding&)>& report);
    /// Statements may name the other database's tables as name.[table]. It stays open as long as this one.
    void attach(std::string_view name, const Database& other);
    struct QueryOptions {
        std::size_t memory = 64u << 20;   ///< bytes a statement may keep; beyond, temporary files
        /// Asked at least five times a second by statements, and while an index is made; true ends
        /// it: 3059, and nothing is changed.
        std::function<bool()> cancelled;
    };
    void queryOptions(QueryOptions options);
    std::vector<std::pair<std::string, std::string>> info(std::string_view table);

private:
    friend class Workspace;
    explicit Database(std::shared_ptr<model::DatabaseState> state);
    std::shared_ptr<model::DatabaseState> state_;
};

class Workspace {
public:
    explicit Workspace(FileSystem& files);
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// `connect` is a driver's word ("dBASE 5.0;"), empty for Access, and may hold "pwd=..." and, our
    /// addition, "codepage=..." parts. 3024 no such file, 3044 no such folder, 3031 wrong password,
    /// 3170 no such driver, 3045 in use, 3343 not such a database.
    Database OpenDatabase(std::string_view name, bool exclusive, bool readOnly,
                          std::string_view connect);
    /// A new empty Access file, open and writeable. 3204 when the file exists.
    Database CreateDatabase(std::string_view name, std::string_view locale, int options = 0);

private:
    FileSystem& files_;
};

/// ";LANGID=0x0409;CP=1252;COUNTRY=0", the locale of every file we create.
extern const char* const kGeneralLocale;

/// A compacted copy under another name; 3204 when that exists, 3356 when the source is in use.
/// `connect` brings the source's password. The copy has the same one, unless `locale` has a part
/// ";pwd=..." for it. Options: 2 encodes the pages, 4 writes them plain; else as they are.
void CompactDatabase(FileSystem& files, std::string_view source, std::string_view destination,
                     std::string_view locale = {}, int options = 0, std::string_view connect = {});
/// Puts a damaged file right and tells what was done; the damaged one is kept beside it under
/// another name. 3356 when it is in use. Needs no password: the file keeps the one it has.
void RepairDatabase(FileSystem& files, std::string_view name,
                    const std::function<void(const Database::Finding&)>& report = {});

}  // namespace velnor
