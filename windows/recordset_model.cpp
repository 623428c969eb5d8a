#include "windows/recordset_model.h"

#include <algorithm>
#include <limits>

#include <QColor>
#include <QGuiApplication>
#include <QPalette>

#include "access/field_type_names.h"
#include "access/value_text.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/text.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr int kShownCharacters = 250;  // a memo's first line; the rest is the comments pane's
constexpr QChar kEllipsis(0x2026);

QString byteCountText(std::size_t bytes)
{
    return bytes == 1 ? u"(1 byte)"_s
                      : u"(%1 bytes)"_s.arg(text::thousands(static_cast<long long>(bytes)));
}

/// The text of a value, whole; binary data by its length only.
QString wholeText(ValueView value, std::string& scratch)
{
    if (value.kind() == ValueKind::Bytes)
        return byteCountText(value.asBytes().size());
    if (value.kind() == ValueKind::Text)
        return fromUtf8(value.asText());
    scratch.clear();
    appendText(scratch, value);
    return fromUtf8(scratch);
}

/// The first line, at most kShownCharacters of it. True when something was left out.
bool cutToLine(QString& s)
{
    qsizetype end = std::min<qsizetype>(s.size(), kShownCharacters);
    for (qsizetype i = 0; i < end; ++i)
        if (s[i] == u'\r' || s[i] == u'\n')
            end = i;
    if (end == s.size())
        return false;
    s.truncate(end);
    s += kEllipsis;
    return true;
}

QString charactersText(int size)
{
    return size == 1 ? u"1 character"_s : u"%1 characters"_s.arg(size);
}

}  // namespace

QString fieldTypeTip(const FieldDef& field)
{
    QString tip = FieldTypeName(static_cast<short>(field.type));
    if (field.type == FieldType::Text || field.type == FieldType::Char)
        tip += u", "_s + charactersText(field.size);
    else if (field.precision > 0 && field.scale > 0)
        tip += u", %1 digits, %2 behind the point"_s.arg(field.precision).arg(field.scale);
    else if (field.size > 0 && field.type != FieldType::Memo)
        tip += u", size %1"_s.arg(field.size);
    if (field.autonumber)
        tip += u", numbered by the file"_s;
    else if (field.required)
        tip += u", required"_s;
    return tip;
}

Qt::Alignment fieldAlignment(FieldType type)
{
    switch (type) {
    case FieldType::Byte:
    case FieldType::Integer:
    case FieldType::Long:
    case FieldType::Currency:
    case FieldType::Single:
    case FieldType::Double:
    case FieldType::BigInt:
    case FieldType::Numeric:
    case FieldType::Decimal:
    case FieldType::Float:
        return Qt::AlignRight | Qt::AlignVCenter;
    case FieldType::Boolean:
        return Qt::AlignCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

RecordsetModel::RecordsetModel(QObject* parent) : QAbstractTableModel(parent) {}
RecordsetModel::~RecordsetModel() = default;

void RecordsetModel::setRecordset(std::optional<Recordset> records)
{
    beginResetModel();
    records_.reset();
    fields_.clear();
    kept_.clear();
    count_ = 0;
    at_ = -1;
    const Outcome counted = attempt([&] {
        if (!records)
            return;
        for (Field& f : records->Fields())
            fields_.push_back(f.def());
        count_ = records->RecordCount();
        records_ = std::move(records);
        kept_.resize(kKeptRows);
    });
    if (!counted) {
        fields_.clear();
        count_ = 0;
    }
    endResetModel();
    if (!counted)
        throw EngineError(static_cast<EngineErrorNumber>(counted.number),
                          counted.description.toStdString());
}

void RecordsetModel::readAgain()
{
    if (!records_)
        return;
    const std::int64_t now = records_->RecordCount();
    for (Row& row : kept_)
        row.number = -1;
    at_ = -1;
    if (now != count_) {
        beginResetModel();
        count_ = now;
        endResetModel();
    } else if (count_ > 0) {
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

int RecordsetModel::rowCount(const QModelIndex& parent) const
{
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return parent.isValid() ? 0 : static_cast<int>(std::min(count_, most));
}

int RecordsetModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(fields_.size());
}

bool RecordsetModel::moveTo(std::int64_t row) const
{
    if (at_ == row)
        return true;
    const bool next = at_ >= 0 && row == at_ + 1;
    at_ = -1;
    if (next)
        records_->MoveNext();
    else if (!records_->moveToOrdinal(row))
        return false;
    if (records_->Eof())
        return false;  // shorter than it was when it was counted
    at_ = row;
    return true;
}

void RecordsetModel::readCell(int row, int column, Cell& cell) const
{
    const Outcome read = attempt([&] {
        if (!moveTo(row)) {
            cell.state = CellState::Failed;
            cell.text = u"This record is no longer there"_s;
            return;
        }
        const ValueView value = records_->value(column);
        if (value.isNull()) {
            cell.state = CellState::Null;
            return;
        }
        std::string scratch;
        cell.text = wholeText(value, scratch);
        cell.cut = cutToLine(cell.text);
        cell.state = CellState::Value;
    });
    if (!read) {
        at_ = -1;
        cell.state = CellState::Failed;
        cell.text = read.description;
    }
}

const RecordsetModel::Cell& RecordsetModel::cell(int row, int column) const
{
    Row& slot = kept_[static_cast<std::size_t>(row % kKeptRows)];
    if (slot.number != row) {
        slot.number = row;
        slot.cells.assign(fields_.size(), {});
    }
    Cell& wanted = slot.cells[static_cast<std::size_t>(column)];
    if (wanted.state == CellState::NotRead)
        readCell(row, column, wanted);
    return wanted;
}

QVariant RecordsetModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !records_ || index.row() >= rowCount() ||
        index.column() >= columnCount())
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(fieldAlignment(field(index.column()).type));
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != Qt::ForegroundRole &&
        role != Qt::AccessibleTextRole)
        return {};

    const Cell& shown = cell(index.row(), index.column());
    switch (role) {
    case Qt::DisplayRole:
        return shown.state == CellState::Failed ? u"#Error"_s : shown.text;
    case Qt::AccessibleTextRole:
        return shown.state == CellState::Null ? u"Null"_s : shown.text;
    case Qt::ForegroundRole:
        if (shown.state == CellState::Failed)
            return QGuiApplication::palette().color(QPalette::PlaceholderText);
        return {};
    default:
        if (shown.state == CellState::Null)
            return u"Null: no value"_s;
        return shown.state == CellState::Failed || shown.cut ? shown.text : QVariant();
    }
}

QVariant RecordsetModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section < 0)
        return {};
    if (orientation == Qt::Vertical)
        return role == Qt::DisplayRole && section < rowCount() ? QVariant(section + 1) : QVariant();
    if (section >= columnCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return fromUtf8(field(section).name);
    case Qt::ToolTipRole:
        return u"%1\n%2"_s.arg(fromUtf8(field(section).name), fieldTypeTip(field(section)));
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(fieldAlignment(field(section).type));
    default:
        return {};
    }
}

QString RecordsetModel::fullText(int row, int column) const
{
    QString whole;
    attempt([&] {
        if (records_ && row < rowCount() && column < columnCount() && moveTo(row)) {
            std::string scratch;
            whole = wholeText(records_->value(column), scratch);
        }
    });
    return whole;
}

}  // namespace velnor
