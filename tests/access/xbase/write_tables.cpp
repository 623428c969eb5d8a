// xbase_write FOLDER - tables of every kind with values that are easy to get wrong, for outside
// readers.
//
// Makes D3, D4, D5, F2, F3, F3R in the folder; what they must hold is in xbase_round_trip.py.
#include <cstdio>

#include "access/formats/xbase/xbase_driver.h"
#include "platform/host.h"

namespace {

using namespace velnor;

FieldDef def(const char* name, FieldType type, int size = 0)
{
    FieldDef field;
    field.name = name;
    field.type = type;
    field.size = size;
    return field;
}

FieldDef amount()
{
    FieldDef field = def("AMOUNT", FieldType::Decimal);
    field.precision = 10;
    field.scale = 2;
    return field;
}

ValueView text(const char* t)
{
    return ValueView::text(t);
}

std::vector<FieldDef> fieldsFor(bool visual)
{
    std::vector<FieldDef> fields{def("NAME", FieldType::Text, 20), amount(),
                                 def("QTY", FieldType::Integer),   def("DAY", FieldType::Date),
                                 def("FLAG", FieldType::Boolean),  def("NOTE", FieldType::Memo)};
    if (visual)
        for (const auto& [name, type] : {std::pair{"WHOLE", FieldType::Long},
                                         {"REAL", FieldType::Double},
                                         {"MONEY", FieldType::Currency}})
            fields.push_back(def(name, type));
    return fields;
}

void insert(RowWriter& writer, std::vector<ValueView> values, std::vector<ValueView> more,
            std::size_t fields)
{
    values.insert(values.end(), more.begin(), more.end());
    values.resize(fields);
    writer.insert(values);
}

void writeTable(Store& store, const char* name, bool visual)
{
    TableLayout layout;
    layout.name = name;
    layout.fields = fieldsFor(visual);
    for (FieldDef& field : layout.fields)
        field.required = layout.name == "F3R";
    store.createTable(layout);
    const std::size_t n = layout.fields.size();
    const auto writer = store.writer(name);
    const std::string longNote(3000, 'n');
    insert(*writer,
           {text("M\xC3\xBCller, Anna"), ValueView::real(2.675), ValueView::integer(-32768),
            ValueView::date(0), ValueView::boolean(true), text("line one\r\nline two")},
           {ValueView::integer(-2147483647 - 1), ValueView::real(-0.1),
            ValueView::currency(-9223372036854775807)},
           n);
    insert(*writer,
           {text("all twenty letters.."), ValueView::decimal(true, 0, 999999999, 2),
            ValueView::integer(0), ValueView::date(45351), ValueView::boolean(false),
            text(longNote.c_str())},
           {ValueView::integer(0), ValueView::real(1e300), ValueView::currency(1)}, n);
    insert(*writer, {}, {}, n);
    insert(*writer, {text("deleted"), {}, {}, {}, {}, text("gone")}, {}, n);
    insert(
        *writer,
        {text("changed"), ValueView::integer(7), {}, ValueView::date(-693593), {}, text("short")},
        {ValueView::null(), ValueView::real(5), ValueView::null()}, n);
    writer->remove(4);
    const FieldChange changes[] = {{0, text("changed twice")}, {5, text(longNote.c_str())}};
    writer->update(5, changes);
    store.commit();
    for (int i = 6; i <= 400; ++i) {
        const std::string row = std::to_string(i);
        insert(*writer,
               {text(row.c_str()),
                ValueView::real(i / 100.0),
                ValueView::integer(i),
                ValueView::date(36526 + i),
                ValueView::boolean(i % 2 == 0),
                {}},
               {ValueView::integer(i), ValueView::real(i / 8.0), ValueView::currency(i)}, n);
    }
    store.commit();
}

}  // namespace

int main(int count, char** words)
{
    if (count != 2)
        return 2;
    try {
        const xbase::XbaseDriver driver;
        for (const auto& [table, word] : {std::pair{"D3", "dBASE III;"},
                                          {"D4", "dBASE IV;"},
                                          {"D5", "dBASE 5.0;"},
                                          {"F2", "FoxPro 2.6;"},
                                          {"F3", "FoxPro 3.0;"},
                                          {"F3R", "FoxPro 3.0;"}}) {
            OpenRequest request;
            request.name = host().paths->fromPerson(words[1]);
            request.connectWord = word;
            request.readOnly = false;
            writeTable(*driver.open(*host().files, request), table,
                       request.connectWord == "FoxPro 3.0;");
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
