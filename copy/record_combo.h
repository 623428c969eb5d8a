// copy/record_combo.h - the choice of a record source. Its text is set by the program: a DBF shows
// its own name, which is no entry of the list.
#pragma once

#include <QComboBox>

namespace velnor {

class RecordCombo : public QComboBox {
    Q_OBJECT
public:
    explicit RecordCombo(QWidget* parent = nullptr);

    /// Without entries there is nothing to choose from, and no list opens.
    void showPopup() override;

protected:
    /// The text is no place to type in: a click on it opens the list.
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace velnor
