// The options workspace through its controls.
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTest>

#include "core/color_box.h"
#include "core/globals.h"
#include "core/options_tab.h"
#include "core/startup.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

class TstOptionsTab : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
        SetDefaultColors();
        SetDefaultOptions();
        globals().APP_PATH = "C:\\app";
        sandbox_->makeFolders("C:\\app");
        favorites_ = {};
        tab_ = std::make_unique<OptionsTab>(favorites_);
        tab_->applied = [this] { ++applied_; };
        applied_ = 0;
        tab_->show();
    }
    void cleanup()
    {
        tab_.reset();
        prompt_.reset();
        sandbox_.reset();
    }

    void frames_bearTheirTitles_andTheToolsBringThemUp()
    {
        QCOMPARE(tab_->SSFrame7[0]->title(), " Set Program Colors ");
        QCOMPARE(tab_->SSFrame7[1]->title(), " Set Program General Window Options ");
        QCOMPARE(tab_->SSFrame7[2]->title(), " Set Program Search and Database Options ");
        QCOMPARE(tab_->SSFrame7[3]->title(), " Set Program E-Mail Options ");
        const QStringList ids{"ID_SetColors", "ID_GeneralOptions", "ID_SearchOptions",
                              "ID_EMailOptions"};
        const QList<ToolRow> tools = tab_->tools();
        for (int i = 3; i >= 0; --i) {
            QCOMPARE(tools[i].id, ids[i]);
            tools[i].procedure();
            QCOMPARE(tab_->frameInFront(), i);
            QVERIFY(tab_->SSFrame7[size_t(i)]->isVisible());
        }
    }

    void mnemonics_areDifferentOnEachForm_andFromTheMenus()
    {
        for (int form = 0; form < 4; ++form) {
            tab_->showFrame(form);
            QString seen = "FEVOCQUWH";
            for (const QLabel* label : tab_->findChildren<QLabel*>())
                if (label->buddy() && label->isVisible())
                    checkMnemonic(label->text(), seen);
            for (const QAbstractButton* button : tab_->findChildren<QAbstractButton*>())
                if (button->isVisible())
                    checkMnemonic(button->text(), seen);
        }
    }

    void tab_goesFromTheListThroughTheForm_toApply()
    {
        tab_->showFrame(OptionsTab::kSearchFrame);
        QVERIFY(QTest::qWaitForWindowActive(tab_.get()));
        tab_->findChild<QWidget*>("OptionForms")->setFocus();
        QStringList order;
        for (int i = 0; i < 6; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order << QApplication::focusWidget()->objectName();
        }
        QCOMPARE(order, (QStringList{"Text8_0", "Text8_1", "CHKOPTION_6", "CHKOPTION_7",
                                     "CHKOPTION_8", "OptnApplyBtn"}));
    }

    void captions_areThoseOfTheOptions_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        const QStringList texts{
            "Use Bold Type on all Windows",
            "Save Window Resize on Exit",
            "Display Lines on Main Window System File/Folder Explorer",
            "Display Lines on Database Grids",
            "Display Text Source for Documents and HTML Text",
            "Group by Folders on Organize Files View",
            "Prompt to Save Copy To File Before Database Copy.",
            "Prompt to Save File Before Saving changes to Table Design.",
            "Log From and To Database Files Copy Information to the Organizer."};
        for (int i = 0; i < texts.size(); ++i)
            QTest::newRow(qPrintable(texts[i])) << i << texts[i];
    }
    void captions_areThoseOfTheOptions()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        QCOMPARE(tab_->CHKOPTION[size_t(index)]->text(), text);
        QCOMPARE(tab_->CHKOPTION[size_t(index)]->objectName(), QString("CHKOPTION_%1").arg(index));
    }

    void choices_areThoseOfTheOptions()
    {
        const auto choices = [](const QComboBox* box) {
            QStringList texts;
            for (int i = 0; i < box->count(); ++i)
                texts << box->itemText(i);
            return texts;
        };
        QCOMPARE(choices(tab_->CMBMENU),
                 (QStringList{"Windows 95/98", "Windows 2000", "Windows XP"}));
        QCOMPARE(choices(tab_->CMBMENUTYPE), (QStringList{"None", "Light Raised", "Heavy Raised",
                                                          "Light Inset", "Heavy Inset"}));
        QCOMPARE(choices(tab_->CMBFONTTYPE), (QStringList{"None", "Raised Light", "Raised Heavy",
                                                          "Lowered Light", "Lowered Heavy"}));
        QCOMPARE(tab_->RDBROWSER[0]->text(), "Flat Text");
        QCOMPARE(tab_->RDBROWSER[1]->text(), "Raised Text");
        QCOMPARE(tab_->RDBROWSER[2]->text(), "Lowered Text");
        QCOMPARE(tab_->OptWinColorBtn->toolTip(), "Set Colors to Window Color Selections");
    }

    void load_showsTheOptionsInForce()
    {
        auto& G = globals();
        G.MENU_STYLE = 1;
        G.MENU_FONT_TYPE = 4;
        G.LABEL_TEXT_TYPE = 2;
        G.GRID_ROW_HEIGHT = 330;
        G.GRID_TEXT_STYLE = "I";
        G.LOG_COPY = true;
        G.GRID_LINES = false;
        G.DEFAULT_MAIL_FROM = "me@example.org";
        favorites_[0] = "ada@example.org";
        favorites_[2] = "ben@example.org";
        tab_->Form_Load();
        QCOMPARE(tab_->CMBMENU->currentText(), "Windows 2000");
        QCOMPARE(tab_->CMBMENUTYPE->currentText(), "Heavy Inset");
        QCOMPARE(tab_->CMBFONTTYPE->currentText(), "Raised Heavy");
        QCOMPARE(tab_->Label7->text(), "330");
        QCOMPARE(tab_->HScroll2->value(), 330);
        QVERIFY(tab_->RDBROWSER[2]->isChecked());
        QVERIFY(tab_->CHKOPTION[8]->isChecked());
        QVERIFY(!tab_->CHKOPTION[3]->isChecked());
        QVERIFY(tab_->CHKOPTION[1]->isChecked());
        QCOMPARE(tab_->Text8[0]->text(), "5000");
        QCOMPARE(tab_->Text8[1]->text(), "500");
        QCOMPARE(tab_->Text8[2]->text(), "MailAddr.MLS");
        QCOMPARE(tab_->Text8[3]->text(), "me@example.org");
        QCOMPARE(tab_->Text8[4]->text(), "ada@example.org");
        QCOMPARE(tab_->addressList(), "ada@example.org\r\nben@example.org");
        QCOMPARE(tab_->Text5[0]->BackColor(), 0xFF8080);
        QCOMPARE(tab_->Text5[12]->BackColor(), colorValue(0x80000008));
        QCOMPARE(tab_->Text5[19]->BackColor(), 0x4040);
        QCOMPARE(tab_->Text5[23]->BackColor(), 0);
    }

    void nothingTakesEffect_beforeApply()
    {
        chooseColor(7, QColor(1, 2, 3));
        tab_->CHKOPTION[0]->click();
        tab_->HScroll2->setValue(400);
        QCOMPARE(globals().BROWSER_BACK_COLOR, 0xFFC0C0);
        QVERIFY(!globals().BOLD_TEXT);
        QCOMPARE(globals().GRID_ROW_HEIGHT, 250);
        QVERIFY(!sandbox_->files().exists("C:\\app\\Options.INI"));
        QVERIFY(!sandbox_->files().exists("C:\\app\\Colors.INI"));
    }

    void apply_takesAndSavesEverything()
    {
        chooseColor(7, QColor(1, 2, 3));
        tab_->CHKOPTION[0]->click();
        tab_->CHKOPTION[4]->click();
        tab_->RDBROWSER[1]->click();
        tab_->CMBMENU->setCurrentIndex(0);
        tab_->HScroll2->setValue(400);
        tab_->Text8[0]->setText("10000");
        tab_->Text8[1]->setText("2500");
        tab_->Text8[3]->setText("you@example.org");
        tab_->Text8[13]->setText("zoe@example.org");
        tab_->OptnApplyBtn->click();
        QCOMPARE(applied_, 1);
        auto& G = globals();
        QCOMPARE(G.BROWSER_BACK_COLOR, 0x030201);
        QVERIFY(G.BOLD_TEXT);
        QVERIFY(G.SHOW_TEXT_SOURCE);
        QCOMPARE(G.GRID_TEXT_STYLE, "R");
        QCOMPARE(favorites_[9], "zoe@example.org");
        // What the files have of it comes back; the rest is lost at the exit.
        resetGlobals();
        SetDefaultColors();
        SetDefaultOptions();
        globals().APP_PATH = "C:\\app";
        MailFavorites read;
        LoadColors();
        LoadOptions(read);
        QCOMPARE(globals().BROWSER_BACK_COLOR, 0x030201);
        QVERIFY(globals().BOLD_TEXT);
        QCOMPARE(globals().MENU_STYLE, 0);
        QCOMPARE(globals().GRID_ROW_HEIGHT, 400);
        QCOMPARE(globals().SEARCH_FIRST_BLOCK, 10000);
        QCOMPARE(globals().SEARCH_NEXT_BLOCK, 2500);
        QCOMPARE(globals().DEFAULT_MAIL_FROM, "you@example.org");
        QCOMPARE(read[9], "zoe@example.org");
        QVERIFY(!globals().SHOW_TEXT_SOURCE);
        QCOMPARE(globals().GRID_TEXT_STYLE, "F");
    }

    void blocksOutOfBounds_areRefused_withTheColoursSaved_data()
    {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("next");
        QTest::addColumn<QString>("words");
        const QString first =
            "Enter a Number between 2,500 and 10,000 of Files to Initially Search";
        const QString next = "Enter a Number between 500 and 2,500 of Files to Initially Search";
        QTest::newRow("2499") << "2499"
                              << "500" << first;
        QTest::newRow("10001") << "10001"
                               << "500" << first;
        QTest::newRow("no number") << "many"
                                   << "500" << first;
        QTest::newRow("next 499") << "2500"
                                  << "499" << next;
        QTest::newRow("next 2501") << "2500"
                                   << "2501" << next;
        QTest::newRow("next empty") << "2500"
                                    << "" << next;
    }
    void blocksOutOfBounds_areRefused_withTheColoursSaved()
    {
        QFETCH(QString, first);
        QFETCH(QString, next);
        QFETCH(QString, words);
        chooseColor(0, QColor(9, 9, 9));
        tab_->CHKOPTION[0]->click();
        tab_->Text8[0]->setText(first);
        tab_->Text8[1]->setText(next);
        tab_->OptnApplyBtn->click();
        QCOMPARE(prompt_->told, QStringList{words});
        QCOMPARE(globals().MAIN_BACK_COLOR, 0x090909);
        QVERIFY(sandbox_->files().exists("C:\\app\\Colors.INI"));
        QVERIFY(!sandbox_->files().exists("C:\\app\\Options.INI"));
        QVERIFY(!globals().BOLD_TEXT);
        QCOMPARE(applied_, 0);
    }

    void aColourDialog_isCalledByItsTitle_andCancelKeepsTheColour()
    {
        prompt_->expectDialog("ColorDialog", [](QDialog& dialog) {
            [&] { QCOMPARE(dialog.windowTitle(), "Select Color"); }();
            return QDialog::Rejected;
        });
        tab_->Text5[3]->click();
        QCOMPARE(tab_->Text5[3]->BackColor(), colorValue(0x8000000C));
    }

    void thePreset_givesTheDesktopsColours()
    {
        tab_->OptWinColorBtn->click();
        const auto box = [this](size_t i) {
            return static_cast<quint32>(tab_->Text5[i]->BackColor());
        };
        for (const size_t i : {0u, 3u, 6u, 7u, 8u, 9u, 10u})
            QCOMPARE(box(i), 0x80000005u);
        for (const size_t i : {12u, 15u, 18u, 19u, 20u, 21u, 22u})
            QCOMPARE(box(i), 0x80000008u);
        for (const size_t i : {1u, 2u})
            QCOMPARE(box(i), 0x80000004u);
        for (const size_t i : {13u, 14u})
            QCOMPARE(box(i), 0x80000007u);
        for (const size_t i : {4u, 17u})
            QCOMPARE(box(i), 0x80000009u);
        for (const size_t i : {5u, 16u})
            QCOMPARE(box(i), 0x80000002u);
        QCOMPARE(box(11), 0x8000000Fu);
        QCOMPARE(box(23), 0x80000012u);
        QCOMPARE(globals().MAIN_BACK_COLOR, 0xFF8080);  // not before it is applied
    }

    void anAddressBook_isChosenByItsDialog()
    {
        prompt_->expectFile({"C:\\app\\Friends.MLS"}, "Select E-Mail Address List to Open");
        tab_->OptnOpenMailBtn->click();
        QCOMPARE(prompt_->fileQuestions[0].fileName, "MailAddr.MLS");
        QCOMPARE(prompt_->fileQuestions[0].filter, "E-Mail Address List|*.MLS");
        QCOMPARE(prompt_->fileQuestions[0].defaultExtension, "MLS");
        QCOMPARE(tab_->Text8[2]->text(), "C:\\app\\Friends.MLS");
        QCOMPARE(globals().DEFAULT_ADDRESS_BOOK, "MailAddr.MLS");
    }

private:
    static void checkMnemonic(const QString& text, QString& seen)
    {
        const auto at = text.indexOf('&');
        if (at < 0)
            return;
        const QChar letter = text[at + 1].toUpper();
        QVERIFY2(!seen.contains(letter), qPrintable(text));
        seen += letter;
    }
    void chooseColor(size_t box, const QColor& color)
    {
        prompt_->expectDialog("ColorDialog", [color](QDialog& dialog) {
            static_cast<QColorDialog&>(dialog).setCurrentColor(color);
            return QDialog::Accepted;
        });
        tab_->Text5[box]->click();
    }

    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
    std::unique_ptr<OptionsTab> tab_;
    MailFavorites favorites_;
    int applied_ = 0;
};

QTEST_MAIN(TstOptionsTab)
#include "tst_options_tab.moc"
