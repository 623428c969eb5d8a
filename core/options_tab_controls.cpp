// The controls of the options workspace: a list of four forms at the left, the form in front, and
// the one button that takes everything over.
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "core/attempt.h"
#include "core/color_box.h"
#include "core/options_tab.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr int kPairs = 12;
constexpr int kLowestRow = 200, kHighestRow = 1000;  // twips

template <class Widget> Widget* named(const QString& name, const QString& tip, QWidget* parent)
{
    auto* made = new Widget(parent);
    made->setObjectName(name);
    made->setToolTip(tip);
    made->setAccessibleDescription(tip);
    return made;
}

QPushButton* button(const char* name, const QString& text, const QString& tip, const char* icon,
                    QWidget* parent)
{
    auto* made = named<QPushButton>(QString::fromLatin1(name), tip, parent);
    made->setText(text);
    made->setIcon(QIcon::fromTheme(QString::fromLatin1(icon)));
    return made;
}

}  // namespace

QCheckBox* OptionsTab::option(int index, const QString& text, QWidget* parent)
{
    auto* box = named<QCheckBox>(u"CHKOPTION_%1"_s.arg(index), text, parent);
    box->setText(text);
    CHKOPTION[static_cast<std::size_t>(index)] = box;
    return box;
}

QLineEdit* OptionsTab::field(int index, const QString& tip, QWidget* parent)
{
    auto* box = named<QLineEdit>(u"Text8_%1"_s.arg(index), tip, parent);
    Text8[static_cast<std::size_t>(index)] = box;
    return box;
}

QGroupBox* OptionsTab::buildColors()
{
    const QStringList surfaces{
        tr("Main window"),         tr("Toolbar"),          tr("Tabs"),
        tr("List boxes"),          tr("Entry fields"),     tr("Display fields"),
        tr("Select windows"),      tr("Database browser"), tr("Data entry window"),
        tr("Design tree changes"), tr("Quick tips"),       tr("Buttons")};
    auto* frame = new QGroupBox(u" Set Program Colors "_s, this);
    auto* grid = new QGridLayout(frame);
    grid->setColumnStretch(4, 1);
    const auto heading = [&](int column, const QString& text) {
        auto* label = new QLabel(text, frame);
        label->setForegroundRole(QPalette::PlaceholderText);
        grid->addWidget(label, 0, column);
    };
    heading(1, tr("Background"));
    heading(2, tr("Text"));
    for (int i = 0; i < kPairs; ++i) {
        const auto at = static_cast<std::size_t>(i);
        grid->addWidget(new QLabel(surfaces[i], frame), i + 1, 0);
        for (const int side : {0, 1}) {
            const int index = i + side * kPairs;
            auto* box = new ColorBox(frame);
            box->setObjectName(u"Text5_%1"_s.arg(index));
            box->setAccessibleName(
                (side == 0 ? tr("%1 background") : tr("%1 text")).arg(surfaces[i]));
            Text5[static_cast<std::size_t>(index)] = box;
            grid->addWidget(box, i + 1, side + 1);
        }
        samples_[at] = new QLabel(frame);
        samples_[at]->setAutoFillBackground(true);
        samples_[at]->setMargin(4);
        samples_[at]->setMinimumWidth(fontMetrics().averageCharWidth() * 18);
        grid->addWidget(samples_[at], i + 1, 3);
    }
    OptWinColorBtn =
        button("OptWinColorBtn", tr("Use the &Desktop's Colors"),
               u"Set Colors to Window Color Selections"_s, "preferences-desktop-color", frame);
    grid->addWidget(OptWinColorBtn, kPairs + 1, 1, 1, 3, Qt::AlignLeft);
    grid->setRowStretch(kPairs + 2, 1);
    return frame;
}

