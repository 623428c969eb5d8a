// Fields that come and go on a table with records.
#include <algorithm>

#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/long_value.h"
#include "access/formats/jet/new_table.h"
#include "access/formats/jet/structure.h"
#include "access/formats/jet/table_change.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

bool hasProperties(const FieldDef& field)
{
    PropertyBlock block(PropertyText{});
    setFieldProperties(block, field);
    return !block.build().empty();
}

}  // namespace

// ---- a new field

bool TableChange::addField(const FieldDef& field)
{
    for (const Column& other : def_.columns)
        if (paths::sameName(other.name, field.name))
            throw EngineError(EngineErrorNumber::SameFieldNames,
                              "There is a field \"" + field.name + "\" already.");
    const JetHeader& header = file_.header();
    Column column =
        newColumn({file_.format(), header.order, header.codePage, header.columnWord}, field);
    if (column.autonumber())
        for (const Column& other : def_.columns)
            if (other.type == column.type && other.autonumber())
                throw EngineError(EngineErrorNumber::InvalidArgument,
                                  "Table \"" + entry_.name + "\" has an autonumber field already.");
    const bool misread = misreadBy(column);
    placeColumn(column);
    if (column.longValue()) {
        MapRecords maps(file_, def_.ownedMap.page);
        const RowPointer owned = maps.add();
        def_.longValues.push_back({column.id, owned, maps.add()});
    }
    def_.columns.push_back(column);
    requireRoomInRows();
    std::optional<std::string> changed;
    if (hasProperties(field))
        changed =
            changedProperties([&](PropertyBlock& block) { setFieldProperties(block, field); });
    write();
    touchCatalog(changed);
    if (column.autonumber())
        numberRecords(column);
    return misread && !column.autonumber();
}

/// Some readers go by the numbers of columns alone. They look for the table of offsets, which
/// records of fixed fields don't have, as soon as there is a variable field; and they take a new
/// fixed field for one of those whose place in the record a dropped field has left.
bool TableChange::misreadBy(const Column& column) const
{
    const RowPlan& rows = table_->plan();
    if (!column.fixed())
        return rows.variableSlots == 0;
    const auto standing = std::count_if(def_.columns.begin(), def_.columns.end(),
                                        [](const Column& other) { return other.fixed(); });
    return rows.columnIds - rows.variableSlots > standing;
}

/// A new id and a new slot, behind all that were ever given; a fixed field lies behind the last one
/// that stands, where old records may have bytes of a field that went: their mask of columns ends
/// in front of the new id.
void TableChange::placeColumn(Column& column)
{
    const RowPlan& rows = table_->plan();
    if (rows.columnIds >= kMaxColumns)
        throw EngineError(EngineErrorNumber::TooManyFields,
                          "Table \"" + entry_.name +
                              "\" has had 255 fields, deleted ones included; compact the database "
                              "before adding another.");
    column.id = static_cast<std::uint16_t>(rows.columnIds);
    def_.maxColumns = static_cast<std::uint16_t>(column.id + 1);
    for (const Column& other : def_.columns)
        column.ordinal = std::max<std::uint16_t>(column.ordinal, other.ordinal + 1);
    column.variableSlot = static_cast<std::uint16_t>(rows.variableSlots);
    if (column.fixed())
        column.fixedOffset = static_cast<std::uint16_t>(rows.fixedBytes);
    else
        def_.variableColumns = static_cast<std::uint16_t>(column.variableSlot + 1);
}

/// A record whose variable fields are all empty must fit in a page.
void TableChange::requireRoomInRows() const
{
    const RowPlan rows(file_.format(), file_.codePage(), def_);
    if (RowWriterBuffer(rows).size() > static_cast<std::size_t>(file_.format().row.maxBytes))
        throw EngineError(EngineErrorNumber::RecordTooLarge,
                          "Record is too large: table \"" + entry_.name +
                              "\" has no room for another field.");
}

