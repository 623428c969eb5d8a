// core/upcalls.h - calls from a lower room to a later one, filled in by app/.
#pragma once

#include <functional>

#include <QString>

namespace velnor {

struct Upcalls {
    std::function<void(const QString& path)> DisplayFile = [](const QString&) {};
    std::function<void()> LoadGroupList = [] {};
    std::function<void(const QString& path)> OpenwithOLE = [](const QString&) {};
    /// Copies a file as the user names it; the backup before a copy (Save As).
    std::function<void(const QString& path)> SaveFileAs = [](const QString&) {};
    std::function<void()> EnableSelectMenus = [] {};
    /// Opens the help at a topic, "data-entry"; empty: its contents.
    std::function<void(const QString& topic)> ShowHelp = [](const QString&) {};
};

Upcalls& upcalls();
void resetUpcalls();

}  // namespace velnor
