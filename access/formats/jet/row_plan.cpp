// Where the fields of a table stand in its rows.
#include <algorithm>

#include "access/formats/jet/row_codec.h"

namespace velnor::jet {

RowPlan::RowPlan(const JetFormat& f, const CodePage& page, const TableDef& table)
    : format(&f), codePage(&page), columnIds(table.maxColumns), variableSlots(table.variableColumns)
{
    for (const int at : table.fieldOrder()) {
        const Column& c = table.columns[at];
        FieldPlan plan;
        plan.type = c.type;
        plan.fixed = c.fixed();
        plan.compress = c.moreFlags & column_flag::kCompressed;
        plan.scale = c.scale;
        plan.id = c.id;
        plan.place = c.fixed() ? c.fixedOffset : c.variableSlot;
        plan.length = c.length;
        plan.column = at;
        if (!plan.fixed)
            firstVariableId = std::min(firstVariableId, c.id);
        else if (c.type != column_type::kBoolean)
            fixedBytes = std::max<std::uint32_t>(fixedBytes, c.fixedOffset + c.length);
        columnIds = std::max<std::uint32_t>(columnIds, c.id + 1);
        if (!plan.fixed)
            variableSlots = std::max<std::uint32_t>(variableSlots, c.variableSlot + 1);
        fields.push_back(plan);
    }
}

int RowPlan::fieldOfId(std::uint16_t id) const
{
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].id == id)
            return static_cast<int>(i);
    return -1;
}

}  // namespace velnor::jet
