// Text files through the engine's face, as windows use them.
#include <gtest/gtest.h>

#include "access/engine.h"
#include "platform/memory_file_system.h"

using namespace velnor;

namespace {

void put(MemoryFileSystem& files, std::string_view path, std::string_view content)
{
    files.put(path, {reinterpret_cast<const std::uint8_t*>(content.data()), content.size()});
}

}  // namespace

TEST(TextEngine, theDummySourceOpensByItsFileName)
{
    MemoryFileSystem files;
    put(files, "C:\\App\\Close.Txt",
        "This file is opened in place of a closed one.\r\nIt is never written.\r\n");
    put(files, "C:\\App\\Velnor.Txt", "Velnor\r\n");
    Workspace workspace(files);
    for (const char* connect : {"Text", "Text;"}) {
        Database database = workspace.OpenDatabase("C:\\App", false, false, connect);
        Recordset close = database.OpenRecordset("Close.Txt", RecordsetType::Dynaset);
        EXPECT_FALSE(close.Eof());
        EXPECT_EQ(close.value(0).asText(), "It is never written.");
        Recordset other = database.OpenRecordset("Velnor.Txt");
        EXPECT_TRUE(other.Eof());
    }
}

TEST(TextEngine, aTextFileIsATable)
{
    MemoryFileSystem files;
    put(files, "C:\\App\\orders.csv", "NAME,QTY\r\nAnn,3\r\nBob,5\r\n");
    Workspace workspace(files);
    Database database = workspace.OpenDatabase("C:\\App", false, true, "Text;");
    EXPECT_EQ(database.TableDefs().Count(), 1);
    EXPECT_EQ(database.TableDefs()["ORDERS.CSV"].Attributes(), 0u);
    Recordset rows = database.OpenRecordset("orders.csv");
    rows.MoveLast();
    EXPECT_EQ(rows.RecordCount(), 2);
    EXPECT_EQ(rows.value(1).asInteger(), 5);
    rows.MovePrevious();
    EXPECT_EQ(rows.value(0).asText(), "Ann");
}

namespace {

std::string firstTextOf(Database& database, std::string_view source)
{
    Recordset rows = database.OpenRecordset(source);
    return rows.Eof() ? "" : std::string(rows.value(0).asText());
}

}  // namespace

TEST(TextEngine, aTextFileIsAQuerySource)
{
    MemoryFileSystem files;
    put(files, "C:\\App\\orders.csv", "NAME,QTY\r\nAnn,3\r\nBob,5\r\n");
    Workspace workspace(files);
    Database database = workspace.OpenDatabase("C:\\App", false, true, "Text;");
    EXPECT_EQ(firstTextOf(database, "SELECT [NAME] FROM [orders.csv] WHERE [QTY] > 3"), "Bob");
    EXPECT_EQ(firstTextOf(database, "SELECT NAME FROM [orders.csv] ORDER BY QTY DESC"), "Bob");
}

TEST(TextEngine, aWorksheetIsAQuerySource)
{
    MemoryFileSystem files;
    Workspace workspace(files);
    Database database =
        workspace.CreateDatabase("C:\\pay.wk4", std::string(kGeneralLocale) + "Lotus WK4;");
    TableDef table = database.CreateTableDef("Orders");
    table.Fields().Append(table.CreateField("NAME", 10, 20));
    table.Fields().Append(table.CreateField("QTY", 4, 0));
    database.TableDefs().Append(table);
    {
        Recordset rows = database.OpenRecordset("Orders");
        for (const char* name : {"Ann", "Bob"}) {
            rows.AddNew();
            rows.setValue(0, ValueView::text(name));
            rows.setValue(1, ValueView::integer(*name));
            rows.Update();
        }
    }
    database.Close();
    database = workspace.OpenDatabase("C:\\pay.wk4", false, true, "Lotus WK4;");
    EXPECT_EQ(firstTextOf(database, "SELECT [NAME] FROM [Orders:] WHERE [QTY] > 65"), "Bob");
    EXPECT_EQ(firstTextOf(database, "SELECT * FROM [Orders:] ORDER BY [NAME] DESC"), "Bob");
}
