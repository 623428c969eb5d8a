// access/formats/jet/jet_cursor.h - walking the records of a table, in physical order or by an
// index.
//
// Physical order is pages ascending, slots ascending; a moved record is met at its home place. The
// cursor holds the page it stands on. When anything in the file changed since a record was opened,
// its bytes are looked up again before a field is read.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/formats/driver.h"
#include "access/formats/jet/jet_index.h"
#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

constexpr RowId rowIdOf(RowPointer row)
{
    return row.word();
}
constexpr RowPointer pointerOf(RowId row)
{
    return RowPointer::fromWord(static_cast<std::uint32_t>(row));
}

/// What both cursors share: the record in hand and its fields.
class JetCursor : public RowCursor {
public:
    explicit JetCursor(std::shared_ptr<JetTable> table);
    bool next() override;
    bool previous() override;
    RowId row() const override { return rowIdOf(home_); }
    ValueView field(int n) override;

protected:
    enum class At { Before, Row, After };
    /// The next record and the one before, from a record.
    virtual bool stepForward() = 0;
    virtual bool stepBackward() = 0;
    /// Opens the record at a home place; false when it is gone or damaged.
    bool openRow(RowPointer home);
    /// The same on the page in hand.
    bool openSlot(int slot);
    void close() { open_ = false; }
    JetTable& table() { return *table_; }

    PageRef page_;  // of the home place
    RowPointer home_;
    At at_ = At::Before;

private:
    bool take(std::optional<HeldRow> held);
    void refresh();
    ValueView longValue(int n);

    std::shared_ptr<JetTable> table_;
    RowReader reader_;
    PageRef target_;  // of a moved record
    bool open_ = false;
    std::uint64_t generation_ = 0;
    std::vector<std::string> scratch_;  // by field
    std::string gathered_;              // a memo before it is decoded
};

class PhysicalCursor final : public JetCursor {
public:
    explicit PhysicalCursor(std::shared_ptr<JetTable> table) : JetCursor(std::move(table)) {}
    bool first() override;
    bool last() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override;

private:
    bool stepForward() override;
    bool stepBackward() override;
    bool holdPage(std::size_t place);
    void findPlace();
    bool forward(std::size_t place, int slot);
    bool backward(std::size_t place, int slot);

    std::size_t place_ = 0;  // of the page in the table's list
    int slots_ = 0;          // rows of the page in hand
    std::uint64_t pagesVersion_ = 0;
};

class IndexCursor final : public JetCursor {
public:
    IndexCursor(std::shared_ptr<JetTable> table, int realIndex);
    bool first() override;
    bool last() override;
    bool moveTo(RowId row) override;
    bool moveToOrdinal(std::int64_t n) override;
    std::int64_t ordinal() override;
    bool seek(Comparison comparison, std::span<const ValueView> key) override;

private:
    bool stepForward() override { return forward(walker_.next()); }
    bool stepBackward() override { return backward(walker_.previous()); }
    bool forward(bool standing);
    bool backward(bool standing);
    bool placeByKey(Comparison comparison, KeyView key);
    bool seekByValues(Comparison comparison, std::span<const ValueView> key);
    bool sameValues(std::span<const ValueView> key);

    OpenIndex& index_;
    KeyBuilder keys_;
    IndexWalker walker_;
    std::vector<ValueView> values_;
    std::vector<std::uint8_t> wanted_;
};

}  // namespace velnor::jet
