#include "organizer/store_tables.h"

#include <span>
#include <string>
#include <vector>

#include "access/engine.h"

namespace velnor {
namespace {

constexpr int kName = 100;
constexpr int kText = 255;
constexpr int kStamp = 30;  // "03-15-2004 12:30:05 PM"

struct Column {
    const char* name;
    FieldType type = FieldType::Text;
    int size = kText;
};

struct Key {
    const char* name;
    std::vector<const char*> columns;
    bool unique = false;
};

struct StoreTable {
    const char* name;
    std::vector<Column> columns;
    std::vector<Key> keys;
};

const std::vector<StoreTable>& storeTables()
{
    static const std::vector<StoreTable> tables{
        {"Databases",
         {{"DatabaseName", FieldType::Text, kName},
          {"DatabasePath"},
          {"Description"},
          {"FileType", FieldType::Text, 20},
          {"Group", FieldType::Text, kName},
          {"Comments", FieldType::Memo, 0},
          {"DateCreated", FieldType::Text, kStamp}},
         {{"DatabaseName", {"DatabaseName"}, true}, {"DatabaseGroup", {"Group", "DatabaseName"}}}},
        {"DatabaseTable",
         {{"DatabaseName", FieldType::Text, kName},
          {"FileName"},
          {"GroupName", FieldType::Text, kName},
          {"FileLocation"},
          {"FileDescription"},
          {"filesize", FieldType::Long, 0},
          {"DateTimeCreated", FieldType::Text, kStamp},
          {"DateDisp", FieldType::Text, kStamp}},
         {{"DatabaseName", {"DatabaseName", "FileLocation"}, true},
          {"DatabaseGroup", {"GroupName", "FileName"}},
          {"DatabaseDate", {"DateTimeCreated"}},
          {"DatabaseSize", {"filesize"}},
          {"Group_Type", {"GroupName"}}}},
        {"GroupTable",
         {{"ID", FieldType::Long, 0},
          {"GroupName", FieldType::Text, kName},
          {"GroupDesc"},
          {"Group_Name", FieldType::Text, kName},
          {"Group_Description"},
          {"Date", FieldType::Text, kStamp},
          {"CompDate", FieldType::Text, kStamp},
          {"CompTime", FieldType::Text, kStamp},
          {"Time", FieldType::Text, kStamp},
          {"DateTimeCreated", FieldType::Text, kStamp},
          {"DateDisp", FieldType::Text, kStamp}},
         {{"GroupName", {"GroupName"}}}},
        {"CopyLogFieldMap",
         {{"FromTablePath"},
          {"ToTablePath"},
          {"FromRecordName"},
          {"ToRecordName"},
          {"FromFieldName"},
          {"FromFieldType", FieldType::Text, 50},
          {"FromFieldSize", FieldType::Double, 0},
          {"TOFIELDNAME"},
          {"ToFieldType", FieldType::Text, 50},
          {"ToFieldSize", FieldType::Double, 0},
          {"DateCreated", FieldType::Text, kStamp}},
         {{"DateIndex", {"DateCreated"}}}},
        {"FieldDictionary",
         {{"DictionaryName", FieldType::Text, kName},
          {"Description"},
          {"DateCreated", FieldType::Text, kStamp}},
         {{"DictionaryName", {"DictionaryName"}, true}}},
        {"FieldDictionaryDetail",
         {{"DictionaryName", FieldType::Text, kName},
          {"FIELDNAME", FieldType::Text, kName},
          {"FieldType", FieldType::Text, 50},
          {"FieldSize", FieldType::Text, 20},
          {"DateCreated", FieldType::Text, kStamp}},
         {{"FieldNameKey", {"DictionaryName", "FIELDNAME"}, true}}},
    };
    return tables;
}

void addTable(Database& store, const StoreTable& table)
{
    TableDef draft = store.CreateTableDef(table.name);
    for (const Column& column : table.columns) {
        Field field = draft.CreateField(column.name, static_cast<int>(column.type), column.size);
        field.def().autonumber = std::string_view(column.name) == "ID";
        draft.Fields().Append(field);
    }
    for (const Key& key : table.keys) {
        Index index = draft.CreateIndex(key.name);
        index.Unique(key.unique);
        for (const char* column : key.columns)
            index.Fields().Append(index.CreateField(column));
        draft.Indexes().Append(index);
    }
    store.TableDefs().Append(draft);
}

/// Two programs' worth of names for one pair of texts: the search fills the first, the group window
/// the other; a delivered row has both.
void addGroups(Database& store)
{
    Recordset groups = store.OpenRecordset("GroupTable", RecordsetType::Table);
    for (const std::string name : {"Access Files", "DBase Files", "Documents", "Fox Pro Files",
                                   "Paradox Files", "Spread Sheets", "Test Files", "Web Pages"}) {
        const std::string description = name + " Description";
        groups.AddNew();
        groups.Fields().Item("GroupName").Value(ValueView::text(name));
        groups.Fields().Item("Group_Name").Value(ValueView::text(name));
        groups.Fields().Item("GroupDesc").Value(ValueView::text(description));
        groups.Fields().Item("Group_Description").Value(ValueView::text(description));
        groups.Update();
    }
}

}  // namespace

void makeOrganizerStore(FileSystem& files, std::string_view path)
{
    Workspace workspace(files);
    Database store = workspace.CreateDatabase(path, kGeneralLocale);
    for (const StoreTable& table : storeTables())
        addTable(store, table);
    addGroups(store);
    store.Close();
}

}  // namespace velnor
