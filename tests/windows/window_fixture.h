// tests/windows/window_fixture.h - what the tests of windows start from: a sandbox with files made
// through the engine and the delivered ones in "C:\app", a script of answers, defaults as after
// StartProgram, and no window.
#pragma once

#include <memory>

#include "core/application_folder.h"
#include "core/globals.h"
#include "core/startup.h"
#include "core/upcalls.h"
#include "organizer/organizer_store.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

namespace velnor::testing {

class WindowFixture {
public:
    WindowFixture()
    {
        resetGlobals();
        SetDefaultColors();
        SetDefaultOptions();
        globals().APP_PATH = "C:\\app";
        sandbox.write("C:\\app\\Close.Txt", "closed\r\n");
        deliverStore();
        prepareApplicationFolder(sandbox.paths(),
                                 QString::fromStdString(sandbox.native("C:\\app")));
        sandbox.makeFolders("C:\\data");
    }
    ~WindowFixture() { resetUpcalls(); }

    /// CUSTOMER.DBF with three records: NAME, AMOUNT, NOTE (a memo).
    void makeCustomers(const char* table = "CUSTOMER")
    {
        makeTable("C:\\data", kDBase, table,
                  {{"NAME", FieldType::Text, 20},
                   {"AMOUNT", FieldType::Double},
                   {"NOTE", FieldType::Memo}});
        appendRows("C:\\data", kDBase, table,
                   {{"Ada", 1, "first\r\nsecond"}, {"Ben", 2, QVariant()}, {"Cleo", 3, "last"}});
    }
    /// shop.mdb with tables Items (an index on Name) and Orders.
    void makeShop()
    {
        makeAccessFile("C:\\data\\shop.mdb");
        makeTable("C:\\data\\shop.mdb", kAccess, "Items",
                  {{"Name", FieldType::Text, 20}, {"Price", FieldType::Currency}}, "Name");
        appendRows("C:\\data\\shop.mdb", kAccess, "Items",
                   {{"pear", 3}, {"apple", 1}, {"cherry", 2}});
        makeTable("C:\\data\\shop.mdb", kAccess, "Orders", {{"Number", FieldType::Long}});
    }
    /// locked.mdb with a table Secrets, opened by the password "Geheim97".
    void makeLockedFile()
    {
        makeAccessFile("C:\\data\\locked.mdb", "Geheim97");
        makeTable("C:\\data\\locked.mdb", ";pwd=Geheim97", "Secrets",
                  {{"Name", FieldType::Text, 20}});
        appendRows("C:\\data\\locked.mdb", ";pwd=Geheim97", "Secrets", {{"Ada"}});
    }

    Sandbox sandbox;
    ScriptedPrompt prompt;
};

}  // namespace velnor::testing
