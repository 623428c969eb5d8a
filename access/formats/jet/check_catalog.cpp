#include "access/formats/jet/check_catalog.h"

#include <algorithm>
#include <set>

#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

std::string tableText(const JetTable& table)
{
    return "table " + table.name();
}

void checkColumns(CheckContext& context, const TableDef& def, const std::string& where)
{
    std::set<std::uint16_t> ids;
    std::set<std::uint16_t> slots;
    std::set<std::string> names;
    for (const Column& column : def.columns) {
        if (!ids.insert(column.id).second || column.id >= def.maxColumns)
            context.problem(where, "Field " + column.name + " has an impossible number.");
        if (!column.fixed() && (!slots.insert(column.variableSlot).second ||
                                column.variableSlot >= def.variableColumns))
            context.problem(where, "Field " + column.name + " has an impossible slot.");
        if (column.name.empty() || !names.insert(paths::foldName(column.name)).second)
            context.problem(where, "Two fields are called \"" + column.name + "\".");
        if (column.type == 0 || column.type > 20)
            context.problem(where, "Field " + column.name + " is of no known type.");
    }
    if (!std::ranges::is_sorted(def.columns, {}, &Column::ordinal))
        context.note(where, "Its fields are not in their order.");
}

void checkIndexBlocks(CheckContext& context, const TableDef& def, const std::string& where)
{
    std::set<std::uint32_t> used;
    std::set<std::uint32_t> numbers;
    std::set<std::string> names;
    for (const LogicalIndex& index : def.logicalIndexes) {
        if (index.realIndex >= def.realIndexes.size() &&
            index.relation != RelationKind::ChildWithoutIndex)
            context.problem(where, "Index " + index.name + " has no tree.");
        used.insert(index.realIndex);
        if (!numbers.insert(index.number).second)
            context.problem(where, "Index " + index.name + " has the number of another.");
        if (index.name.empty() || !names.insert(paths::foldName(index.name)).second)
            context.problem(where, "Two indexes are called \"" + index.name + "\".");
        if (index.kind == LogicalKind::Primary && index.realIndex < def.realIndexes.size() &&
            !def.realIndexes[index.realIndex].unique())
            context.problem(where, "Its primary key is not unique.");
    }
    for (std::uint32_t i = 0; i < def.realIndexes.size(); ++i) {
        const RealIndex& index = def.realIndexes[i];
        if (!used.contains(i))
            context.problem(where, "The tree on page " + std::to_string(index.root) +
                                       " belongs to no index.");
        if (index.columns.empty())
            context.problem(where, "Index " + std::to_string(i) + " is on no field.");
        for (const IndexColumn& column : index.columns)
            if (!def.columnById(column.id))
                context.problem(where,
                                "Index " + std::to_string(i) + " is on a field that is not there.");
    }
}

/// Rows of MSysACEs against the objects: each object needs rights, and rights need an object.
void checkRights(CheckContext& context, Catalog& catalog, const std::set<std::int64_t>& ids)
{
    const std::string where = "table MSysACEs";
    std::set<std::int64_t> withRights;
    try {
        const auto rights = catalog.systemTable("MSysACEs");
        const int object = fieldNamed(*rights, "ObjectId");
        PhysicalCursor cursor(rights);
        for (bool on = object >= 0 && cursor.first(); on; on = cursor.next()) {
            const ValueView id = cursor.field(object);
            if (id.kind() != ValueKind::Integer)
                continue;
            withRights.insert(id.asInteger());
            if (!ids.contains(id.asInteger()))
                context.problem(where, "There are rights to an object " +
                                           std::to_string(id.asInteger()) + " that is not there.");
        }
    } catch (const EngineError& error) {
        context.problem(where, error.what());
        return;
    }
    for (const CatalogEntry& entry : catalog.objects())
        if (entry.table() && !withRights.contains(entry.id))
            context.problem(where, "Nobody has rights to table " + entry.name + ".");
}

void checkProperties(CheckContext& context, Catalog& catalog, const CatalogEntry& entry,
                     const JetTable* table)
{
    const auto objects = catalog.objectTable();
    const int field = fieldNamed(*objects, "LvProp");
    PhysicalCursor cursor(objects);
    if (field < 0 || !cursor.moveTo(entry.row))
        return;
    const ValueView stored = cursor.field(field);
    if (stored.kind() != ValueKind::Bytes)
        return;
    const std::string where = "properties of " + entry.name;
    try {
        const PropertyText text{!context.file.format().wideText, &context.file.codePage()};
        const PropertyBlock block = PropertyBlock::parse(stored.asBytes(), text);
        if (!table)
            return;
        for (const std::string& owner : block.owners()) {
            const bool known =
                owner.empty() || std::ranges::any_of(table->def().columns, [&](const Column& c) {
                    return paths::sameName(c.name, owner);
                });
            if (!known)
                context.note(where, "They name a field " + owner + " that is not there.");
        }
    } catch (const EngineError& error) {
        context.problem(where, error.what());
    }
}

}  // namespace

void checkDefinition(CheckContext& context, JetTable& table, const std::string& where)
{
    const TableDef& def = table.def();
    const auto owner = context.addOwner("the definition of " + where);
    for (const PageNumber page : def.chain)
        context.claim(page, owner);
    const JetFormat& format = context.file.format();
    const auto length = loadLE<std::uint32_t>(def.raw.data() + format.table.length);
    const std::size_t bytes = buildTableDef(def, context.file.names()).size();
    if (length != bytes)
        context.problem(where, "The length of its definition is " + std::to_string(length) +
                                   ", but it has " + std::to_string(bytes) + " bytes.");
    if (def.kind != 'N' && def.kind != 'S')
        context.problem(where, "It is of no known kind.");
    checkColumns(context, def, where);
    checkIndexBlocks(context, def, where);
}

void checkRelations(CheckContext& context, const CheckedTables& tables)
{
    for (const auto& [page, table] : tables) {
        for (const LogicalIndex& index : table->def().logicalIndexes) {
            if (index.relation == RelationKind::None)
                continue;
            const std::string where = tableText(*table) + ", relationship " + index.name;
            const auto other = tables.find(index.otherTable);
            if (other == tables.end()) {
                context.problem(where, "The other table is not there.");
                continue;
            }
            const auto& ends = other->second->def().logicalIndexes;
            const auto end = std::ranges::find_if(ends, [&](const LogicalIndex& candidate) {
                return static_cast<std::int32_t>(candidate.number) == index.otherIndex;
            });
            if (end == ends.end() || end->otherTable != page ||
                end->otherIndex != static_cast<std::int32_t>(index.number))
                context.problem(where, "The other table does not know of it.");
        }
    }
}

void checkObjects(CheckContext& context, Catalog& catalog, const CheckedTables& tables)
{
    const std::string where = "table MSysObjects";
    std::set<std::int64_t> ids{kRootContainer};
    for (const CatalogEntry& entry : catalog.objects())
        if (!ids.insert(entry.id).second)
            context.problem(where, "Two objects have the number " + std::to_string(entry.id) + ".");
    for (const CatalogEntry& entry : catalog.objects()) {
        if (entry.name.empty())
            context.problem(where, "An object has no name.");
        if (!ids.contains(entry.parent))
            context.problem(where, "Object " + entry.name + " lies in no container.");
        const auto table =
            entry.table() ? tables.find(static_cast<PageNumber>(entry.id)) : tables.end();
        checkProperties(context, catalog, entry,
                        table == tables.end() ? nullptr : table->second.get());
    }
    checkRights(context, catalog, ids);
}

}  // namespace velnor::jet