QGroupBox* OptionsTab::buildGeneral()
{
    auto* frame = new QGroupBox(u" Set Program General Window Options "_s, this);
    auto* form = new QFormLayout(frame);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->addRow(option(0, u"Use Bold Type on all Windows"_s, frame));
    form->addRow(option(1, u"Save Window Resize on Exit"_s, frame));
    form->addRow(option(2, u"Display Lines on Main Window System File/Folder Explorer"_s, frame));
    form->addRow(option(3, u"Display Lines on Database Grids"_s, frame));
    form->addRow(option(4, u"Display Text Source for Documents and HTML Text"_s, frame));
    form->addRow(option(5, u"Group by Folders on Organize Files View"_s, frame));

    auto* styles = new QWidget(frame);
    auto* row = new QHBoxLayout(styles);
    row->setContentsMargins(0, 0, 0, 0);
    const QStringList texts{u"Flat Text"_s, u"Raised Text"_s, u"Lowered Text"_s};
    for (int i = 0; i < 3; ++i) {
        auto* radio = named<QRadioButton>(u"RDBROWSER_%1"_s.arg(i), texts[i], styles);
        radio->setText(texts[i]);
        row->addWidget(radio);
        RDBROWSER[static_cast<std::size_t>(i)] = radio;
    }
    form->addRow(tr("Text of database grids:"), styles);

    const auto combo = [&](const char* name, const QString& label, const QStringList& choices) {
        auto* made = named<QComboBox>(QString::fromLatin1(name), label, frame);
        made->addItems(choices);
        form->addRow(label + u':', made);
        return made;
    };
    CMBMENU = combo("CMBMENU", tr("&Menu style"),
                    {u"Windows 95/98"_s, u"Windows 2000"_s, u"Windows XP"_s});
    CMBMENUTYPE = combo(
        "CMBMENUTYPE", tr("Menu &type"),
        {u"None"_s, u"Light Raised"_s, u"Heavy Raised"_s, u"Light Inset"_s, u"Heavy Inset"_s});
    CMBFONTTYPE = combo(
        "CMBFONTTYPE", tr("&Label type"),
        {u"None"_s, u"Raised Light"_s, u"Raised Heavy"_s, u"Lowered Light"_s, u"Lowered Heavy"_s});

    auto* note = new QLabel(
        tr("These three are kept in the settings. Menus and labels follow your desktop's style."),
        frame);
    note->setForegroundRole(QPalette::PlaceholderText);
    form->addRow(QString(), note);

    auto* height = new QWidget(frame);
    auto* line = new QHBoxLayout(height);
    line->setContentsMargins(0, 0, 0, 0);
    HScroll2 = named<QScrollBar>(u"HScroll2"_s, tr("Height of the rows of database grids"), height);
    HScroll2->setOrientation(Qt::Horizontal);
    HScroll2->setFocusPolicy(Qt::StrongFocus);
    HScroll2->setRange(kLowestRow, kHighestRow);
    HScroll2->setSingleStep(10);
    HScroll2->setPageStep(50);
    HScroll2->setMinimumWidth(fontMetrics().averageCharWidth() * 30);
    Label7 = new QLabel(height);
    Label7->setObjectName(u"Label7"_s);
    Label7->setMinimumWidth(fontMetrics().averageCharWidth() * 6);
    line->addWidget(HScroll2);
    line->addWidget(Label7);
    auto* label = new QLabel(tr("&Row height:"), frame);
    label->setBuddy(HScroll2);
    HScroll2->setAccessibleName(tr("Row height"));
    form->addRow(label, height);
    return frame;
}

QGroupBox* OptionsTab::buildSearch()
{
    auto* frame = new QGroupBox(u" Set Program Search and Database Options "_s, this);
    auto* form = new QFormLayout(frame);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->addRow(tr("Fir&st block of files:"),
                 field(0, tr("Files that a search looks at first, 2,500 to 10,000"), frame));
    form->addRow(tr("&Next block of files:"),
                 field(1, tr("Files that it looks at in each later block, 500 to 2,500"), frame));
    form->addRow(option(6, u"Prompt to Save Copy To File Before Database Copy."_s, frame));
    form->addRow(option(7, u"Prompt to Save File Before Saving changes to Table Design."_s, frame));
    form->addRow(
        option(8, u"Log From and To Database Files Copy Information to the Organizer."_s, frame));
    return frame;
}

