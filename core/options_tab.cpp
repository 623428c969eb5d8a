#include "core/options_tab.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QStackedWidget>

#include "core/attempt.h"
#include "core/color_box.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/upcalls.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kPairs = 12;
constexpr std::size_t kMainPair = 0, kTabPair = 2, kDisplayPair = 5, kButtonPair = 11;
constexpr int kFirstFavorite = 4;
constexpr std::array<const char*, 3> kGridStyles{"F", "R", "I"};

/// The colours in the order of their boxes.
std::array<ColorValue*, 24> boxColors(Globals& G)
{
    return {&G.MAIN_BACK_COLOR,   &G.TOOLBAR_BACK_COLOR, &G.TAB_BACK_COLOR,
            &G.LIST_BACK_COLOR,   &G.ENTRY_BACK_COLOR,   &G.DISPLAY_BACK_COLOR,
            &G.SELECT_BACK_COLOR, &G.BROWSER_BACK_COLOR, &G.ENTRY_WINDOW_BACK_COLOR,
            &G.DESIGN_BACK_COLOR, &G.TIPS_BACK_COLOR,    &G.BUTTON_BACK_COLOR,
            &G.MAIN_TEXT_COLOR,   &G.TOOLBAR_TEXT_COLOR, &G.TAB_TEXT_COLOR,
            &G.LIST_TEXT_COLOR,   &G.ENTRY_TEXT_COLOR,   &G.DISPLAY_TEXT_COLOR,
            &G.SELECT_TEXT_COLOR, &G.BROWSER_TEXT_COLOR, &G.ENTRY_WINDOW_TEXT_COLOR,
            &G.DESIGN_TEXT_COLOR, &G.TIPS_TEXT_COLOR,    &G.BUTTON_TEXT_COLOR};
}

/// The flags in the order of their boxes.
std::array<bool*, 9> boxFlags(Globals& G)
{
    return {&G.BOLD_TEXT,          &G.SAVE_WINDOW_SIZE,   &G.EXPLORER_GRID_LINES,
            &G.GRID_LINES,         &G.SHOW_TEXT_SOURCE,   &G.GROUP_BY_FOLDER,
            &G.PROMPT_SAVE_COPYTO, &G.PROMPT_SAVE_DESIGN, &G.LOG_COPY};
}

/// The desktop's colour for each box.
constexpr std::array<quint32, 24> kDesktopBoxes{
    0x80000005, 0x80000004, 0x80000004, 0x80000005, 0x80000009, 0x80000002, 0x80000005, 0x80000005,
    0x80000005, 0x80000005, 0x80000005, 0x8000000F, 0x80000008, 0x80000007, 0x80000007, 0x80000008,
    0x80000002, 0x80000009, 0x80000008, 0x80000008, 0x80000008, 0x80000008, 0x80000008, 0x80000012};

bool hardToRead(const QColor& back, const QColor& text)
{
    return qAbs(qGray(back.rgb()) - qGray(text.rgb())) < 60;
}

}  // namespace

OptionsTab::OptionsTab(MailFavorites& favorites, QWidget* parent)
    : MainTab(parent), favorites_(favorites)
{
    setObjectName(u"OptionsTab"_s);
    buildControls();
    connectControls();
    Form_Load();
}

QList<ToolRow> OptionsTab::tools()
{
    const auto frame = [this](const char* id, const QString& text, const QString& icon,
                              int number) {
        return ToolRow{
            QString::fromLatin1(id), text, {}, [this, number] { showFrame(number); }, icon};
    };
    return {frame("ID_SetColors", u"Set &Colors"_s, u"color-management"_s, kColorsFrame),
            frame("ID_GeneralOptions", u"&General Options"_s, u"configure"_s, kGeneralFrame),
            frame("ID_SearchOptions", u"&Search Options"_s, u"edit-find"_s, kSearchFrame),
            frame("ID_EMailOptions", u"&EMail Options"_s, u"mail-message"_s, kMailFrame),
            {u"ID_OptionsHelp"_s, u"&Help with Options"_s, u"Help with colors and options"_s,
             [] { upcalls().ShowHelp(u"options"_s); }, u"help-contents"_s}};
}

void OptionsTab::showFrame(int frame)
{
    choice_->setCurrentRow(frame);
}

int OptionsTab::frameInFront() const
{
    return forms_->currentIndex();
}

void OptionsTab::Form_Load()
{
    auto& G = globals();
    const auto colors = boxColors(G);
    for (std::size_t i = 0; i < colors.size(); ++i)
        Text5[i]->setBackColor(*colors[i]);
    const auto flags = boxFlags(G);
    for (std::size_t i = 0; i < flags.size(); ++i)
        CHKOPTION[i]->setChecked(*flags[i]);
    CMBMENU->setCurrentIndex(G.MENU_STYLE);
    CMBMENUTYPE->setCurrentIndex(G.MENU_FONT_TYPE);
    CMBFONTTYPE->setCurrentIndex(G.LABEL_TEXT_TYPE);
    HScroll2->setValue(G.GRID_ROW_HEIGHT);
    Label7->setText(QString::number(HScroll2->value()));
    for (std::size_t i = 0; i < kGridStyles.size(); ++i)
        RDBROWSER[i]->setChecked(G.GRID_TEXT_STYLE == QLatin1String(kGridStyles[i]));
    Text8[0]->setText(QString::number(G.SEARCH_FIRST_BLOCK));
    Text8[1]->setText(QString::number(G.SEARCH_NEXT_BLOCK));
    Text8[2]->setText(G.DEFAULT_ADDRESS_BOOK);
    Text8[3]->setText(G.DEFAULT_MAIL_FROM);
    for (std::size_t i = 0; i < favorites_.size(); ++i)
        Text8[kFirstFavorite + i]->setText(favorites_[i]);
    showSamples();
}

