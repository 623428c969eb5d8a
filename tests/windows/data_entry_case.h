// tests/windows/data_entry_case.h - what the tests of the data entry window start from: an empty
// shell, and an Access file with a table of people.
#pragma once

#include <QDialog>
#include <QLineEdit>
#include <QTest>

#include "tests/windows/window_fixture.h"
#include "windows/childfrm3.h"
#include "windows/mdiform1.h"
#include "windows/tool_set.h"

namespace velnor::testing {

class DataEntryCase {
protected:
    void setUp()
    {
        fixture_ = std::make_unique<WindowFixture>();
        shell_ = new MDIForm1({});
        shell_->Form_Load();
        shell_->show();
    }
    void tearDown()
    {
        delete shell_;
        fixture_.reset();
    }

    void makeStaff()
    {
        const QString file = "C:\\data\\staff.mdb";
        makeAccessFile(file);
        makeTable(file, kAccess, "People",
                  {{"Name", FieldType::Text, 20},
                   {"Age", FieldType::Long},
                   {"Note", FieldType::Memo},
                   {"Active", FieldType::Boolean}});
        appendRows(file, kAccess, "People",
                   {{"Ada", 36, "first\r\nsecond", true},
                    {"Ben", 40, QVariant(), false},
                    {"Cleo", QVariant(), "last", false}});
        makeTable(file, kAccess, "Places", {{"Place", FieldType::Text, 30}});
    }
    QList<QStringList> staff() { return readRows("C:\\data\\staff.mdb", kAccess, "People"); }
    void putBytes(const char* file, const char* table)
    {
        Workspace workspace(fixture_->sandbox.files());
        Database db = workspace.OpenDatabase(file, false, false, "");
        Recordset rows = db.OpenRecordset(table);
        const std::uint8_t bytes[] = {1, 0, 255};
        rows.AddNew();
        rows.setValue(0, ValueView::text("raw"));
        rows.setValue(1, ValueView::bytes(bytes));
        rows.Update();
        rows.Close();
        db.Close();
    }
    ChildFrm3* open(const QString& path)
    {
        globals().SELECTED_FILE = path;
        globals().TEXT_FILE_FLG = false;
        globals().DATA_ENTRY_FLG = true;
        globals().RECORD_SOURCE.clear();
        shell_->NewWindowFile(path);
        return qobject_cast<ChildFrm3*>(shell_->activeChild());
    }
    static QLineEdit* line(ChildFrm3* child, int n)
    {
        return qobject_cast<QLineEdit*>(child->Text1[n]);
    }
    /// As a person does: everything chosen, then keys.
    static void type(QLineEdit* box, const QString& text)
    {
        box->selectAll();
        QTest::keyClick(box, Qt::Key_Delete);
        QTest::keyClicks(box, text);
    }
    static void tool(ChildFrm3* child, const char* id) { child->ToolBarComp1->click(id); }

    std::unique_ptr<WindowFixture> fixture_;
    MDIForm1* shell_ = nullptr;
};

}  // namespace velnor::testing