QGroupBox* OptionsTab::buildMail()
{
    auto* frame = new QGroupBox(u" Set Program E-Mail Options "_s, this);
    auto* form = new QFormLayout(frame);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto* book = new QWidget(frame);
    auto* row = new QHBoxLayout(book);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(field(2, tr("Address list that the mail workspace opens"), book), 1);
    OptnOpenMailBtn = button("OptnOpenMailBtn", tr("Ope&n..."),
                             u"Select E-Mail Address List to Open"_s, "document-open", book);
    row->addWidget(OptnOpenMailBtn);
    auto* label = new QLabel(tr("Address &book:"), frame);
    label->setBuddy(Text8[2]);
    Text8[2]->setAccessibleName(tr("Address book"));  // the label is not its neighbour
    form->addRow(label, book);
    form->addRow(tr("F&rom address:"), field(3, tr("Your address, in mail that you send"), frame));
    for (int i = 4; i < static_cast<int>(Text8.size()); ++i)
        form->addRow(tr("Favorite %1:").arg(i - 3),
                     field(i, tr("An address that you often write to"), frame));
    return frame;
}

void OptionsTab::buildControls()
{
    choice_ = new QListWidget(this);  // first: the Tab key goes in the order of making
    choice_->setObjectName(u"OptionForms"_s);
    choice_->setAccessibleName(tr("Options"));
    choice_->addItems({tr("Colors"), tr("General"), tr("Search and databases"), tr("EMail")});
    choice_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    choice_->setFixedWidth(choice_->sizeHintForColumn(0) + fontMetrics().averageCharWidth() * 6);
    forms_ = new QStackedWidget(this);
    SSFrame7 = {buildColors(), buildGeneral(), buildSearch(), buildMail()};
    for (std::size_t i = 0; i < SSFrame7.size(); ++i) {
        SSFrame7[i]->setObjectName(u"SSFrame7_%1"_s.arg(i));
        auto* area = new QScrollArea(forms_);
        area->setWidgetResizable(true);
        area->setFrameShape(QFrame::NoFrame);
        area->setFocusPolicy(Qt::NoFocus);
        area->setWidget(SSFrame7[i]);
        forms_->addWidget(area);
    }
    OptnApplyBtn = button("OptnApplyBtn", tr("A&pply"), tr("Take over and save all options"),
                          "dialog-ok-apply", this);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(OptnApplyBtn);
    auto* right = new QVBoxLayout;
    right->addWidget(forms_, 1);
    right->addLayout(buttons);
    auto* row = new QHBoxLayout(this);
    row->addWidget(choice_);
    row->addLayout(right, 1);
    choice_->setCurrentRow(0);
}

void OptionsTab::connectControls()
{
    connect(choice_, &QListWidget::currentRowChanged, forms_, &QStackedWidget::setCurrentIndex);
    connect(OptnApplyBtn, &QPushButton::clicked, this, edge(this, &OptionsTab::OptnApplyBtn_Click));
    connect(OptWinColorBtn, &QPushButton::clicked, this,
            edge(this, &OptionsTab::OptWinColorBtn_Click));
    connect(OptnOpenMailBtn, &QPushButton::clicked, this,
            edge(this, &OptionsTab::OptnOpenMailBtn_Click));
    connect(HScroll2, &QScrollBar::valueChanged, this,
            [this](int value) { Label7->setText(QString::number(value)); });
    for (int i = 0; i < static_cast<int>(Text5.size()); ++i) {
        ColorBox* box = Text5[static_cast<std::size_t>(i)];
        connect(box, &ColorBox::clicked, this, edge(this, &OptionsTab::Text5_Click, i));
        connect(box, &ColorBox::colorChanged, this, &OptionsTab::showSamples);
    }
}

}  // namespace velnor
