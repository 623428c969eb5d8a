// windows/pane_heading.h - the small line above a pane: what it holds, and at its end what acts on
// it.
#pragma once

#include <QFrame>

class QLabel;

namespace velnor {

class PaneHeading : public QFrame {
    Q_OBJECT
public:
    /// `end` may be null; it goes to the right end.
    PaneHeading(const QString& text, QWidget* end, QWidget* parent = nullptr);
    void setText(const QString& text);
    void setBuddy(QWidget* pane);

private:
    QLabel* label_;
};

}  // namespace velnor
