#include <QApplication>
#include <QPalette>
#include <QTest>

#include "core/colors.h"
#include "core/startup.h"

using namespace velnor;

class ColorsTest : public QObject {
    Q_OBJECT

private slots:
    void bytesAreBlueGreenRedFromTheTop()
    {
        QCOMPARE(toQColor(0xFF8080), QColor(0x80, 0x80, 0xFF));
        QCOMPARE(toQColor(255), QColor(Qt::red));
        QCOMPARE(toQColor(0xFF00), QColor(Qt::green));
        QCOMPARE(toQColor(0), QColor(Qt::black));
    }

    void backAndForthIsTheSame()
    {
        for (const ColorValue value : {0, 255, 0xFF00, 0xC0E0FF, 0xFFFFFF, 0x4080})
            QCOMPARE(toColorValue(toQColor(value)), value);
    }

    void coloursOfTheDesktopFollowItsPalette()
    {
        QPalette dark;
        dark.setColor(QPalette::Base, QColor(20, 20, 20));
        dark.setColor(QPalette::Text, QColor(240, 240, 240));
        QApplication::setPalette(dark);
        QCOMPARE(toQColor(colorValue(0x80000005)), QColor(20, 20, 20));
        QCOMPARE(toQColor(colorValue(0x80000008)), QColor(240, 240, 240));
        QApplication::setPalette(QPalette());
    }

    void pairsOfThePresetCanBeTold()
    {
        const auto distance = [](quint32 a, quint32 b) {
            return qAbs(qGray(toQColor(colorValue(a)).rgb()) -
                        qGray(toQColor(colorValue(b)).rgb()));
        };
        QVERIFY(distance(0x80000005, 0x80000008) > 80);
        QVERIFY(distance(0x80000004, 0x80000007) > 80);
        QVERIFY(distance(0x80000009, 0x80000002) > 80);
        QVERIFY(distance(0x8000000F, 0x80000012) > 80);
    }

    void coloursThatNoFileKeeps_followTheWindow_untilTheyAreSet()
    {
        resetGlobals();
        SetDefaultColors();
        auto& G = globals();
        QCOMPARE(displayColors(), kFirstDisplayColors);  // a window in colours of its own
        QCOMPARE(buttonColors(), kFirstButtonColors);
        QCOMPARE(tabColors(), kFirstTabColors);
        G.MAIN_BACK_COLOR = kDesktopWindow.back;
        G.MAIN_TEXT_COLOR = kDesktopWindow.text;
        QCOMPARE(displayColors(), kDesktopWindow);
        QCOMPARE(buttonColors(), kDesktopWindow);
        QCOMPARE(tabColors(), kDesktopWindow);
        G.DISPLAY_TEXT_COLOR = 0x123456;
        QCOMPARE(displayColors(), (ColorPair{0xE0E0E0, 0x123456}));
        QCOMPARE(buttonColors(), kDesktopWindow);
        resetGlobals();
    }
};

QTEST_MAIN(ColorsTest)
#include "tst_colors.moc"
