#include "assist/about1.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/attempt.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/upcalls.h"

namespace velnor {

using namespace Qt::StringLiterals;

About1::About1(QWidget* parent) : QDialog(parent)
{
    setObjectName(u"About1"_s);
    setWindowTitle(u"About Velnor"_s);
    picIcon = new QLabel(this);
    picIcon->setObjectName(u"picIcon"_s);
    picIcon->setPixmap(QIcon(u":/velnor/icons/velnor.svg"_s).pixmap(64, 64));
    picIcon->setAlignment(Qt::AlignTop);

    const QStringList texts{
        u"Velnor 3.0"_s,
        tr("The Database File Copier\n\nOpens, edits, copies and publishes dBASE, FoxPro, Paradox, "
           "Access, Excel and Lotus files."),
        tr("Apache License 2.0. It comes without any warranty.")};
    auto* words = new QVBoxLayout;
    for (std::size_t i = 0; i < Label1.size(); ++i) {
        Label1[i] = new QLabel(texts[static_cast<qsizetype>(i)], this);
        Label1[i]->setObjectName(u"Label1_%1"_s.arg(i));
        Label1[i]->setWordWrap(true);
        Label1[i]->setToolTip(tr("The right mouse button opens our page"));
        Label1[i]->installEventFilter(this);
        words->addWidget(Label1[i]);
    }
    QFont large = Label1[0]->font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    large.setBold(true);
    Label1[0]->setFont(large);
    words->addStretch(1);

    SysBtn = new QPushButton(tr("&System Information"), this);
    SysBtn->setObjectName(u"SysBtn"_s);
    SysBtn->setToolTip(u"Get System Information"_s);
    OKBtn = new QPushButton(tr("&OK"), this);
    OKBtn->setObjectName(u"OKBtn"_s);
    OKBtn->setDefault(true);
    connect(SysBtn, &QPushButton::clicked, this, edge(this, &About1::SysBtn_Click));
    connect(OKBtn, &QPushButton::clicked, this, &QDialog::accept);

    auto* top = new QHBoxLayout;
    top->addWidget(picIcon);
    top->addSpacing(8);
    top->addLayout(words, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(SysBtn);
    bottom->addStretch(1);
    bottom->addWidget(OKBtn);
    auto* column = new QVBoxLayout(this);
    column->addLayout(top, 1);
    column->addLayout(bottom);
    setMinimumWidth(fontMetrics().averageCharWidth() * 60);
    globals().ABOUT_OPEN = true;
}

About1::~About1()
{
    globals().ABOUT_OPEN = false;
}

bool About1::eventFilter(QObject* watched, QEvent* event)
{
    const bool onText = std::find(Label1.begin(), Label1.end(), watched) != Label1.end();
    if (onText && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
        const Outcome shown =
            attempt([] { upcalls().DisplayFile(QString::fromLatin1(kMakersPage)); });
        if (!shown)
            tellUnexpected(shown);
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void About1::SysBtn_Click()
{
    if (!startSystemInformation())
        prompt().tell(this, u"System Information Is Unavailable At This Time"_s);
}

}  // namespace velnor
