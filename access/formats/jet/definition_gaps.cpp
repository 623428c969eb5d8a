#include "access/formats/jet/definition_gaps.h"

#include <algorithm>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/row_codec.h"

namespace velnor::jet {
namespace {

std::vector<Column*> columnsBy(TableDef& def, std::uint16_t Column::*order)
{
    std::vector<Column*> columns;
    for (Column& c : def.columns)
        columns.push_back(&c);
    std::stable_sort(columns.begin(), columns.end(),
                     [order](const Column* a, const Column* b) { return a->*order < b->*order; });
    return columns;
}

}  // namespace

bool hasGaps(const TableDef& def)
{
    const auto variable = std::count_if(def.columns.begin(), def.columns.end(),
                                        [](const Column& c) { return !c.fixed(); });
    return def.maxColumns != def.columns.size() || def.variableColumns != variable;
}

TableDef withoutGaps(TableDef def)
{
    std::vector<std::uint16_t> numberOf(0x10000, 0xFFFF);
    std::uint16_t slots = 0;
    for (Column* c : columnsBy(def, &Column::variableSlot))
        if (!c->fixed())
            c->variableSlot = slots++;
    std::uint16_t number = 0, offset = 0, variable = 0;
    for (Column* c : columnsBy(def, &Column::id)) {
        numberOf[c->id] = number;
        c->id = number++;
        if (!c->fixed()) {
            ++variable;
            continue;
        }
        c->variableSlot = variable;
        c->fixedOffset = offset;
        if (c->type != column_type::kBoolean)
            offset = static_cast<std::uint16_t>(offset + c->length);
    }
    for (RealIndex& index : def.realIndexes)
        for (IndexColumn& column : index.columns)
            column.id = numberOf[column.id];
    for (LongValueMaps& maps : def.longValues)
        maps.column = numberOf[maps.column];
    def.maxColumns = number;
    def.variableColumns = slots;
    return def;
}

bool fitsWithoutGaps(JetTable& table)
{
    const JetFormat& format = table.file().format();
    const RowPlan plan(format, table.file().codePage(), withoutGaps(table.def()));
    RowWriterBuffer buffer(plan);
    RowReader reader(table.plan());
    for (const PageNumber number : table.pages()) {
        const auto page = table.dataPage(number);
        const int slots = page ? DataPage(format, page->data()).rowCount() : 0;
        for (int slot = 0; slot < slots; ++slot) {
            const auto row = table.rowOn(*page, slot);
            if (!row || !reader.open(row->bytes))
                continue;
            buffer.clear();
            for (int i = 0; i < static_cast<int>(plan.fields.size()); ++i)
                if (const auto raw = reader.raw(i))
                    buffer.setRaw(i, *raw);
            if (buffer.size() > static_cast<std::size_t>(format.row.maxBytes))
                return false;
        }
    }
    return true;
}

}  // namespace velnor::jet
