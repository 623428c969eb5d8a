// core/options_tab.h - the "Tools" workspace: the colours, the general options, those of search and
// databases, and those of mail.
//
// Nothing takes effect before OptnApplyBtn, which writes both settings files.
#pragma once

#include <array>
#include <functional>

#include "core/colors.h"
#include "core/main_tab.h"
#include "core/settings.h"

class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QScrollBar;
class QStackedWidget;

namespace velnor {

class ColorBox;

class OptionsTab : public MainTab {
    Q_OBJECT
public:
    static constexpr int kColorsFrame = 0;
    static constexpr int kGeneralFrame = 1;
    static constexpr int kSearchFrame = 2;
    static constexpr int kMailFrame = 3;

    /// The favourites are the main window's.
    explicit OptionsTab(MailFavorites& favorites, QWidget* parent = nullptr);

    // Controls.
    std::array<QGroupBox*, 4> SSFrame7;      // the four forms
    std::array<ColorBox*, 24> Text5;         // twelve backgrounds, then the texts on them
    std::array<QCheckBox*, 9> CHKOPTION;     // the flags
    std::array<QRadioButton*, 3> RDBROWSER;  // text of grids: flat, raised, lowered
    QComboBox* CMBMENU;                      // style of menus
    QComboBox* CMBMENUTYPE;                  // type of menus
    QComboBox* CMBFONTTYPE;                  // type of labels
    QScrollBar* HScroll2;                    // height of the rows of grids, twips
    QLabel* Label7;                          // the same as a number
    std::array<QLineEdit*, 14> Text8;        // search blocks, address book, sender, favourites
    QPushButton* OptnApplyBtn;
    QPushButton* OptWinColorBtn;
    QPushButton* OptnOpenMailBtn;

    QString caption() const override { return tr("Tools"); }
    QList<ToolRow> tools() override;

    /// Shows the options in force.
    void Form_Load();
    void OptnApplyBtn_Click();
    void OptWinColorBtn_Click();
    void OptnOpenMailBtn_Click();
    void Text5_Click(int index);
    void showFrame(int frame);
    int frameInFront() const;
    /// The favourites that aren't blank, one a line.
    QString addressList() const;

    /// Runs after the options were taken over: windows take their colours and type anew.
    std::function<void()> applied = [] {};

private:
    // options_tab_controls.cpp
    void buildControls();
    QGroupBox* buildColors();
    QGroupBox* buildGeneral();
    QGroupBox* buildSearch();
    QGroupBox* buildMail();
    QCheckBox* option(int index, const QString& text, QWidget* parent);
    QLineEdit* field(int index, const QString& tip, QWidget* parent);
    void connectControls();

    void showSamples();
    ColorPair boxPair(std::size_t pair) const;
    bool blocksFit();
    void takeOptions();

    MailFavorites& favorites_;
    QListWidget* choice_;
    QStackedWidget* forms_;
    std::array<QLabel*, 12> samples_;
};

}  // namespace velnor
