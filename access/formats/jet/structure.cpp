#include "access/formats/jet/structure.h"

#include <algorithm>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/new_table.h"
#include "access/formats/jet/system_row.h"
#include "access/value_text.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr std::int64_t kFullRights = 0xFFEFF;
constexpr std::int64_t kUsersDatabaseRights = 0xE;  // tells the users' row of the database object

}  // namespace

double catalogTime()
{
    const Clock& clock = host().clock ? *host().clock : systemClock();
    const LocalTime now = clock.now();
    CivilTime civil;
    civil.year = now.year;
    civil.month = now.month;
    civil.day = now.day;
    civil.hour = now.hour;
    civil.minute = now.minute;
    civil.second = now.second;
    return dateFromCivil(civil);
}

RowPointer MapRecords::add()
{
    const JetFormat& f = file_.format();
    const std::size_t bytes = UsageMap::newBytes(f);
    if (page_ != 0) {
        PageRef page = file_.page(page_);
        DataPageEditor editor(f, page.edit());
        if (editor.owner() == 0 && editor.fits(bytes)) {
            const auto slot = static_cast<std::uint8_t>(editor.rowCount());
            UsageMap::lay(f, editor.append(bytes));
            return {page_, slot};
        }
    }
    page_ = file_.allocate();
    PageRef page = file_.page(page_);
    DataPageEditor editor = DataPageEditor::lay(f, page.edit(), 0);
    UsageMap::lay(f, editor.append(bytes));
    return {page_, 0};
}

void releaseMap(JetFile& file, RowPointer record)
{
    UsageMap map(file, record);
    for (const PageNumber number : map.mapPages())
        file.release(number, page_type::kFreed);
    bool empty = false;
    {
        PageRef page = file.page(record.page);
        DataPageEditor editor(file.format(), page.edit());
        editor.erase(record.slot);
        empty = editor.empty() && editor.owner() == 0;
    }
    if (empty)
        file.release(record.page, page_type::kFreed);
}

void layIndex(JetFile& file, MapRecords& maps, PageNumber owner, RealIndex& index)
{
    index.map = maps.add();
    index.root = file.allocate();
    UsageMap map(file, index.map);
    map.add(index.root);
    IndexTree(file, &map, index.root, owner).clearRoot();
}

void Structure::createTable(const TableLayout& layout)
{
    if (!allowedName(layout.name))
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "\"" + layout.name +
                              "\" is not a valid table name: it must not begin with a blank or "
                              "have . ! [ ] ` in it.");
    for (const CatalogEntry& object : catalog_.objects())
        if ((object.table() || object.link() || object.type == object_type::kQuery) &&
            paths::sameName(object.name, layout.name))
            throw EngineError(EngineErrorNumber::TableAlreadyExists,
                              "Table \"" + layout.name + "\" already exists.");
    const Accounts who = accounts();
    const PageNumber page = writeDefinition(layout);
    addObject(layout, page, who);
    addRights(page, who);
    catalog_.forget();
}

PageNumber Structure::writeDefinition(const TableLayout& layout)
{
    const JetHeader& header = file_.header();
    const ColumnDefaults defaults{file_.format(), header.order, header.codePage, header.columnWord};
    TableDef def = newTableDef(defaults, layout);
    def.chain.push_back(file_.allocate());
    MapRecords maps(file_);
    def.ownedMap = maps.add();
    def.spaceMap = maps.add();
    for (const Column& c : def.columns)
        if (c.longValue()) {
            const RowPointer owned = maps.add();
            def.longValues.push_back({c.id, owned, maps.add()});
        }
    for (const IndexDef& index : layout.indexes) {
        RealIndex real = newRealIndex(def, index, file_.format());
        layIndex(file_, maps, def.page(), real);
        def.realIndexes.push_back(std::move(real));
        addLogicalIndex(file_, def, index);
    }
    writeTableChain(file_, buildTableDef(def, file_.names()), def.chain);
    return def.page();
}

void Structure::addObject(const TableLayout& layout, PageNumber page, const Accounts& accounts)
{
    const auto objects = catalog_.objectTable();
    const PropertyText text{!file_.format().wideText, &file_.codePage()};
    const std::string properties = newProperties(layout, text).build();
    const ValueView now = ValueView::date(catalogTime());
    SystemRow row(*objects);
    row.set("Id", ValueView::integer(page));
    row.set("ParentId", ValueView::integer(kTablesContainer));
    row.set("Name", ValueView::text(layout.name));
    row.set("Type", ValueView::integer(object_type::kTable));
    row.set("DateCreate", now);
    row.set("DateUpdate", now);
    row.setBytes("Owner", accounts.owner);
    row.set("Flags", ValueView::integer(0));
    if (!properties.empty())
        row.setBytes("LvProp", properties);
    JetWriter(objects, tables_, false).insert(row.values());
}

