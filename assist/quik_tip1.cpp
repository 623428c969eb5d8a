#include "assist/quik_tip1.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "access/value_text.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "platform/host.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 kLongestFile = 1 << 20;

QString withoutTips()
{
    return u"That the TIPHELP.TXT file was not found? \n\nCreate a text file named TIPHELP.TXT "
           "using NotePad with 1 tip per line. Then place it in the same directory as the "
           "application. "_s;
}

}  // namespace

QuikTip1::QuikTip1(QWidget* parent) : QDialog(parent)
{
    setObjectName(u"QuikTip1"_s);
    setWindowTitle(u"Quick Tip of the Day"_s);
    buildControls();
    globals().QUIKTIP_OPEN = true;
    chkLoadTipsAtStartup->setChecked(!globals().SHOW_TIPS);
    if (!LoadTips(globals().APP_PATH + u'\\' + u"TIPHELP.TXT"_s))
        lblTipText->setText(withoutTips());
}

QuikTip1::~QuikTip1()
{
    globals().QUIKTIP_OPEN = false;
}

void QuikTip1::buildControls()
{
    auto* picture = new QLabel(this);
    picture->setPixmap(
        QIcon::fromTheme(u"help-hint"_s, QIcon::fromTheme(u"help-contents"_s)).pixmap(48, 48));
    picture->setAlignment(Qt::AlignTop);
    Label1 = new QLabel(u"Did you know..."_s, this);
    Label1->setObjectName(u"Label1"_s);
    QFont large = Label1->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    large.setBold(true);
    Label1->setFont(large);
    lblTipText = new QLabel(this);
    lblTipText->setObjectName(u"lblTipText"_s);
    lblTipText->setTextFormat(Qt::PlainText);
    lblTipText->setWordWrap(true);
    lblTipText->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    lblTipText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    lblTipText->setMinimumSize(fontMetrics().averageCharWidth() * 56, fontMetrics().height() * 6);

    chkLoadTipsAtStartup = new QCheckBox(u"&Do not Show Tips at Startup"_s, this);
    chkLoadTipsAtStartup->setObjectName(u"chkLoadTipsAtStartup"_s);
    chkLoadTipsAtStartup->setToolTip(
        u"Check if you do not want to display these quick tips at Start Up"_s);
    NextTipBtn = new QPushButton(tr("&Next Tip"), this);
    NextTipBtn->setObjectName(u"NextTipBtn"_s);
    NextTipBtn->setToolTip(u"View Next Quick Tip"_s);
    OKBtn = new QPushButton(tr("&Close"), this);
    OKBtn->setObjectName(u"OKBtn"_s);
    OKBtn->setToolTip(u"Close Quick Tip Window"_s);
    OKBtn->setDefault(true);

    auto* words = new QVBoxLayout;
    words->addWidget(Label1);
    words->addWidget(lblTipText, 1);
    auto* top = new QHBoxLayout;
    top->addWidget(picture);
    top->addSpacing(8);
    top->addLayout(words, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(chkLoadTipsAtStartup);
    bottom->addStretch(1);
    bottom->addWidget(NextTipBtn);
    bottom->addWidget(OKBtn);
    auto* column = new QVBoxLayout(this);
    column->addLayout(top, 1);
    column->addLayout(bottom);
    connect(NextTipBtn, &QPushButton::clicked, this, edge(this, &QuikTip1::NextTipBtn_Click));
    connect(OKBtn, &QPushButton::clicked, this, edge(this, &QuikTip1::OKBtn_Click));
}

bool QuikTip1::LoadTips(const QString& file)
{
    tips_.clear();
    if (file.isEmpty()) {
        prompt().tell(this, u"         Error Loading Quick Tips File"_s);
        return false;
    }
    const Outcome read = attempt([&] {
        for (QString line : readTextFile(file, kLongestFile).split(u'\n'))
            if (line.remove(u'\r'); !text::trim(line).isEmpty())
                tips_ << line;
    });
    if (!read) {
        prompt().tell(this, u"       Error Loading Quick Tips File"_s);
        return false;
    }
    if (tips_.isEmpty())
        return false;
    const LocalTime today = host().clock->now();
    current_ = static_cast<qsizetype>(dayNumber(today.year, today.month, today.day)) % tips_.size();
    showTip();
    return true;
}

void QuikTip1::showTip()
{
    lblTipText->setText(tips_[current_]);
    lblTipText->setAccessibleName(tips_[current_]);
}

void QuikTip1::NextTipBtn_Click()
{
    if (tips_.isEmpty())
        return;
    current_ = (current_ + 1) % tips_.size();
    showTip();
}

void QuikTip1::OKBtn_Click()
{
    globals().SHOW_TIPS = !chkLoadTipsAtStartup->isChecked();
    accept();
}

}  // namespace velnor
