#include <QPushButton>
#include <QTest>

#include "core/attempt.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;

namespace {

class Window : public QObject {
public:
    void OKBtn_Click() { throw EngineError(EngineErrorNumber::InvalidPassword, "no password"); }
    void CMBRECORD_Click(int index) { clicked << index; }
    QList<int> clicked;
};

}  // namespace

class AttemptTest : public QObject {
    Q_OBJECT

private slots:
    void aStepThatEndsWellIsNumber0()
    {
        const Outcome done = attempt([] {});
        QVERIFY(bool(done));
        QCOMPARE(done.number, 0);
    }

    void everyKindOfFailureHasItsNumber()
    {
        const auto engine =
            attempt([] { throw EngineError(EngineErrorNumber::DuplicateKey, "twice"); });
        QCOMPARE(engine.number, 3022);
        QCOMPARE(engine.description, "twice");
        const auto run = attempt([] { throw RunError(RunErrorNumber::FileNotFound, "C:\\ä"); });
        QCOMPARE(run.number, 53);
        QCOMPARE(run.description, QString::fromUtf8("C:\\ä"));
        QCOMPARE(attempt([] { throw std::bad_alloc(); }).number, 7);
        QCOMPARE(attempt([] { throw std::runtime_error("else"); }).number, 3000);
        QCOMPARE(attempt([] { throw 5; }).number, 3000);
    }

    void oneFailureDoesNotStopTheNextStep()
    {
        int steps = 0;
        attempt([&] { ++steps; });
        attempt([] { throw std::bad_alloc(); });
        attempt([&] { ++steps; });
        QCOMPARE(steps, 2);
    }

    void noFailureReachesTheEventLoop()
    {
        testing::ScriptedPrompt prompt;
        Window window;
        QPushButton button;
        connect(&button, &QPushButton::clicked, &window, edge(&window, &Window::OKBtn_Click));
        button.click();
        QCOMPARE(prompt.told, QStringList{"Error - 3031 - no password"});
    }

    void aGroupsProcedureGetsItsIndex()
    {
        Window window;
        QPushButton button;
        connect(&button, &QPushButton::clicked, &window,
                edge(&window, &Window::CMBRECORD_Click, 1));
        button.click();
        QCOMPARE(window.clicked, QList<int>{1});
    }
};

QTEST_MAIN(AttemptTest)
#include "tst_attempt.moc"
