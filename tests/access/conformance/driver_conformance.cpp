#include "tests/access/conformance/driver_conformance.h"

#include <algorithm>

#include "access/value_text.h"

namespace velnor::test {

std::string shown(ValueView v)
{
    std::string text;
    appendText(text, v);
    return v.isNull() ? "Null" : text;
}

FieldDef fieldDef(std::string_view name, FieldType type, int size)
{
    FieldDef def;
    def.name = name;
    def.type = type;
    def.size = size;
    return def;
}

DriverConformance::DriverConformance() : db(makeDatabase()) {}

Database DriverConformance::makeDatabase()
{
    files.makeFolder(kFolder);
    if (!format().folder)
        workspace.CreateDatabase(kFile, kGeneralLocale + format().connect, format().createOptions)
            .Close();
    return open();
}

Database DriverConformance::open(bool readOnly)
{
    return workspace.OpenDatabase(format().folder ? kFolder : kFile, false, readOnly,
                                  format().connect);
}

void DriverConformance::reopen()
{
    db.Close();
    db = open();
}

void DriverConformance::TearDown()
{
    db.Close();
    db = open(true);
    for (TableDef& table : db.TableDefs())
        db.check(table.Name(), [&](const Database::Finding& finding) {
            EXPECT_TRUE(finding.harmless) << finding.where << ": " << finding.text;
        });
    db.Close();
}

Index indexOn(std::string_view name, std::initializer_list<Key> keys, bool unique)
{
    IndexDef def;
    def.name = name;
    def.unique = unique;
    for (const Key& key : keys)
        def.fields.push_back({key.field, key.descending});
    return Index(def);
}

void DriverConformance::makeTable(const std::vector<FieldDef>& fields, std::string_view name,
                                  const std::vector<velnor::Index>& indexes)
{
    TableDef table = db.CreateTableDef(name);
    for (const FieldDef& def : fields) {
        Field field = table.CreateField(def.name, static_cast<int>(def.type), def.size);
        field.def().precision = def.precision;
        field.def().scale = def.scale;
        table.Fields().Append(field);
    }
    for (const velnor::Index& index : indexes)
        table.Indexes().Append(index);
    db.TableDefs().Append(table);
}

void DriverConformance::makeNotes(const std::vector<velnor::Index>& more)
{
    std::vector<velnor::Index> indexes;
    if (format().indexes) {
        indexes.push_back(indexOn(primaryKey(), {{"ID"}}, true));
        indexes.back().Primary(true);
        indexes.insert(indexes.end(), more.begin(), more.end());
    }
    makeTable({fieldDef("ID", FieldType::Long), fieldDef("NAME", FieldType::Text, 60),
               fieldDef("NOTE", FieldType::Memo)},
              kTable, indexes);
}

void DriverConformance::addNote(Recordset& rs, int id, std::string_view name, std::string_view note)
{
    rs.AddNew();
    rs.setValue(0, ValueView::integer(id));
    rs.setValue(1, ValueView::text(name));
    if (!note.empty())
        rs.setValue(2, ValueView::text(note));
    rs.Update();
}

namespace {

/// The number that a step is refused with: the numbers for what a kind of file cannot do,
/// and for an index that it does not know.
template <class Step> void expectRefused(Step&& step)
{
    EXPECT_THAT(errorOf(step), ::testing::AnyOf(3251, 3027, 3617, 3018));
}

}  // namespace

void DriverConformance::expectEditRefused()
{
    makeTable({fieldDef("NAME", FieldType::Text, 20)});
    {
        Recordset rs = records();
        rs.AddNew();
        rs.setValue(0, ValueView::text("stays"));
        rs.Update();
        rs.MoveFirst();
        expectRefused([&] {
            rs.Edit();
            rs.setValue(0, ValueView::text("goes"));
            rs.Update();
        });
    }
    reopen();
    EXPECT_EQ(shown(records().value(0)), "stays");
}

void DriverConformance::expectDeleteRefused()
{
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "stays");
        rs.MoveFirst();
        expectRefused([&] { rs.Delete(); });
    }
    reopen();
    EXPECT_EQ(records().RecordCount(), 1);
}

void DriverConformance::expectIndexRefused()
{
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "stays");
    }
    auto& tables = db.TableDefs();
    TableDef& table = tables[tables.contains(listed(kTable)) ? listed(kTable) : kTable];
    expectRefused([&] { table.Indexes().Append(indexOn("Once", {{"NAME"}}, true)); });
    reopen();
    EXPECT_EQ(records().RecordCount(), 1);
}

void DriverConformance::expectFieldRefused()
{
    makeNotes();
    {
        Recordset rs = records();
        addNote(rs, 1, "stays");
    }
    auto& tables = db.TableDefs();
    TableDef& table = tables[tables.contains(listed(kTable)) ? listed(kTable) : kTable];
    expectRefused([&] { table.Fields().Append(table.CreateField("CITY", 10, 20)); });
    expectRefused([&] { table.Fields().Delete("NAME"); });
    reopen();
    EXPECT_EQ(shown(records().value(1)), "stays");
}

bool DriverConformance::keepsNullTexts() const
{
    return std::all_of(format().fields.begin(), format().fields.end(), [](const FieldCase& field) {
        return field.def.type != FieldType::Text || field.keepsNull;
    });
}

std::vector<std::string> DriverConformance::column(int n, std::string_view index)
{
    std::vector<std::string> all;
    Recordset rs = records();
    if (!index.empty())
        rs.Index(index);
    for (; !rs.Eof(); rs.MoveNext())
        all.push_back(shown(rs.value(n)));
    return all;
}

}  // namespace velnor::test
