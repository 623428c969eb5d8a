#include "copy/field_list.h"

#include "copy/field_line.h"
#include "core/text.h"

namespace velnor {
namespace {

FieldList fieldListOf(Collection<Field>& fields)
{
    FieldList list;
    for (const Field& field : fields)
        list.add(QString::fromStdString(field.Name()), text::narrow16(field.Type()), field.Size());
    return list;
}

}  // namespace

void FieldList::add(const QString& name, short type, int size)
{
    const int element = count + 1;
    names[element] = name;
    types[element] = type;
    sizes[element] = size;
    count = text::narrow16(element);
    lines.append(fieldLine(name, type, size));
}

void FieldList::close()
{
    for (int element = 0; element <= count; ++element) {
        sizes[element] = 0;
        types[element] = 0;
        names[element].clear();
    }
    lines.clear();
}

FieldList fieldListOf(Recordset& records)
{
    return fieldListOf(records.Fields());
}

FieldList fieldListOf(TableDef& table)
{
    return fieldListOf(table.Fields());
}

}  // namespace velnor
