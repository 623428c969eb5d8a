// access/model/table_state.h - what stands behind a TableDef: a draft, or a table of an open
// database.
#pragma once

#include <memory>
#include <vector>

#include "access/engine.h"
#include "access/formats/driver.h"

namespace velnor {

/// A draft keeps its fields and indexes in the collections alone. Once it is stored, `layout` is
/// what the file has, read at first use, and changes of the collections go to the file first.
struct TableDef::State {
    TableLayout layout;
    Collection<Field> fields;
    Collection<Index> indexes;
    std::weak_ptr<model::DatabaseState> database;
    FormatTraits traits;
    bool stored = false;
    bool loaded = false;

    /// A draft for a database; without one, the traits are the widest.
    State(std::string_view name, const FormatTraits& formatTraits);

    /// From now on a table of the file. `self` outlives the hooks: they lie in its own collections.
    void becomeStored(const std::shared_ptr<model::DatabaseState>& owner);
    /// Reads the structure when that has not been done.
    void load();
    /// The draft's collections as plain data.
    TableLayout draftLayout() const;
    /// 3420 when the database is closed.
    std::shared_ptr<model::DatabaseState> owner() const;

private:
    void read();
    void reread();
    void appendField(Field& field);
    void deleteField(const Field& field);
    void appendIndex(Index& index);
    void deleteIndex(const Index& index);
};

}  // namespace velnor
