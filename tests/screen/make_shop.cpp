// make_shop FILE.mdb - an Access file with two tables, made through the engine, for the pictures.
#include <cstdio>
#include <filesystem>

#include "access/engine.h"
#include "platform/host.h"

using namespace velnor;

namespace {

void add(TableDef& table, const char* name, FieldType type, int size = 0)
{
    table.Fields().Append(table.CreateField(name, static_cast<int>(type), size));
}

void index(TableDef& table, const char* name, const char* field)
{
    Index made = table.CreateIndex(name);
    made.Fields().Append(made.CreateField(field));
    table.Indexes().Append(std::move(made));
}

void makeShop(Database& shop)
{
    TableDef customers = shop.CreateTableDef("Customers");
    add(customers, "NAME", FieldType::Text, 40);
    add(customers, "CITY", FieldType::Text, 30);
    add(customers, "AMOUNT", FieldType::Currency);
    add(customers, "QTY", FieldType::Long);
    add(customers, "DAY", FieldType::Date);
    add(customers, "FLAG", FieldType::Boolean);
    add(customers, "NOTE", FieldType::Memo);
    index(customers, "ByName", "NAME");
    index(customers, "ByCity", "CITY");
    shop.TableDefs().Append(customers);
    TableDef orders = shop.CreateTableDef("Orders");
    add(orders, "Number", FieldType::Long);
    add(orders, "Customer", FieldType::Text, 40);
    add(orders, "Total", FieldType::Currency);
    shop.TableDefs().Append(orders);

    Recordset rows = shop.OpenRecordset("Customers", RecordsetType::Table);
    const char* const people[][2] = {{"Zoe Harris", "Oslo"},
                                     {"Ben Young", "Aberdeen"},
                                     {"Mona Keller", "Turin"},
                                     {"Ada Walker", "Geneva"}};
    int day = 40000;
    for (const auto& person : people) {
        rows.AddNew();
        rows.setValue(0, ValueView::text(person[0]));
        rows.setValue(1, ValueView::text(person[1]));
        rows.setValue(2, ValueView::currency(125000 * (day - 39990)));
        rows.setValue(3, ValueView::integer(day - 39990));
        rows.setValue(4, ValueView::date(day++));
        rows.setValue(5, ValueView::boolean(day % 2 == 0));
        if (day % 2 == 0)
            rows.setValue(6, ValueView::text("Called again,\r\nwants the new list."));
        rows.Update();
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    HostPaths paths;
    const auto files = makeLinuxFileSystem(paths);
    Workspace workspace(*files);
    try {
        const std::string path = paths.toProgram(std::filesystem::absolute(argv[1]).string());
        Database shop = workspace.CreateDatabase(path, kGeneralLocale);
        makeShop(shop);
        shop.Close();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "make_shop: %s\n", failure.what());
        return 1;
    }
    return 0;
}
