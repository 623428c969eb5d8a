#include "windows/not_there_yet.h"

#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace velnor {

ComingTab::ComingTab(const QString& caption, const QString& icon, const QString& words,
                     QList<ToolRow> rows, QWidget* parent)
    : MainTab(parent), caption_(caption), rows_(std::move(rows))
{
    auto* column = new QVBoxLayout(this);
    column->addStretch(2);
    auto* picture = new QLabel(this);
    picture->setPixmap(QIcon::fromTheme(icon).pixmap(48, 48));
    picture->setAlignment(Qt::AlignCenter);
    column->addWidget(picture);

    auto* title = new QLabel(tr("%1 is not there yet").arg(caption), this);
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    title->setFont(large);
    title->setAlignment(Qt::AlignCenter);
    column->addSpacing(8);
    column->addWidget(title);

    auto* text = new QLabel(words, this);
    text->setAlignment(Qt::AlignCenter);
    text->setWordWrap(true);
    text->setForegroundRole(QPalette::PlaceholderText);
    column->addSpacing(4);
    column->addWidget(text);
    column->addStretch(3);
}

}  // namespace velnor
