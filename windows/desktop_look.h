// windows/desktop_look.h - icons, style and hints that go with the desktop's colours, light or dark,
// from the start and when those change while the program runs. What the desktop brings of its own
// stays. Keep one as long as the application lives.
#pragma once

#include <QObject>

class QApplication;

namespace velnor {

class DesktopLook : public QObject {
    Q_OBJECT
public:
    explicit DesktopLook(QApplication& app);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void follow();
    bool ownIcons_ = false;   // the desktop has no icons: ours are the theme
    bool following_ = false;  // mending the palette tells of a new palette
};

}  // namespace velnor
