// windows/bound_field.h - a control bound to one field of a Data control: it shows the field of the
// record in hand and takes what is typed into it.
//
// Only what people changed is written: a record that was looked at stays as it is, byte for byte.
// An emptied box writes Null.
#pragma once

#include <QObject>
#include <QPointer>

#include "windows/data_control.h"

class QWidget;

namespace velnor {

class BoundField : public QObject, public DataBinding {
    Q_OBJECT
public:
    /// `box` is a QLineEdit, a QPlainTextEdit or a QCheckBox; `position` that of the field in the
    /// record. A check box whose field `mayBeNull` has a third state.
    BoundField(QWidget* box, int position, const FieldDef& field, bool mayBeNull = true);

    QWidget* box() const { return box_; }
    /// The text of a line or memo; empty of a check box.
    QString text() const;
    void setWritable(bool writable);

    /// Changed by people since it was shown.
    bool changed() const override { return changed_; }
    /// Throws what the engine says to the text.
    void save(Recordset& records) override;
    void show(const Recordset& records) override;
    void clear() override;

private:
    void noteChange();
    void showValue(ValueView value);
    void setText(const QString& text);

    QPointer<QWidget> box_;
    int position_;
    bool numberedByFile_;
    bool mayBeNull_;
    bool changed_ = false;
    bool showing_ = false;
};

}  // namespace velnor
