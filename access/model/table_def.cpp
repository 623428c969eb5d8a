// access/model/table_def.cpp - Field, Index and TableDef of engine.h, and the state behind a
// TableDef.

#include "access/model/collection.h"
#include "access/model/database_state.h"
#include "access/model/structure_checks.h"
#include "access/model/table_state.h"

namespace velnor {
namespace {

template <class Range> std::vector<FieldDef> defsOf(const Range& fields)
{
    std::vector<FieldDef> defs;
    for (const Field& field : fields)
        defs.push_back(field.def());
    return defs;
}

template <class T, class Def> std::vector<T> itemsOf(const std::vector<Def>& defs)
{
    return std::vector<T>(defs.begin(), defs.end());
}

const std::string& nameOf(const Field& field)
{
    return field.Name();
}
const std::string& nameOf(const Index& index)
{
    return index.Name();
}

template <class T, class Def> T itemNamed(const std::vector<Def>& defs, const T& wanted)
{
    for (const Def& def : defs)
        if (paths::sameName(def.name, nameOf(wanted)))
            return T(def);
    return wanted;
}

}  // namespace

// Index

Index::Index(const IndexDef& def) : name_(def.name), flags_(def)
{
    for (const IndexFieldDef& key : def.fields)
        fields_.Append(CreateField(key.name));
}

Field Index::CreateField(std::string_view name) const
{
    FieldDef def;
    def.name = name;
    def.type = FieldType::None;
    return Field(std::move(def));
}

void Index::descending(std::string_view field, bool on)
{
    for (IndexFieldDef& key : flags_.fields)
        if (paths::sameName(key.name, field)) {
            key.descending = on;
            return;
        }
    flags_.fields.push_back({std::string(field), on});
}

IndexDef Index::def() const
{
    IndexDef def = flags_;
    def.name = name_;
    def.fields.clear();
    for (const Field& field : fields_.items_) {
        bool down = false;
        for (const IndexFieldDef& key : flags_.fields)
            down = down || (key.descending && paths::sameName(key.name, field.Name()));
        def.fields.push_back({field.Name(), down});
    }
    return def;
}

// TableDef

TableDef::TableDef(std::string_view name) : state_(std::make_shared<State>(name, FormatTraits{})) {}

const std::string& TableDef::Name() const
{
    return state_->layout.name;
}
std::uint32_t TableDef::Attributes() const
{
    return state_->layout.attributes;
}

std::int64_t TableDef::RecordCount() const
{
    return state_->stored ? state_->owner()->store().recordCount(Name()) : 0;
}

double TableDef::DateCreated() const
{
    return layout().dateCreated;
}
double TableDef::LastUpdated() const
{
    return layout().lastUpdated;
}
const std::string& TableDef::SourceTableName() const
{
    return layout().sourceTableName;
}
bool TableDef::Updatable() const
{
    return layout().updatable;
}
const std::string& TableDef::ValidationText() const
{
    return layout().validationText;
}
const std::string& TableDef::description() const
{
    return layout().description;
}
const std::string& TableDef::whyNotUpdatable() const
{
    return layout().whyNotUpdatable;
}

Field TableDef::CreateField(std::string_view name, int type, int size) const
{
    FieldDef def;
    def.name = name;
    def.type = static_cast<FieldType>(type);
    def.size = size;
    model::settleField(def, state_->traits);
    return Field(std::move(def));
}

Index TableDef::CreateIndex(std::string_view name) const
{
    IndexDef def;
    def.name = name;
    return Index(def);
}

Collection<Field>& TableDef::Fields()
{
    state_->load();
    return state_->fields;
}

Collection<Index>& TableDef::Indexes()
{
    state_->load();
    return state_->indexes;
}

const TableLayout& TableDef::layout() const
{
    if (state_->stored)
        state_->load();
    else
        state_->layout = state_->draftLayout();
    return state_->layout;
}

// TableDef::State

TableDef::State::State(std::string_view name, const FormatTraits& formatTraits)
    : traits(formatTraits)
{
    layout.name = name;
}

std::shared_ptr<model::DatabaseState> TableDef::State::owner() const
{
    auto held = database.lock();
    if (!held || !held->isOpen())
        throw EngineError(EngineErrorNumber::ObjectClosed,
                          "The database of table " + layout.name + " is closed.");
    return held;
}

TableLayout TableDef::State::draftLayout() const
{
    TableLayout made = layout;
    made.fields = defsOf(fields.items_);
    made.indexes.clear();
    for (const velnor::Index& index : indexes.items_)
        made.indexes.push_back(index.def());
    return made;
}

void TableDef::State::becomeStored(const std::shared_ptr<model::DatabaseState>& holder)
{
    database = holder;
    traits = holder->traits();
    stored = true;
    loaded = false;
    fields.onAppend_ = [this](Field& field) { appendField(field); };
    fields.onDelete_ = [this](Field& field) { deleteField(field); };
    fields.onRefresh_ = [this] {
        read();
        return itemsOf<Field>(layout.fields);
    };
    indexes.onAppend_ = [this](velnor::Index& index) { appendIndex(index); };
    indexes.onDelete_ = [this](velnor::Index& index) { deleteIndex(index); };
    indexes.onRefresh_ = [this] {
        read();
        return itemsOf<velnor::Index>(layout.indexes);
    };
}

void TableDef::State::read()
{
    layout = owner()->store().layout(layout.name);
}

void TableDef::State::load()
{
    if (!stored || loaded)
        return;
    read();
    fields.items_ = itemsOf<Field>(layout.fields);
    indexes.items_ = itemsOf<velnor::Index>(layout.indexes);
    loaded = true;
}

void TableDef::State::appendField(Field& field)
{
    const auto held = owner();
    held->requireWriteable();
    std::vector<FieldDef> all = defsOf(fields.items_);
    all.push_back(field.def());
    model::settleFields(all, traits);
    held->openStore().requireUnused(layout.name);
    held->store().addField(layout.name, all.back());
    read();
    field = itemNamed(layout.fields, Field(all.back()));
}

void TableDef::State::deleteField(const Field& field)
{
    const auto held = owner();
    held->requireWriteable();
    held->openStore().requireUnused(layout.name);
    held->store().dropField(layout.name, field.Name());
    read();
    indexes.items_ = itemsOf<velnor::Index>(layout.indexes);
}

void TableDef::State::appendIndex(velnor::Index& index)
{
    const auto held = owner();
    held->requireWriteable();
    const IndexDef def = index.def();
    model::checkIndex(def, layout.fields);
    for (const IndexDef& other : layout.indexes)
        if (def.primary && other.primary)
            throw EngineError(EngineErrorNumber::ItemExists,
                              "Table " + layout.name + " has a primary key already.");
    held->openStore().requireUnused(layout.name);
    const Store::Stoppable stoppable(held->store(), held->runOptions().cancelled);
    held->store().addIndex(layout.name, def);
    read();
    index = itemNamed(layout.indexes, index);
}

void TableDef::State::deleteIndex(const velnor::Index& index)
{
    const auto held = owner();
    held->requireWriteable();
    held->openStore().requireUnused(layout.name);
    held->store().dropIndex(layout.name, index.Name());
    read();
}

}  // namespace velnor
