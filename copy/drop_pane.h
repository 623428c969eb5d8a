// copy/drop_pane.h - a pane that takes one file from the desktop. It lights up while a file that it
// would take is above it.
#pragma once

#include <QString>
#include <QWidget>

class QMimeData;

namespace velnor {

class DropPane : public QWidget {
    Q_OBJECT
public:
    explicit DropPane(QWidget* parent = nullptr);

signals:
    void dropped(const QString& path);  ///< "C:\folder\file.ext"
    void refused(const QString& why);   ///< for the status bar

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void light(bool on);
    bool lit_ = false;
};

}  // namespace velnor
