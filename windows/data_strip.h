// windows/data_strip.h - the face of a Data control: first, previous, its caption, next, last.
#pragma once

#include <QWidget>

class QLabel;
class QToolButton;

namespace velnor {

class DataStrip : public QWidget {
    Q_OBJECT
public:
    explicit DataStrip(QWidget* parent = nullptr);
    void setCaption(const QString& caption);
    const QString& caption() const { return caption_; }
    void setMoving(bool possible);

    QToolButton* firstBtn;
    QToolButton* previousBtn;
    QToolButton* nextBtn;
    QToolButton* lastBtn;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showCaption();
    QToolButton* button(const QString& name, const QString& icon, const QString& tip);
    QLabel* label_;
    QString caption_;
};

}  // namespace velnor
