// The help: every topic has a page, every link leads somewhere, search finds words.
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpression>
#include <QTest>
#include <QTextBrowser>

#include "assist/help_window.h"

using namespace velnor;

class TstHelpWindow : public QObject {
    Q_OBJECT
private slots:
    void everyTopic_hasAPage_andItsLinksLeadSomewhere()
    {
        HelpWindow help;
        for (const QString& topic : HelpWindow::topics()) {
            help.showTopic(topic);
            QCOMPARE(help.page->source().toString(), "qrc:/velnor/help/" + topic + ".html");
            QVERIFY2(help.page->toPlainText().size() > 80, qPrintable(topic));
            QFile file(":/velnor/help/" + topic + ".html");
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString source = QString::fromUtf8(file.readAll());
            static const QRegularExpression link("href=\"([^\"]+)\"");
            for (auto each = link.globalMatch(source); each.hasNext();) {
                const QString target = each.next().captured(1);
                QVERIFY2(QFile::exists(":/velnor/help/" + target), qPrintable(target));
            }
        }
    }

    void anUnknownTopic_showsTheFirstPage()
    {
        HelpWindow help;
        help.showTopic("copy");
        help.showTopic("nothing of the kind");
        QCOMPARE(help.contents->currentRow(), 0);
    }

    void search_leavesThePagesThatHaveAllWords()
    {
        HelpWindow help;
        help.search->setText("leading NUMBER");
        QStringList left;
        for (int row = 0; row < help.contents->count(); ++row)
            if (!help.contents->item(row)->isHidden())
                left << help.contents->item(row)->text();
        QCOMPARE(left, QStringList{"Copy records"});
        help.search->clear();
        QVERIFY(!help.contents->item(0)->isHidden());
    }
};

QTEST_MAIN(TstHelpWindow)
#include "tst_help_window.moc"
