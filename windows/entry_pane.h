// windows/entry_pane.h - a pane higher than its window, moved by a scroll bar that counts in
// percent of what is hidden.
#pragma once

#include <QWidget>

class QScrollBar;

namespace velnor {

class EntryPane : public QWidget {
    Q_OBJECT
public:
    explicit EntryPane(QWidget* parent = nullptr);

    QWidget* Frame1;       // what is moved; its layout gives its height
    QScrollBar* VScroll1;  // 0 to 100; on when some of Frame1 is hidden

    void VScroll1_Change();
    /// Moves so that a control of Frame1 is seen.
    void reveal(const QWidget& control);
    int hiddenHeight() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void arrange();
    QWidget* view_;
};

}  // namespace velnor
