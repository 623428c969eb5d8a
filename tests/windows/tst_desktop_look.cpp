// Light and dark: icons, hints and colours follow the desktop, also when it changes while the
// program runs.
#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QPalette>
#include <QStyle>
#include <QTest>
#include <QToolBar>

#include "core/colors.h"
#include "tests/windows/main_window_case.h"
#include "windows/childfrm1.h"
#include "windows/desktop_look.h"
#include "windows/record_grid.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

QPalette darkPalette()
{
    QPalette palette(QColor(49, 54, 59), QColor(42, 46, 50));
    palette.setColor(QPalette::Base, QColor(27, 30, 32));
    palette.setColor(QPalette::Text, QColor(252, 252, 252));
    palette.setColor(QPalette::PlaceholderText, QColor(0, 0, 0, 128));
    return palette;
}

int apart(const QColor& a, const QColor& b)
{
    return qAbs(a.lightness() - b.lightness());
}

}  // namespace

class TstDesktopLook : public QObject, MainWindowCase {
    Q_OBJECT
private slots:
    void initTestCase() { look_ = std::make_unique<DesktopLook>(*qApp); }
    void cleanupTestCase() { look_.reset(); }
    void init()
    {
        light_ = QApplication::palette();
        setUp();
        window_->Form_Load();
        window_->show();
    }
    void cleanup()
    {
        tearDown();
        QApplication::setPalette(light_);
    }

    void iconsAndHints_followTheDesktop()
    {
        QCOMPARE(QIcon::fallbackThemeName(), "breeze");
        QApplication::setPalette(darkPalette());
        QCOMPARE(QIcon::fallbackThemeName(), "breeze-dark");
        const QPalette now = QApplication::palette();
        QVERIFY(apart(now.color(QPalette::PlaceholderText), now.color(QPalette::Base)) >= 80);
        QApplication::setPalette(light_);
        QCOMPARE(QIcon::fallbackThemeName(), "breeze");
    }

    void openWindows_turnDark_withEveryTextReadable()
    {
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        const auto* child = qobject_cast<ChildFrm1*>(window_->shell()->activeChild());
        QApplication::setPalette(darkPalette());
        QTRY_COMPARE(child->MSFlexGrid1->palette().color(QPalette::Base), QColor(27, 30, 32));
        const QPalette grid = child->MSFlexGrid1->palette();
        QVERIFY(apart(grid.color(QPalette::Base), grid.color(QPalette::Text)) > 150);
        for (const QWidget* frame :
             {static_cast<QWidget*>(window_.get()), static_cast<QWidget*>(window_->shell())}) {
            QVERIFY(frame->palette().color(QPalette::Window).lightness() < 128);
            for (const QLabel* label : frame->findChildren<QLabel*>())
                if (label->foregroundRole() == QPalette::WindowText)
                    QVERIFY2(apart(label->palette().color(QPalette::Window),
                                   label->palette().color(QPalette::WindowText)) > 60,
                             qPrintable(label->objectName() + label->text()));
        }
    }

    void aDesktopColourAmongSetOnes_follows()
    {
        globals().TOOLBAR_BACK_COLOR = colorValue(0x80000005);  // the desktop's field colour
        globals().TOOLBAR_TEXT_COLOR = 0xFF;                    // red, people's own
        window_->applyOptions();
        const auto* bar = window_->findChild<QToolBar*>("ToolBarComp1_2");
        QVERIFY(bar->palette().color(QPalette::Window).lightness() > 128);
        QApplication::setPalette(darkPalette());
        QTRY_COMPARE(bar->palette().color(QPalette::Window), QColor(27, 30, 32));
        QCOMPARE(bar->palette().color(QPalette::WindowText), QColor(255, 0, 0));
    }

    void theIconOfAToolThatIsOff_isFaint()
    {
        QPixmap full(16, 16);
        full.fill(Qt::white);
        const QPixmap off =
            QApplication::style()->generatedIconPixmap(QIcon::Disabled, full, nullptr);
        QVERIFY(off.toImage().pixelColor(8, 8).alpha() < 128);
    }

private:
    std::unique_ptr<DesktopLook> look_;
    QPalette light_;
};

QTEST_MAIN(TstDesktopLook)
#include "tst_desktop_look.moc"
