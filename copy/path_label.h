// copy/path_label.h - a label for a path: shortened in the middle where it is too narrow, whole in
// its tip.
#pragma once

#include <QLabel>

namespace velnor {

class PathLabel : public QLabel {
    Q_OBJECT
public:
    using QLabel::QLabel;

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
};

}  // namespace velnor
