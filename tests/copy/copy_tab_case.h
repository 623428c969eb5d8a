// tests/copy/copy_tab_case.h - what the tests of the copy tab start from: two dBASE tables, a
// script of answers, and the tab on the screen.
#pragma once

#include <memory>

#include "copy/copy_tab.h"
#include "copy/line_list.h"
#include "copy/query_members.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/upcalls.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

#include <QPushButton>

namespace velnor::testing {

class CopyTabCase {
protected:
    void setUp()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
        resetUpcalls();
        FillExtensionTable();
        globals().PROMPT_SAVE_COPYTO = false;
        queryMembers() = {};
        makeTable("C:", kDBase, "PEOPLE",
                  {{"NAME", FieldType::Text, 20},
                   {"CITY", FieldType::Text, 30},
                   {"AGE", FieldType::Double}});
        makeTable("C:", kDBase, "FRIENDS",
                  {{"CITY", FieldType::Text, 30}, {"NAME", FieldType::Text, 20}});
        tab_ = std::make_unique<CopyTab>();
        tab_->resize(1000, 700);
        tab_->show();
    }
    void tearDown()
    {
        tab_.reset();
        prompt_.reset();
        sandbox_.reset();
    }

    void openFrom(const QString& path)
    {
        prompt_->expectFile({path}, "Select Database File to Open");
        tab_->OpenFromBtn->click();
    }
    void openTo(const QString& path)
    {
        prompt_->expectFile({path}, "Select Database File to Open");
        tab_->OpenToBtn->click();
    }
    void openBoth()
    {
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\FRIENDS.DBF");
    }
    void givePeople()
    {
        appendRows("C:", kDBase, "PEOPLE", {{"Ann", "Rome", 30.0}, {"Bob", "Oslo", 41.5}});
    }
    void makeShop()
    {
        makeAccessFile("C:\\shop.mdb");
        makeTable(
            "C:\\shop.mdb", kAccess, "Members",
            {{"NAME", FieldType::Text, 20}, {"AGE", FieldType::Double}, {"CODE", FieldType::Long}});
        makeTable("C:\\shop.mdb", kAccess, "Places", {{"PLACE", FieldType::Text, 30}});
    }
    void matchByHand(int from, int to)
    {
        tab_->List3[0]->highlight(from);
        tab_->List3[1]->highlight(to);
        tab_->SelectBtn->click();
    }
    /// A protected Access file with one table.
    static void makeLocked(const QString& path, const QString& password)
    {
        makeAccessFile(path, password);
        makeTable(path, ";pwd=" + password, "Secrets", {{"NAME", FieldType::Text, 20}});
    }
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
    std::unique_ptr<CopyTab> tab_;
};

}  // namespace velnor::testing
