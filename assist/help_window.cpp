#include "assist/help_window.h"

#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpression>
#include <QSplitter>
#include <QTextBrowser>
#include <QToolBar>
#include <QVBoxLayout>

/// The pages lie in a library: without this the linker leaves them out.
static void loadPages()
{
    Q_INIT_RESOURCE(help);
}

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

struct Topic {
    QLatin1StringView name;
    const char* title;
};

constexpr Topic kTopics[] = {
    {"index"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Start here")},
    {"files"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Find and open files")},
    {"browser"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Look at a table")},
    {"data-entry"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Enter data")},
    {"copy"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Copy records")},
    {"organizer"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Keep files in the organizer")},
    {"options"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Colors and options")},
    {"formats"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Kinds of files")},
    {"keys"_L1, QT_TRANSLATE_NOOP("velnor::HelpWindow", "Keys")},
};

QUrl pageUrl(const QString& topic)
{
    return QUrl(u"qrc:/velnor/help/%1.html"_s.arg(topic));
}

/// The words of a page without its marks.
QString pageWords(const QString& topic)
{
    QFile file(u":/velnor/help/%1.html"_s.arg(topic));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression mark(u"<[^>]*>"_s);
    return QString::fromUtf8(file.readAll()).replace(mark, u" "_s).simplified();
}

}  // namespace

HelpWindow::HelpWindow(QWidget* parent) : QWidget(parent, Qt::Window)
{
    loadPages();
    setObjectName(u"HelpWindow"_s);
    setWindowTitle(tr("Velnor Help"));
    resize(860, 620);
    page = new QTextBrowser(this);
    page->setObjectName(u"HelpPage"_s);
    page->setAccessibleName(tr("Page"));
    page->setOpenLinks(true);
    page->document()->setDocumentMargin(16);
    contents = new QListWidget(this);
    contents->setObjectName(u"HelpContents"_s);
    contents->setAccessibleName(tr("Topics"));
    for (const Topic& topic : kTopics) {
        auto* row = new QListWidgetItem(tr(topic.title), contents);
        row->setData(Qt::UserRole, QString(topic.name));
    }
    search = new QLineEdit(this);
    search->setObjectName(u"HelpSearch"_s);
    search->setPlaceholderText(tr("Search the help"));
    search->setAccessibleName(tr("Search the help"));
    search->setClearButtonEnabled(true);

    auto* bar = new QToolBar(this);
    const auto step = [&](const QString& text, const QString& icon, auto slot, auto available,
                          QKeySequence key) {
        QAction* action = bar->addAction(QIcon::fromTheme(icon), text, page, slot);
        action->setShortcut(key);
        action->setEnabled(false);
        connect(page, available, action, &QAction::setEnabled);
    };
    step(tr("Back"), u"go-previous"_s, &QTextBrowser::backward, &QTextBrowser::backwardAvailable,
         QKeySequence::Back);
    step(tr("Forward"), u"go-next"_s, &QTextBrowser::forward, &QTextBrowser::forwardAvailable,
         QKeySequence::Forward);

    auto* left = new QWidget(this);
    auto* side = new QVBoxLayout(left);
    side->setContentsMargins(0, 0, 0, 0);
    side->addWidget(search);
    side->addWidget(contents, 1);
    auto* panes = new QSplitter(this);
    panes->setChildrenCollapsible(false);
    panes->addWidget(left);
    panes->addWidget(page);
    panes->setStretchFactor(1, 1);
    panes->setSizes({220, 640});
    auto* column = new QVBoxLayout(this);
    column->addWidget(bar);
    column->addWidget(panes, 1);

    connect(contents, &QListWidget::currentRowChanged, this, &HelpWindow::openAt);
    connect(search, &QLineEdit::textChanged, this, &HelpWindow::filter);
    auto* find = new QAction(this);
    find->setShortcut(QKeySequence::Find);
    connect(find, &QAction::triggered, this, &HelpWindow::startSearch);
    auto* close = new QAction(this);
    close->setShortcut(Qt::Key_Escape);
    connect(close, &QAction::triggered, this, &QWidget::close);
    addActions({find, close});
    showTopic({});
}

QStringList HelpWindow::topics()
{
    QStringList names;
    for (const Topic& topic : kTopics)
        names << QString(topic.name);
    return names;
}

void HelpWindow::showTopic(const QString& topic)
{
    search->clear();
    contents->setCurrentRow(qMax(0, static_cast<int>(topics().indexOf(topic))));
}

void HelpWindow::startSearch()
{
    search->setFocus();
    search->selectAll();
}

void HelpWindow::openAt(int row)
{
    if (QListWidgetItem* chosen = contents->item(row))
        page->setSource(pageUrl(chosen->data(Qt::UserRole).toString()));
}

void HelpWindow::filter()
{
    const QStringList words = search->text().simplified().split(u' ', Qt::SkipEmptyParts);
    for (int row = 0; row < contents->count(); ++row) {
        QListWidgetItem* topic = contents->item(row);
        const QString text = topic->text() + u' ' + pageWords(topic->data(Qt::UserRole).toString());
        const bool has = std::all_of(words.begin(), words.end(), [&](const QString& word) {
            return text.contains(word, Qt::CaseInsensitive);
        });
        topic->setHidden(!has);
    }
}

}  // namespace velnor