void Structure::addRights(PageNumber page, const Accounts& accounts)
{
    const auto rights = catalog_.systemTable("MSysACEs");
    JetWriter writer(rights, tables_, false);
    for (const std::string* sid : {&accounts.admin, &accounts.users}) {
        SystemRow row(*rights);
        row.set("ObjectId", ValueView::integer(page));
        row.setBytes("SID", *sid);
        row.set("ACM", ValueView::integer(kFullRights));
        row.set("FInheritable", ValueView::boolean(false));
        writer.insert(row.values());
    }
}

std::string Structure::bytesOf(JetTable& table, RowId row, const char* field)
{
    const auto held = table.row(pointerOf(row));
    RowReader reader(table.plan());
    const int at = fieldNamed(table, field);
    if (!held || at < 0 || !reader.open(held->bytes))
        return {};
    const auto raw = reader.raw(at);
    return raw ? std::string(reinterpret_cast<const char*>(raw->data()), raw->size())
               : std::string();
}

std::vector<RowId> Structure::rightsOf(std::int32_t object)
{
    const auto rights = catalog_.systemTable("MSysACEs");
    const int id = fieldNamed(*rights, "ObjectId");
    std::vector<RowId> rows;
    PhysicalCursor cursor(rights);
    for (bool on = cursor.first(); on && id >= 0; on = cursor.next()) {
        const ValueView value = cursor.field(id);
        if (value.kind() == ValueKind::Integer && value.asInteger() == object)
            rows.push_back(cursor.row());
    }
    return rows;
}

/// As another table of the user has them; in a new file as the database object has them.
Structure::Accounts Structure::accounts()
{
    const auto objects = catalog_.objectTable();
    const auto rights = catalog_.systemTable("MSysACEs");
    Accounts found;
    for (const CatalogEntry& entry : catalog_.objects()) {
        if (!entry.table() || entry.flags != 0)
            continue;
        const auto rows = rightsOf(entry.id);
        if (rows.size() < 2)
            continue;
        found.owner = bytesOf(*objects, entry.row, "Owner");
        found.admin = bytesOf(*rights, rows[0], "SID");
        found.users = bytesOf(*rights, rows[1], "SID");
        if (!found.owner.empty() && !found.admin.empty() && !found.users.empty())
            return found;
    }
    for (const CatalogEntry& entry : catalog_.objects())
        if (entry.type == object_type::kDatabase && entry.id == kDatabaseObject)
            found.owner = found.admin = bytesOf(*objects, entry.row, "Owner");
    RowReader reader(rights->plan());
    const int acm = fieldNamed(*rights, "ACM");
    std::string scratch;
    for (const RowId row : rightsOf(kDatabaseObject)) {
        const auto held = rights->row(pointerOf(row));
        if (!held || !reader.open(held->bytes))
            continue;
        const ValueView mask = reader.value(acm, scratch);
        if (mask.kind() == ValueKind::Integer && mask.asInteger() == kUsersDatabaseRights)
            found.users = bytesOf(*rights, row, "SID");
    }
    return found;
}

void Structure::dropTable(const CatalogEntry& entry, JetTable& table)
{
    if (entry.attributes() & kSystemTableBits)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "\"" + entry.name + "\" is a system table and cannot be deleted.");
    const TableDef& def = table.def();
    for (const LogicalIndex& index : def.logicalIndexes)
        if (index.relation != RelationKind::None)
            throw EngineError(EngineErrorNumber::NotSupported,
                              "Table \"" + entry.name + "\" takes part in the relationship \"" +
                                  index.name + "\"; delete that first.");
    if (!table.whyReadOnly().empty())
        throw EngineError(EngineErrorNumber::NotSupported, table.whyReadOnly());

    for (const PageNumber number : std::vector<PageNumber>(table.pages()))
        if (table.dataPage(number))
            file_.release(number, page_type::kFreed);
    for (const LongValueMaps& maps : def.longValues) {
        LongValueColumn(file_, maps).releaseAll();
        releaseMap(file_, maps.owned);
        releaseMap(file_, maps.space);
    }
    for (int i = 0; i < table.indexCount(); ++i) {
        table.index(i).tree->release();
        releaseMap(file_, def.realIndexes[i].map);
    }
    releaseMap(file_, def.ownedMap);
    releaseMap(file_, def.spaceMap);
    for (const PageNumber number : def.chain)
        file_.release(number, page_type::kFreedTableDef);

    const auto rights = catalog_.systemTable("MSysACEs");
    JetWriter rightsWriter(rights, tables_, false);
    for (const RowId row : rightsOf(entry.id))
        rightsWriter.remove(row);
    JetWriter(catalog_.objectTable(), tables_, false).remove(entry.row);
    catalog_.forget();
}

}  // namespace velnor::jet
