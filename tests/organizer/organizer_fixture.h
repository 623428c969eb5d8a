// tests/organizer/organizer_fixture.h - a sandbox with the delivered store in "C:\app" and data
// files in "C:\data".
#pragma once

#include "core/application_folder.h"
#include "core/globals.h"
#include "core/startup.h"
#include "core/upcalls.h"
#include "organizer/organizer_store.h"
#include "organizer/store_link.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

namespace velnor::testing {

class OrganizerFixture {
public:
    OrganizerFixture()
    {
        resetGlobals();
        SetDefaultColors();
        SetDefaultOptions();
        globals().APP_PATH = "C:\\app";
        globals().ORGANIZER_PATH = "C:\\app\\DataTabl.MDB";
        sandbox.makeFolders("C:\\app");
        sandbox.makeFolders("C:\\data");
        deliverStore();
        prepareApplicationFolder(sandbox.paths(),
                                 QString::fromStdString(sandbox.native("C:\\app")));
        LoadGroupList();
    }
    ~OrganizerFixture() { resetUpcalls(); }

    /// A file of some bytes, and its path.
    QString makeFile(const QString& path, int bytes = 1234)
    {
        sandbox.write(path.toStdString(), std::string(static_cast<std::size_t>(bytes), 'x'));
        return path;
    }
    QList<QStringList> rows(const char* table)
    {
        return readRows("C:\\app\\DataTabl.MDB", kAccess, table);
    }
    QString cell(const char* table, qsizetype row, int column) { return rows(table)[row][column]; }

    Sandbox sandbox;
    ScriptedPrompt prompt;
};

}  // namespace velnor::testing
