#include "access/formats/jet/relation_rows.h"

#include <algorithm>
#include <set>

#include "access/formats/jet/catalog_objects.h"
#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/system_row.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

std::shared_ptr<JetTable> noTable(PageNumber)
{
    return nullptr;
}

const LogicalIndex* indexNumbered(const TableDef& def, std::int32_t number)
{
    for (const LogicalIndex& index : def.logicalIndexes)
        if (static_cast<std::int32_t>(index.number) == number)
            return &index;
    return nullptr;
}

/// The columns of an index, by name, in key order.
std::vector<std::string> columnsOf(const TableDef& def, const LogicalIndex& index)
{
    std::vector<std::string> names;
    if (index.realIndex < def.realIndexes.size())
        for (const IndexColumn& column : def.realIndexes[index.realIndex].columns)
            if (const Column* c = def.columnById(column.id))
                names.push_back(c->name);
    return names;
}

}  // namespace

RelationRows::RelationRows(JetFile& file, Catalog& catalog)
    : catalog_(catalog), relationships_(catalog.systemTable("MSysRelationships"))
{
    for (const CatalogEntry& entry : catalog.objects())
        if (entry.table())
            tables_[static_cast<PageNumber>(entry.id)] =
                std::make_shared<JetTable>(file, static_cast<PageNumber>(entry.id), entry.name);
}

const JetTable* RelationRows::tableAt(PageNumber page) const
{
    const auto found = tables_.find(page);
    return found == tables_.end() ? nullptr : found->second.get();
}

void RelationRows::read()
{
    rows_.clear();
    const int name = fieldNamed(*relationships_, "szRelationship");
    const int bits = fieldNamed(*relationships_, "grbit");
    PhysicalCursor cursor(relationships_);
    for (bool on = cursor.first(); on && name >= 0 && bits >= 0; on = cursor.next()) {
        const ValueView of = cursor.field(name);
        if (of.kind() != ValueKind::Text)
            continue;
        Rows& rows = rows_[paths::foldName(of.asText())];
        const ValueView grbit = cursor.field(bits);
        rows.enforced =
            grbit.kind() == ValueKind::Integer && !(grbit.asInteger() & relation_bit::kNotEnforced);
        rows.rows.push_back(cursor.row());
    }
}

void RelationRows::addRows(const JetTable& child, const LogicalIndex& end)
{
    const JetTable* parent = tableAt(end.otherTable);
    const LogicalIndex* other = parent ? indexNumbered(parent->def(), end.otherIndex) : nullptr;
    if (!other)
        return;
    const auto own = columnsOf(child.def(), end), theirs = columnsOf(parent->def(), *other);
    const std::size_t count = std::min(own.size(), theirs.size());
    std::int32_t bits = child.def().realIndexes[end.realIndex].unique() ? relation_bit::kUnique : 0;
    bits |= end.updateRule == 1 ? relation_bit::kCascadeUpdates : 0;
    bits |= end.deleteRule == 1   ? relation_bit::kCascadeDeletes
            : end.deleteRule == 2 ? relation_bit::kSetNull
                                  : 0;
    JetWriter writer(relationships_, noTable, false);
    for (std::size_t i = 0; i < count; ++i) {
        SystemRow row(*relationships_);
        row.set("szRelationship", ValueView::text(end.name));
        row.set("grbit", ValueView::integer(bits));
        row.set("ccolumn", ValueView::integer(static_cast<std::int64_t>(count)));
        row.set("icolumn", ValueView::integer(static_cast<std::int64_t>(i)));
        row.set("szObject", ValueView::text(child.name()));
        row.set("szColumn", ValueView::text(own[i]));
        row.set("szReferencedObject", ValueView::text(parent->name()));
        row.set("szReferencedColumn", ValueView::text(theirs[i]));
        writer.insert(row.values());
    }
}

void RelationRows::addObject(const std::string& name)
{
    std::int32_t id = INT32_MIN;
    for (const CatalogEntry& entry : catalog_.objects()) {
        if (entry.type == object_type::kRelationship && paths::sameName(entry.name, name))
            return;
        if (entry.id < 0)
            id = std::max(id, entry.id + 1);
    }
    velnor::jet::addObject(
        catalog_, {name, id, kRelationshipsContainer, object_type::kRelationship, 0, false});
}

void RelationRows::complete(const std::function<void(const std::string&)>& tell)
{
    read();
    std::set<std::string> withEnds;
    for (const auto& [page, table] : tables_)
        for (const LogicalIndex& end : table->def().logicalIndexes) {
            if (end.relation != RelationKind::Child)
                continue;
            const std::string name = paths::foldName(end.name);
            withEnds.insert(name);
            if (!rows_.contains(name)) {
                addRows(*table, end);
                addObject(end.name);
                tell("The rows of the relationship \"" + end.name +
                     "\" were lost and are made anew.");
            }
        }
    read();
    JetWriter writer(relationships_, noTable, false);
    const FieldChange loose{fieldNamed(*relationships_, "grbit"),
                            ValueView::integer(relation_bit::kNotEnforced)};
    for (const auto& [name, rows] : rows_)
        if (rows.enforced && !withEnds.contains(name)) {
            for (const RowId row : rows.rows)
                writer.update(row, std::span(&loose, 1));
            tell("The relationship \"" + name + "\" is no longer enforced.");
        }
    std::vector<CatalogEntry> empty;
    for (const CatalogEntry& entry : catalog_.objects())
        if (entry.type == object_type::kRelationship &&
            !rows_.contains(paths::foldName(entry.name)))
            empty.push_back(entry);
    for (const CatalogEntry& entry : empty) {
        removeObject(catalog_, entry.id);
        tell("Nothing is left of the relationship \"" + entry.name + "\"; it is gone.");
    }
}

}  // namespace velnor::jet
