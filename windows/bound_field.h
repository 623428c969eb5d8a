// windows/bound_field.h - a control that shows one field of the record in hand and takes what is
// typed into it.
//
// Only what people changed is written: a record that was looked at stays as it is, byte for byte.
// An emptied box writes Null.
#pragma once

#include <QObject>
#include <QPointer>

#include "access/engine.h"

class QWidget;

namespace velnor {

class BoundField : public QObject {
    Q_OBJECT
public:
    /// `box` is a QLineEdit, a QPlainTextEdit or a QCheckBox; `position` that of the field in the
    /// record.
    BoundField(QWidget* box, int position, const FieldDef& field);

    QWidget* box() const { return box_; }
    int position() const { return position_; }
    /// Changed by people since it was shown or written.
    bool changed() const { return changed_; }
    void forgetChange() { changed_ = false; }
    /// The text of a line or memo; empty of a check box.
    QString text() const;

    void show(ValueView value);
    void clear();
    /// Puts the text into the edit buffer; throws what the engine says to it.
    void writeTo(Recordset& records) const;
    void setWritable(bool writable);

signals:
    void edited();

private:
    void noteChange();
    void setText(const QString& text);

    QPointer<QWidget> box_;
    int position_;
    bool numberedByFile_;
    bool changed_ = false;
    bool showing_ = false;
};

}  // namespace velnor
