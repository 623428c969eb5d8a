// access/formats/jet/table_change.h - changing the structure of a table that stands: its indexes
// and its fields.
//
// The definition is changed as a copy in memory and written as a whole at the end; what fails
// before or after is undone with the changed pages, by the store. Records are not touched: those
// written before a field came have fewer columns and read as Null there; those written before a
// field went keep its bytes until they are written again. Ids of columns and slots of variable
// columns are given once in the life of a table and never again.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/formats/jet/catalog.h"
#include "access/formats/jet/entry_run.h"
#include "access/formats/jet/jet_file.h"
#include "access/formats/jet/properties.h"
#include "access/formats/jet/relations.h"
#include "access/layout.h"

namespace velnor::jet {

class TableChange {
public:
    /// 3251 for system tables and tables that can only be read.
    TableChange(JetFile& file, Catalog& catalog, CatalogEntry entry,
                std::shared_ptr<JetTable> table, TableByPage tables);

    /// Builds the index from the records. 3022 when it is unique and two records have one key, 3058
    /// when a record has a Null that it forbids, 3018 when it cannot be on these fields or there
    /// are 32 indexes, 3251 when the order of a record's text is not known, 3367 when the name is
    /// taken or there is a primary key.
    void addIndex(const IndexDef& index);
    /// Gives the pages of the index back. 3015 when there is none, 3281 when a relationship needs
    /// it.
    void dropIndex(std::string_view name);
    /// 3190 when the table has had 255 fields in its life, 3191 when the name is taken, 3047 when
    /// no record would have room. Records get their numbers in a new autonumber field. Returns
    /// whether there are readers that misread the records as they stand: they should be written
    /// again.
    bool addField(const FieldDef& field);
    /// Frees the field's long values. 3265 when there is none, 3280 when an index has it, 3303
    /// when a relationship has it, 3001 when it is the last.
    void dropField(std::string_view name);

private:
    /// An entry of the new index for each record that it takes.
    EntryRun collectEntries(const RealIndex& real, const IndexPlan& plan);
    void buildTree(RealIndex& real);
    void dropRealIndex(std::uint32_t real);

    void placeColumn(Column& column);
    void requireRoomInRows() const;
    bool misreadBy(const Column& column) const;
    void numberRecords(const Column& column);
    void requireUnindexed(const Column& column) const;
    void requireUnrelated(const Column& column);
    [[noreturn]] void refuseRelated(const Column& column) const;
    void releaseLongValues(const Column& column);

    void write();
    /// The property block after a change; nothing when that changes nothing. 3274 when the block is
    /// damaged, since it would be lost when it is written.
    std::optional<std::string> changedProperties(const std::function<void(PropertyBlock&)>& change);
    /// The day of the last change, and the properties when they are others now.
    void touchCatalog(const std::optional<std::string>& properties = std::nullopt);

    JetFile& file_;
    Catalog& catalog_;
    CatalogEntry entry_;
    std::shared_ptr<JetTable> table_;
    TableByPage tables_;
    TableDef def_;
};

}  // namespace velnor::jet
