// tests/access/sql/sql_fixture.h - a database in memory with the tables of the examples, and
// answers as lines of text.
#pragma once

#include <memory>

#include "tests/access/model/model_fixture.h"

namespace velnor::test {

class SqlTest : public ModelTest {
protected:
    SqlTest() : db(open())
    {
        makeOrders();
        makeRegions();
    }
    /// ORDERS: ID (key), City, Region, Total currency, Qty, Day, Paid, Rate; in this order.
    void makeOrders()
    {
        TableDef table = db.CreateTableDef("ORDERS");
        const auto field = [&](const char* name, int type, int size = 0) {
            table.Fields().Append(table.CreateField(name, type, size));
        };
        field("ID", 4);
        field("City", 10, 20);
        field("Region", 10, 10);
        field("Total", 5);
        field("Qty", 3);
        field("Day", 8);
        field("Paid", 1);
        field("Rate", 7);
        Index key = table.CreateIndex("PrimaryKey");
        key.Primary(true);
        key.Unique(true);
        key.Fields().Append(key.CreateField("ID"));
        table.Indexes().Append(key);
        db.TableDefs().Append(table);
        add({"1", "Boston", "East", "100.25", "5", "2003-01-31", "True", "0.5"});
        add({"2", "boston", "West", "20", "7", "2003-02-01", "False", "1.5"});
        add({"3", "Lima", "East", "300", "", "2003-01-31 12:00:00", "True", ""});
        add({"4", "", "North", "", "2", "", "False", "2.25"});
        add({"5", "Oslo", "north", "20", "9", "1999-12-31", "False", "-1"});
    }
    void makeRegions()
    {
        TableDef table = db.CreateTableDef("REGIONS");
        table.Fields().Append(table.CreateField("Region", 10, 10));
        table.Fields().Append(table.CreateField("Head", 10, 20));
        db.TableDefs().Append(table);
        Recordset rs = db.OpenRecordset("REGIONS");
        for (const auto& [region, head] : {std::pair{"EAST", "O'Brien"}, {"North", "Berg"}}) {
            rs.AddNew();
            rs.setValue(0, ValueView::text(region));
            rs.setValue(1, ValueView::text(head));
            rs.Update();
        }
    }
    /// Empty texts are Null.
    void add(const std::vector<const char*>& values)
    {
        Recordset rs = db.OpenRecordset("ORDERS");
        rs.AddNew();
        for (std::size_t i = 0; i < values.size(); ++i)
            if (*values[i])
                rs.setValue(static_cast<int>(i), ValueView::text(values[i]));
        rs.Update();
    }
    /// The records as "a|b|c", Null as "Null".
    std::vector<std::string> answer(std::string_view statement,
                                    RecordsetType type = RecordsetType::Snapshot)
    {
        Recordset rs = db.OpenRecordset(statement, type);
        std::vector<std::string> lines;
        for (; !rs.Eof(); rs.MoveNext()) {
            std::string line;
            for (int i = 0; i < rs.fieldCount(); ++i)
                line += (i ? "|" : "") + shown(rs.value(i));
            lines.push_back(line);
        }
        return lines;
    }
    /// The first value of the first record.
    std::string one(std::string_view expression)
    {
        const auto lines =
            answer("SELECT " + std::string(expression) + " FROM ORDERS WHERE ID = 1");
        return lines.empty() ? "(none)" : lines.front();
    }
    int numberOf(std::string_view statement)
    {
        return errorOf([&] { answer(statement); });
    }
    std::string wordsOf(std::string_view statement)
    {
        try {
            answer(statement);
        } catch (const EngineError& error) {
            return error.what();
        }
        return "";
    }
    Database db;
};

using Lines = std::vector<std::string>;

}  // namespace velnor::test