/// Every record gets a number of its own, in the order in which they lie.
void TableChange::numberRecords(const Column& column)
{
    const auto table = std::make_shared<JetTable>(file_, def_.page(), entry_.name);
    const int field = table->plan().fieldOfId(column.id);
    const bool guid = column.type == column_type::kGuid;
    JetWriter writer(table, tables_, false);
    PhysicalCursor cursor(table);
    constexpr std::int32_t kBetweenBreaths = 1024;
    std::int32_t last = 0;
    std::string text;
    for (bool on = cursor.first(); on; on = cursor.next()) {
        ++last;
        const FieldChange change{field, guid ? randomGuid(text) : ValueView::integer(last)};
        writer.update(cursor.row(), {&change, 1});
        if (last % kBetweenBreaths == 0)
            file_.breathe();
    }
    if (!guid) {
        table->def().lastAutonumber = last;
        table->countsChanged();
    }
    table->saveCounts();
}

// ---- a field that goes

void TableChange::dropField(std::string_view name)
{
    const auto found = std::find_if(def_.columns.begin(), def_.columns.end(),
                                    [&](const Column& c) { return paths::sameName(c.name, name); });
    if (found == def_.columns.end())
        throw EngineError(EngineErrorNumber::ItemNotFound,
                          "There is no field \"" + std::string(name) + "\" in table \"" +
                              entry_.name + "\".");
    if (def_.columns.size() == 1)
        throw EngineError(EngineErrorNumber::InvalidArgument, "A table must have a field.");
    const Column column = *found;
    requireUnindexed(column);
    requireUnrelated(column);
    if (column.longValue())
        releaseLongValues(column);
    def_.columns.erase(found);
    std::optional<std::string> changed;
    try {
        changed = changedProperties([&](PropertyBlock& block) { block.dropOwner(column.name); });
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat)
            throw;  // a damaged block stays as it is
    }
    write();
    touchCatalog(changed);
}

void TableChange::requireUnindexed(const Column& column) const
{
    for (std::size_t i = 0; i < def_.realIndexes.size(); ++i) {
        const auto& parts = def_.realIndexes[i].columns;
        if (std::none_of(parts.begin(), parts.end(),
                         [&](const IndexColumn& part) { return part.id == column.id; }))
            continue;
        for (const LogicalIndex& index : def_.logicalIndexes)
            if (index.realIndex == i && index.relation != RelationKind::None)
                refuseRelated(column);
        throw EngineError(EngineErrorNumber::FieldInIndex,
                          "The field \"" + column.name + "\" of table \"" + entry_.name +
                              "\" is part of an index; delete that first.");
    }
}

void TableChange::refuseRelated(const Column& column) const
{
    throw EngineError(EngineErrorNumber::FieldInRelation,
                      "The field \"" + column.name + "\" of table \"" + entry_.name +
                          "\" is part of a relationship; delete that first.");
}

/// Relationships that are not enforced have no index: only their rows in the catalog tell of them.
void TableChange::requireUnrelated(const Column& column)
{
    constexpr const char* kTable = "MSysRelationships";
    if (!catalog_.find(kTable))
        return;
    const auto relations = catalog_.systemTable(kTable);
    PhysicalCursor cursor(relations);
    const auto holds = [&](const char* field, std::string_view name) {
        const int at = fieldNamed(*relations, field);
        const ValueView value = at < 0 ? ValueView::null() : cursor.field(at);
        return value.kind() == ValueKind::Text && paths::sameName(value.asText(), name);
    };
    for (bool on = cursor.first(); on; on = cursor.next())
        if ((holds("szObject", entry_.name) && holds("szColumn", column.name)) ||
            (holds("szReferencedObject", entry_.name) && holds("szReferencedColumn", column.name)))
            refuseRelated(column);
}

/// Headers of the values stay in the records, where nobody looks at them any more.
void TableChange::releaseLongValues(const Column& column)
{
    const LongValueMaps* maps = def_.mapsOf(column.id);
    if (!maps)
        return;
    LongValueColumn(file_, *maps).releaseAll();
    releaseMap(file_, maps->owned);
    releaseMap(file_, maps->space);
    std::erase_if(def_.longValues,
                  [&](const LongValueMaps& other) { return other.column == column.id; });
}

}  // namespace velnor::jet
