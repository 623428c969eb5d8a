// windows/find_bar.h - the line below a grid or text in which people type what they look for.
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;

namespace velnor {

class FindBar : public QWidget {
    Q_OBJECT
public:
    explicit FindBar(QWidget* parent = nullptr);

    QLineEdit* words;
    QToolButton* nextBtn;

    /// Comes up with the words chosen, ready to be typed over.
    void open();
    QString text() const;
    /// "Not found", a place, or nothing.
    void say(const QString& answer);
    QString answer() const;

signals:
    /// Enter, F3 in the bar, or its button.
    void findNext();
    /// Escape, or its close button.
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QLabel* answer_;
};

}  // namespace velnor
