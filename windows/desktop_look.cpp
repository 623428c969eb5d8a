#include "windows/desktop_look.h"

#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QPalette>
#include <QScopedValueRollback>
#include <QStyle>

#include "windows/outline_style.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr int kDark = 128;
constexpr int kReadable = 80;

/// Some desktops give dark fields and leave hints black: a grey that reads on either.
void mendHints()
{
    const QPalette now = QApplication::palette();
    const QColor hint = now.color(QPalette::PlaceholderText);
    const int apart = qAbs(hint.lightness() - now.color(QPalette::Base).lightness());
    if (apart * hint.alpha() / 255 >= kReadable)
        return;
    QPalette mended = now;
    mended.setColor(QPalette::PlaceholderText, QColor(128, 128, 128));
    QApplication::setPalette(mended);
}

}  // namespace

DesktopLook::DesktopLook(QApplication& app)
{
    QApplication::setWindowIcon(QIcon(u":/velnor/icons/velnor.svg"_s));
    QIcon::setFallbackSearchPaths(QIcon::fallbackSearchPaths() << u"/usr/share/icons"_s);
    ownIcons_ = QIcon::themeName().isEmpty() || QIcon::themeName() == u"hicolor";
    follow();
    const QString style = QApplication::style()->name().toLower();
    if (style == u"windows" || style == u"fusion")
        QApplication::setStyle(new OutlineStyle);
    app.installEventFilter(this);
}

void DesktopLook::follow()
{
    if (following_)
        return;
    const QScopedValueRollback guard(following_, true);
    const bool dark = QApplication::palette().color(QPalette::Window).lightness() < kDark;
    const QString theme = dark ? u"breeze-dark"_s : u"breeze"_s;
    if (QIcon::fallbackThemeName() != theme) {
        QIcon::setFallbackThemeName(theme);
        if (ownIcons_)
            QIcon::setThemeName(theme);
    }
    mendHints();
}

bool DesktopLook::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        follow();
    return QObject::eventFilter(watched, event);
}

}  // namespace velnor
