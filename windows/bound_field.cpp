#include "windows/bound_field.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "access/value_text.h"
#include "core/file_commands.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

QString textOf(ValueView value)
{
    if (value.isNull())
        return {};
    if (value.kind() == ValueKind::Text)
        return fromUtf8(value.asText());
    std::string scratch;
    appendText(scratch, value);
    return fromUtf8(scratch);
}

}  // namespace

BoundField::BoundField(QWidget* box, int position, const FieldDef& field, bool mayBeNull)
    : QObject(box), box_(box), position_(position), numberedByFile_(field.autonumber),
      mayBeNull_(mayBeNull)
{
    if (auto* line = qobject_cast<QLineEdit*>(box))
        connect(line, &QLineEdit::textEdited, this, &BoundField::noteChange);
    else if (auto* memo = qobject_cast<QPlainTextEdit*>(box))
        connect(memo, &QPlainTextEdit::textChanged, this, &BoundField::noteChange);
    else if (auto* check = qobject_cast<QCheckBox*>(box))
        connect(check, &QCheckBox::clicked, this, &BoundField::noteChange);
    setWritable(true);
}

void BoundField::noteChange()
{
    changed_ = changed_ || !showing_;
}

QString BoundField::text() const
{
    if (const auto* line = qobject_cast<QLineEdit*>(box_.data()))
        return line->text();
    if (const auto* memo = qobject_cast<QPlainTextEdit*>(box_.data()))
        return memo->toPlainText();
    return {};
}

void BoundField::setText(const QString& text)
{
    showing_ = true;
    if (auto* line = qobject_cast<QLineEdit*>(box_.data())) {
        line->setText(text);
        line->setCursorPosition(0);
    } else if (auto* memo = qobject_cast<QPlainTextEdit*>(box_.data())) {
        memo->setPlainText(text);
    }
    showing_ = false;
    changed_ = false;
}

void BoundField::show(const Recordset& records)
{
    showValue(records.value(position_));
}

void BoundField::showValue(ValueView value)
{
    auto* check = qobject_cast<QCheckBox*>(box_.data());
    if (!check)
        return setText(textOf(value));
    // A file that knows neither yes nor no shows as half a tick until people decide.
    const bool undecided = value.isNull() && mayBeNull_;
    check->setTristate(undecided);
    check->setCheckState(undecided                            ? Qt::PartiallyChecked
                         : realOf(value).value_or(0.0) != 0.0 ? Qt::Checked
                                                              : Qt::Unchecked);
    changed_ = false;
}

void BoundField::clear()
{
    if (auto* check = qobject_cast<QCheckBox*>(box_.data())) {
        check->setTristate(false);
        check->setChecked(false);
    }
    setText({});
}

void BoundField::save(Recordset& records)
{
    if (const auto* check = qobject_cast<QCheckBox*>(box_.data())) {
        const bool none = check->checkState() == Qt::PartiallyChecked;
        records.setValue(position_,
                         none ? ValueView::null() : ValueView::boolean(check->isChecked()));
        return;
    }
    QString typed = text();
    if (typed.isEmpty())
        return records.setValue(position_, ValueView::null());
    if (qobject_cast<QPlainTextEdit*>(box_.data()))
        typed.replace(u'\n', u"\r\n"_s);  // line ends as every program of these files has them
    const std::string bytes = typed.toStdString();
    records.setValue(position_, ValueView::text(bytes));
}

void BoundField::setWritable(bool writable)
{
    const bool on = writable && !numberedByFile_;
    if (auto* line = qobject_cast<QLineEdit*>(box_.data()))
        line->setReadOnly(!on);
    else if (auto* memo = qobject_cast<QPlainTextEdit*>(box_.data()))
        memo->setReadOnly(!on);
    else if (box_)
        box_->setEnabled(on);
}

}  // namespace velnor
