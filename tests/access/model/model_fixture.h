// tests/access/model/model_fixture.h - a workspace on files in memory, and the errors of steps.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "access/engine.h"
#include "access/value_text.h"
#include "platform/memory_file_system.h"
#include "tests/support/memory_driver.h"

namespace velnor::test {

/// The engine's number of what a step throws; 0 when it throws nothing.
template <class Step> int errorOf(Step&& step)
{
    try {
        step();
    } catch (const EngineError& e) {
        return e.number();
    }
    return 0;
}

inline std::string shown(ValueView v)
{
    std::string text;
    appendText(text, v);
    return v.isNull() ? "Null" : text;
}

/// Field n of every record, first to last.
inline std::vector<std::string> column(Recordset& rs, int n)
{
    std::vector<std::string> all;
    if (rs.RecordCount() == 0)
        return all;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext())
        all.push_back(shown(rs.value(n)));
    return all;
}

/// "C:\data.mem", a database of the format in memory, with writers and readers as a test wants
/// them.
class ModelTest : public ::testing::Test {
protected:
    ModelTest()
    {
        const std::uint8_t marker[] = {'M'};
        files.put(kPath, marker);
        files.makeFolder("C:\\folder");
    }
    Database open(bool readOnly = false, bool exclusive = false)
    {
        return workspace.OpenDatabase(kPath, exclusive, readOnly, "Memory;");
    }
    /// PEOPLE: ID Long (primary key, autonumber when asked for), NAME Text 10, AGE Byte.
    void makePeople(Database& db)
    {
        TableDef table = db.CreateTableDef("PEOPLE");
        table.Fields().Append(table.CreateField("ID", 4));
        table.Fields().Append(table.CreateField("NAME", 10, 10));
        table.Fields().Append(table.CreateField("AGE", 2));
        Index key = table.CreateIndex("PrimaryKey");
        key.Primary(true);
        key.Unique(true);
        key.Fields().Append(key.CreateField("ID"));
        table.Indexes().Append(key);
        Index byName = table.CreateIndex("ByName");
        byName.Fields().Append(byName.CreateField("NAME"));
        table.Indexes().Append(byName);
        db.TableDefs().Append(table);
    }
    static void addPerson(Recordset& rs, int id, std::string_view name, int age)
    {
        rs.AddNew();
        rs.setValue(0, ValueView::integer(id));
        rs.setValue(1, ValueView::text(name));
        rs.setValue(2, ValueView::integer(age));
        rs.Update();
    }
    /// 3 Ann, 1 Carl, 2 Bea: in this physical order.
    void fillPeople(Database& db)
    {
        makePeople(db);
        Recordset rs = db.OpenRecordset("PEOPLE");
        addPerson(rs, 3, "Ann", 30);
        addPerson(rs, 1, "Carl", 10);
        addPerson(rs, 2, "Bea", 20);
    }

    static constexpr const char* kPath = "C:\\data.mem";
    MemoryFileSystem files;
    MemoryDriver driver;
    DriverAdded added{driver};
    Workspace workspace{files};
};

}  // namespace velnor::test
