#include "access/formats/jet/catalog.h"

#include <algorithm>

#include "access/layout.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr std::uint32_t kHiddenFlag = 0x8;

std::int64_t integerOr(ValueView v, std::int64_t otherwise)
{
    return v.kind() == ValueKind::Integer ? v.asInteger() : otherwise;
}

double dateOr(ValueView v, double otherwise)
{
    return v.kind() == ValueKind::Date ? v.asDate() : otherwise;
}

std::string textOr(ValueView v)
{
    return v.kind() == ValueKind::Text ? std::string(v.asText()) : std::string();
}

std::shared_ptr<JetTable> openObjects(JetFile& file)
{
    try {
        return std::make_shared<JetTable>(file, kCatalogPage, "MSysObjects");
    } catch (const EngineError& error) {
        throw EngineError(EngineErrorNumber::Unrecognised,
                          "The catalog of \"" + file.path() + "\" is damaged: " + error.what());
    }
}

}  // namespace

std::uint32_t CatalogEntry::attributes() const
{
    std::uint32_t bits = flags & kSystemTableBits;
    if (flags & kHiddenFlag)
        bits |= kHiddenTableBit;
    if (type == object_type::kLink)
        bits |= kLinkedTableBit;
    if (type == object_type::kOdbcLink)
        bits |= kLinkedOdbcTableBit;
    return bits;
}

int fieldNamed(const JetTable& table, std::string_view name)
{
    const auto& fields = table.plan().fields;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (paths::sameName(table.def().columns[fields[i].column].name, name))
            return static_cast<int>(i);
    return -1;
}

Catalog::Catalog(JetFile& file) : file_(file), objects_(openObjects(file))
{
    for (const char* name : {"Id", "Name", "Type"})
        if (field(name) < 0)
            throw EngineError(EngineErrorNumber::Unrecognised,
                              "The catalog of \"" + file.path() + "\" is damaged.");
}

int Catalog::field(std::string_view name) const
{
    return fieldNamed(*objects_, name);
}

void Catalog::read()
{
    rows_.clear();
    byName_.clear();
    const int id = field("Id"), parent = field("ParentId"), name = field("Name");
    const int type = field("Type"), flags = field("Flags"), foreign = field("ForeignName");
    const int database = field("Database");
    const int created = field("DateCreate"), updated = field("DateUpdate");
    PhysicalCursor cursor(objects_);
    const auto value = [&](int n) { return n < 0 ? ValueView::null() : cursor.field(n); };
    for (bool on = cursor.first(); on; on = cursor.next()) {
        CatalogEntry entry;
        entry.id = static_cast<std::int32_t>(integerOr(value(id), 0));
        entry.parent = static_cast<std::int32_t>(integerOr(value(parent), 0));
        entry.type = static_cast<int>(integerOr(value(type), 0));
        entry.flags = static_cast<std::uint32_t>(integerOr(value(flags), 0));
        entry.name = textOr(value(name));
        entry.created = dateOr(value(created), 0);
        entry.updated = dateOr(value(updated), 0);
        if (entry.link()) {
            entry.foreignName = textOr(value(foreign));
            entry.database = textOr(value(database));
        }
        entry.row = cursor.row();
        rows_.push_back(std::move(entry));
    }
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].table() || rows_[i].link())
            byName_.emplace(paths::foldName(rows_[i].name), i);
    known_ = true;
}

const std::vector<CatalogEntry>& Catalog::objects()
{
    if (!known_)
        read();
    return rows_;
}

std::vector<const CatalogEntry*> Catalog::tables()
{
    objects();
    std::vector<const CatalogEntry*> found;
    for (const auto& [name, at] : byName_)
        found.push_back(&rows_[at]);
    return found;
}

const CatalogEntry* Catalog::find(std::string_view name)
{
    objects();
    const auto found = byName_.find(paths::foldName(name));
    return found == byName_.end() ? nullptr : &rows_[found->second];
}

PropertyBlock Catalog::properties(const CatalogEntry& entry)
{
    const PropertyText text{!file_.format().wideText, &file_.codePage()};
    PhysicalCursor cursor(objects_);
    const int block = field("LvProp");
    if (block < 0 || !cursor.moveTo(entry.row))
        return PropertyBlock(text);
    const ValueView bytes = cursor.field(block);
    if (bytes.kind() != ValueKind::Bytes)
        return PropertyBlock(text);
    try {
        return PropertyBlock::parse(bytes.asBytes(), text);
    } catch (const EngineError&) {
        return PropertyBlock(text);  // a table can be read without its properties
    }
}

std::shared_ptr<JetTable> Catalog::systemTable(std::string_view name)
{
    const auto known = systemTables_.find(name);
    if (known != systemTables_.end())
        return known->second;
    const CatalogEntry* entry = find(name);
    if (!entry || !entry->table())
        throw EngineError(EngineErrorNumber::Unrecognised,
                          "The system table " + std::string(name) + " is missing.");
    if (static_cast<PageNumber>(entry->id) == kCatalogPage)
        return objects_;
    auto table = std::make_shared<JetTable>(file_, static_cast<PageNumber>(entry->id), entry->name);
    systemTables_.emplace(name, table);
    return table;
}

void Catalog::saveCounts()
{
    objects_->saveCounts();
    for (auto& [name, table] : systemTables_)
        table->saveCounts();
}

void Catalog::reload()
{
    objects_->reload();
    for (auto& [name, table] : systemTables_)
        table->reload();
    known_ = false;
}

}  // namespace velnor::jet
