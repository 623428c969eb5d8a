// access/model/recordset_state.h - what stands behind a Recordset: the place among the records, and
// the record being edited.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "access/engine.h"
#include "access/model/edit_buffer.h"
#include "access/model/open_stores.h"
#include "access/model/record_source.h"

namespace velnor::model {

class RecordsetState final : public StoreClient {
public:
    RecordsetState(DatabaseState& database, std::unique_ptr<RecordSource> source,
                   RecordsetType type);
    ~RecordsetState() override;
    RecordsetState(const RecordsetState&) = delete;
    RecordsetState& operator=(const RecordsetState&) = delete;

    bool bof() const { return place_ == Place::Before || place_ == Place::Empty; }
    bool eof() const { return place_ == Place::Behind || place_ == Place::Empty; }
    bool noMatch() const { return noMatch_; }
    std::int64_t recordCount();
    double percentPosition();
    std::int64_t ordinal() const { return place_ == Place::Record ? ordinal_ : -1; }

    void moveFirst();
    void moveLast();
    void moveNext();
    void movePrevious();
    void move(std::int64_t rows);
    bool moveToOrdinal(std::int64_t n);
    RowId bookmark() const;
    bool moveToBookmark(RowId row);
    RowId lastModified() const { return lastModified_; }

    void setIndex(std::string_view name);
    const std::string& index() const { return index_; }
    void seek(std::string_view comparison, std::span<const ValueView> key);

    void addNew();
    void edit();
    void update();
    void cancelUpdate();
    void remove();

    Collection<Field>& fields();
    int fieldCount() const { return fieldCount_; }
    ValueView value(int n);
    void values(std::span<ValueView> out);
    void setValue(int n, ValueView v);

    /// Lets go of the database and of everything else; from then on every call is 3420.
    void close();

    // StoreClient
    const std::string& tableName() const override { return source_->layout().name; }
    void releaseStore() override;
    void restoreStore() override;

private:
    /// Where the recordset stands. Deleted: on the gap that Delete left. Lost: a Seek found
    /// nothing.
    enum class Place : std::uint8_t { Record, Before, Behind, Empty, Deleted, Lost };

    RowCursor& cursor() const;
    RowWriter& writer();
    std::optional<std::string_view> order() const;
    const IndexDef* indexNamed(std::string_view name) const;
    void requireTableType(const char* what) const;
    void requireRecord() const;
    void requireWriteable() const;
    void requireField(int n) const;
    [[noreturn]] void noRecord() const;

    void stand(std::int64_t ordinal);
    void standBehind();
    void comeBack(Place place, RowId row, std::int64_t ordinal);
    void stepForward(std::int64_t rows);
    void stepBack(std::int64_t rows);
    void insertRecord();
    void updateRecord();

    DatabaseState* database_;
    std::unique_ptr<RecordSource> source_;
    RecordsetType type_;
    EditBuffer buffer_;
    std::unique_ptr<RowCursor> cursor_;
    std::unique_ptr<RowWriter> writer_;
    std::string index_;
    Collection<Field> fields_;
    int fieldCount_ = 0;

    Place place_ = Place::Empty;
    bool noMatch_ = false;
    bool counted_ = false;       // the end has been seen: the count is the store's
    std::int64_t met_ = 0;       // records met so far
    std::int64_t ordinal_ = -1;  // of the record, or of the gap; -1 when not known
    RowId lastModified_ = 0;

    // While the store is away.
    RowId heldRow_ = 0;
};

}  // namespace velnor::model
