#include "windows/childfrm2.h"

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStringDecoder>
#include <QVBoxLayout>

#include "access/routing.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/wait_pointer.h"
#include "platform/host.h"
#include "platform/paths.h"
#include "windows/child_geometry.h"
#include "windows/find_bar.h"
#include "windows/mdiform1.h"
#include "windows/paint_colors.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint64_t kMostBytes = 16u << 20;

bool isFormatted(const QString& type)
{
    static const QStringList kinds{u"RTF"_s,  u"DOC"_s,  u"WPS"_s,   u"WDB"_s, u"WRI"_s, u"HTM"_s,
                                   u"HTML"_s, u"SHTM"_s, u"SHTML"_s, u"PDF"_s, u"MSG"_s};
    return kinds.contains(type);
}

struct ReadText {
    std::string bytes;
    bool cut = false;
};

ReadText readFile(const QString& path)
{
    auto file = host().files->open(path.toStdString(), OpenMode::Read);
    const std::uint64_t size = file->size();
    ReadText read;
    read.cut = size > kMostBytes;
    read.bytes.resize(static_cast<std::size_t>(std::min(size, kMostBytes)));
    const auto got =
        file->readAt(0, {reinterpret_cast<std::uint8_t*>(read.bytes.data()), read.bytes.size()});
    read.bytes.resize(got);
    return read;
}

}  // namespace

QString decodeText(const std::string& bytes)
{
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text =
        utf8.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return utf8.hasError() ? QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()))
                           : text;
}

ChildFrm2::ChildFrm2(MDIForm1& shell) : DocumentChild(shell)
{
    setObjectName(u"ChildFrm2"_s);
    notice = new QLabel(this);
    notice->setObjectName(u"Notice"_s);
    notice->setWordWrap(true);
    notice->setMargin(8);
    notice->setBackgroundRole(QPalette::ToolTipBase);
    notice->setForegroundRole(QPalette::ToolTipText);
    notice->setAutoFillBackground(true);
    notice->hide();
    Text1 = new QPlainTextEdit(this);
    Text1->setObjectName(u"Text1"_s);
    Text1->setAccessibleName(tr("Text"));
    Text1->setReadOnly(true);
    Text1->setFrameShape(QFrame::NoFrame);
    Text1->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    Text1->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    Text1->document()->setDocumentMargin(8);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(notice);
    column->addWidget(Text1, 1);
    findBar = new FindBar(this);
    column->addWidget(findBar);
    connect(findBar, &FindBar::findNext, this, edge(this, &ChildFrm2::mnuFindNextText_Click));
    connect(findBar, &FindBar::closed, this, [this] {
        findBar->hide();
        Text1->setFocus();
    });
    setFocusProxy(Text1);
}

void ChildFrm2::Form_Load()
{
    auto& G = globals();
    ++shell_.NUM_CHILDWINDOWS;
    shell_.CHILD_LEFT += kCascadeLeft;
    shell_.CHILD_TOP += kCascadeTop;
    FILE_USE = G.SELECTED_FILE;
    folder_ = fromUtf8(paths::folder(FILE_USE.toStdString()));
    fileName_ = fromUtf8(paths::fileName(FILE_USE.toStdString()));
    const WaitPointer wait;
    const Outcome loaded = attempt([this] { loadText(); });
    if (!loaded) {
        notice->setText(tr("This file could not be read: %1").arg(loaded.description));
        notice->show();
    }
}

void ChildFrm2::loadText()
{
    const QString type = GetFileExtension(FILE_USE);
    if (isWebAddress(FILE_USE)) {
        notice->setText(tr("Pages of the web are not shown yet. File, Open with another "
                           "Application, shows this one in your browser."));
        notice->show();
        return;
    }
    const ReadText read = readFile(FILE_USE);
    const bool binary = read.bytes.find('\0') != std::string::npos || type == u"PDF";
    if (binary)
        notice->setText(tr("Documents of this kind are not shown yet. File, Open with another "
                           "Application, shows it in the program that your desktop has for it."));
    else if (isFormatted(type))
        notice->setText(tr("Shown as its plain source: formatted documents are not shown yet."));
    else if (read.cut)
        notice->setText(tr("Only the first 16 MB are shown."));
    notice->setVisible(!notice->text().isEmpty());
    if (!binary)
        Text1->setPlainText(decodeText(read.bytes));
}

void ChildFrm2::enableTools()
{
    shell_.EnableTextButtons();
}

void ChildFrm2::Form_Activate()
{
    auto& G = globals();
    applyOptions();
    shell_.setWindowTitle(caption() + u" - "_s + QString::fromLatin1(kProgramTitle));
    G.SELECTED_FILE = FILE_USE;
    shell_.showFileLength({});
    attempt([&] { shell_.showFileLength(text::thousands(fileLength(FILE_USE)) + u" Bytes"_s); });
    G.WORK_FILE = caption();
}

void ChildFrm2::mnuFindText_Click()
{
    findBar->open();
}

/// From the end of what is chosen on; at the end of the text nothing is found, and the choice
/// stays.
void ChildFrm2::mnuFindNextText_Click()
{
    if (findBar->text().isEmpty())
        return findBar->open();
    findBar->say(Text1->find(findBar->text()) ? QString() : tr("Not found"));
}

void ChildFrm2::applyOptions()
{
    paintField(*Text1, displayColors());
    useBoldOption(*Text1);
}

void ChildFrm2::mnuEditCopy_Click()
{
    Text1->copy();
}

void ChildFrm2::Form_Unload()
{
    --shell_.NUM_CHILDWINDOWS;
    shell_.CHILD_LEFT = qMax(0, shell_.CHILD_LEFT - kCascadeLeft);
    shell_.CHILD_TOP = qMax(0, shell_.CHILD_TOP - kCascadeTop);
    shell_.childGone(this);
}

}  // namespace velnor
