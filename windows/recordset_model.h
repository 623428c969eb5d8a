// windows/recordset_model.h - the records of a table as a grid sees them, read when they are looked
// at.
//
// The model has a cursor of its own, so that painting never moves the record in hand. Rows are
// counted once and found by their place; a row that was shown is kept as text for a while. Reading
// that fails shows in the cell that failed and nowhere else.
#pragma once

#include <optional>
#include <vector>

#include <QAbstractTableModel>
#include <QString>

#include "access/engine.h"

namespace velnor {

class RecordsetModel : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit RecordsetModel(QObject* parent = nullptr);
    ~RecordsetModel() override;

    /// Shows these records; nothing: an empty grid. Throws what counting them throws.
    void setRecordset(std::optional<Recordset> records);
    /// Forgets what was read, and counts again: the records of the table have changed.
    void readAgain();
    bool hasRecordset() const { return records_.has_value(); }
    /// Records there are; rowCount() is the same, cut where a view can count no further.
    std::int64_t recordCount() const { return count_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// The whole text of a cell, line ends and all. Empty for Null.
    QString fullText(int row, int column) const;
    const FieldDef& field(int column) const { return fields_[static_cast<std::size_t>(column)]; }

private:
    enum class CellState : std::uint8_t { NotRead, Value, Null, Failed };
    struct Cell {
        QString text;
        CellState state = CellState::NotRead;
        bool cut = false;  ///< the text goes on behind what the grid shows
    };
    struct Row {
        std::int64_t number = -1;
        std::vector<Cell> cells;
    };
    static constexpr int kKeptRows = 512;

    const Cell& cell(int row, int column) const;
    void readCell(int row, int column, Cell& cell) const;
    bool moveTo(std::int64_t row) const;

    // Reading moves the cursor and fills the kept rows, which nobody sees from outside.
    mutable std::optional<Recordset> records_;
    mutable std::vector<Row> kept_;
    mutable std::int64_t at_ = -1;  ///< where the cursor stands, -1: unknown
    std::vector<FieldDef> fields_;
    std::int64_t count_ = 0;
};

/// How a field's type reads for people: "Text, 30 characters", "Long", "Decimal, 12 digits, 2
/// behind the point".
QString fieldTypeTip(const FieldDef& field);
/// Numbers stand right, True and False in the middle, the rest left.
Qt::Alignment fieldAlignment(FieldType type);

}  // namespace velnor
