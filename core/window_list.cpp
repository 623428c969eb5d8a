#include "core/window_list.h"

#include <algorithm>
#include <vector>

#include <QWidget>

#include "core/prompt.h"

namespace velnor {
namespace {

std::vector<std::shared_ptr<OpenWindow>>& windows()
{
    static std::vector<std::shared_ptr<OpenWindow>> open;
    return open;
}

OpenWindow ofWidget(QWidget* widget)
{
    const auto front = [widget] {
        widget->raise();
        widget->activateWindow();
    };
    return {[widget] { return widget->windowTitle(); }, front, [widget] { widget->close(); },
            widget};
}

}  // namespace

WindowEntry::WindowEntry(OpenWindow window)
    : window_(std::make_shared<OpenWindow>(std::move(window)))
{
    windows().push_back(window_);
}

WindowEntry::WindowEntry(QWidget* widget) : WindowEntry(ofWidget(widget)) {}

WindowEntry::~WindowEntry()
{
    if (window_)
        std::erase(windows(), window_);
}

WindowEntry& WindowEntry::operator=(WindowEntry&& other) noexcept
{
    std::swap(window_, other.window_);
    return *this;
}

QStringList openCaptions()
{
    QStringList captions;
    for (const auto& window : windows())
        captions << window->caption();
    return captions;
}

bool CloseWindowOfFile(const QString& wanted, const QString& words)
{
    const QString caption = wanted;  // `wanted` may belong to the window that closes here
    if (windows().empty())
        return false;
    const auto match = std::find_if(windows().begin() + 1, windows().end(),
                                    [&](const auto& w) { return w->caption() == caption; });
    if (match == windows().end())
        return false;
    const std::shared_ptr<OpenWindow> window = *match;  // its entry goes while it closes
    window->bringToFront();
    prompt().tell(window->widget, words + caption);
    window->close();
    return true;
}

}  // namespace velnor