QString OptionsTab::addressList() const
{
    QStringList given;
    for (const QString& favorite : favorites_)
        if (!text::trim(favorite).isEmpty())
            given << favorite;
    return given.join(u"\r\n"_s);
}

ColorPair OptionsTab::boxPair(std::size_t pair) const
{
    return {Text5[pair]->BackColor(), Text5[pair + kPairs]->BackColor()};
}

/// Each pair as it will be; where people choose a pair that is hard to read, this shows it.
void OptionsTab::showSamples()
{
    const ColorPair main = boxPair(kMainPair);
    for (std::size_t i = 0; i < kPairs; ++i) {
        ColorPair pair = boxPair(i);
        if (i == kTabPair || i == kDisplayPair || i == kButtonPair)
            pair = followingColors(pair, main);
        const QColor back = toQColor(pair.back);
        const QColor text = toQColor(pair.text);
        QPalette palette;
        palette.setColor(QPalette::Window, back);
        palette.setColor(QPalette::WindowText, text);
        samples_[i]->setPalette(palette);
        samples_[i]->setText(hardToRead(back, text) ? tr("Hard to read") : tr("Sample 123"));
    }
}

void OptionsTab::Text5_Click(int index)
{
    ColorBox& box = *Text5[static_cast<std::size_t>(index)];
    QColorDialog dialog(toQColor(box.BackColor()), this);
    dialog.setObjectName(u"ColorDialog"_s);
    dialog.setWindowTitle(u"Select Color"_s);
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    if (prompt().run(dialog) == QDialog::Accepted)
        box.setBackColor(toColorValue(dialog.currentColor()));
}

void OptionsTab::OptWinColorBtn_Click()
{
    for (std::size_t i = 0; i < kDesktopBoxes.size(); ++i)
        Text5[i]->setBackColor(colorValue(kDesktopBoxes[i]));
}

void OptionsTab::OptnOpenMailBtn_Click()
{
    FileQuestion question;
    question.title = u"Select E-Mail Address List to Open"_s;
    question.filter = QString::fromLatin1(kMailListFilter);
    question.fileName = u"MailAddr.MLS"_s;
    question.folder = globals().APP_PATH;
    question.defaultExtension = u"MLS"_s;
    if (const auto chosen = prompt().file(this, question); chosen && !chosen->isEmpty())
        Text8[2]->setText(chosen->first());
}

bool OptionsTab::blocksFit()
{
    const auto within = [](const QLineEdit& box, double least, double most) {
        double number = 0;
        attempt([&] { number = text::val(box.text()); });
        return number >= least && number <= most;
    };
    const auto refuse = [this](QLineEdit& box, const QString& words) {
        prompt().tell(this, words);
        showFrame(kSearchFrame);
        box.setFocus();
        box.selectAll();
        return false;
    };
    if (!within(*Text8[0], 2500, 10000))
        return refuse(*Text8[0],
                      u"Enter a Number between 2,500 and 10,000 of Files to Initially Search"_s);
    if (!within(*Text8[1], 500, 2500))  // "Initially" for the later blocks, too: required
        return refuse(*Text8[1],
                      u"Enter a Number between 500 and 2,500 of Files to Initially Search"_s);
    return true;
}

void OptionsTab::takeOptions()
{
    auto& G = globals();
    const auto flags = boxFlags(G);
    for (std::size_t i = 0; i < flags.size(); ++i)
        *flags[i] = CHKOPTION[i]->isChecked();
    G.MENU_STYLE = CMBMENU->currentIndex();
    G.MENU_FONT_TYPE = CMBMENUTYPE->currentIndex();
    G.LABEL_TEXT_TYPE = CMBFONTTYPE->currentIndex();
    G.GRID_ROW_HEIGHT = HScroll2->value();
    for (std::size_t i = 0; i < kGridStyles.size(); ++i)
        if (RDBROWSER[i]->isChecked())
            G.GRID_TEXT_STYLE = QString::fromLatin1(kGridStyles[i]);
    G.SEARCH_FIRST_BLOCK = static_cast<int>(text::val(Text8[0]->text()));
    G.SEARCH_NEXT_BLOCK = static_cast<qint32>(text::val(Text8[1]->text()));
    G.DEFAULT_ADDRESS_BOOK = Text8[2]->text();
    G.DEFAULT_MAIL_FROM = Text8[3]->text();
    for (std::size_t i = 0; i < favorites_.size(); ++i)
        favorites_[i] = Text8[kFirstFavorite + i]->text();
}

/// The colours are saved even when the numbers are then refused: required.
void OptionsTab::OptnApplyBtn_Click()
{
    const auto colors = boxColors(globals());
    for (std::size_t i = 0; i < colors.size(); ++i)
        *colors[i] = Text5[i]->BackColor();
    SaveColors(this);
    if (!blocksFit())
        return;
    takeOptions();
    SaveOptions(favorites_, this);
    applied();
    emit statusText(tr("The options are saved."));
}

}  // namespace velnor
