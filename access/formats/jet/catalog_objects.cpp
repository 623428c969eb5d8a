#include "access/formats/jet/catalog_objects.h"

#include <algorithm>
#include <array>
#include <set>

#include "access/formats/jet/jet_writer.h"
#include "access/formats/jet/structure.h"
#include "access/formats/jet/system_row.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

enum class Account { Engine, Admin, Users, Creator };
// An account is two bytes; Jet 4 keeps them under a mask that depends on the file's creation date
// in a way that is not known. The mask below belongs to the date of the files that we create.
constexpr std::array<std::array<std::uint8_t, 2>, 4> kAccounts{
    {{0x02, 0x03}, {0x03, 0x01}, {0x02, 0x01}, {0x02, 0x04}}};
constexpr std::array<std::uint8_t, 2> kJet4Mask{0x67, 0x8A};

struct StandardObject {
    const char* name;
    std::int32_t id, parent;
    int type;
    Account owner = Account::Engine;
};
constexpr std::uint32_t kSystemObject = 0x80000000;
constexpr StandardObject kObjects[] = {
    {"Tables", kTablesContainer, kRootContainer, object_type::kContainer},
    {"Databases", kDatabasesContainer, kRootContainer, object_type::kContainer},
    {"Relationships", kRelationshipsContainer, kRootContainer, object_type::kContainer},
    {"MSysDb", kDatabaseObject, kDatabasesContainer, object_type::kDatabase, Account::Admin},
    {"MSysObjects", 2, kTablesContainer, object_type::kTable},
    {"MSysACEs", 3, kTablesContainer, object_type::kTable},
    {"MSysQueries", 4, kTablesContainer, object_type::kTable},
    {"MSysRelationships", 5, kTablesContainer, object_type::kTable},
};

struct Right {
    Account account;
    std::int32_t mask;
    bool inherit = false;
};
struct StandardRight {
    std::int32_t object;
    Right right;
};
constexpr std::int32_t kAllTypes = 0xFFFFF, kAllJet4 = 0xFFEFF;
constexpr StandardRight kRights[] = {
    {2, {Account::Admin, 0x60000}},
    {3, {Account::Admin, 0x60000}},
    {4, {Account::Admin, 0x60000}},
    {5, {Account::Admin, 0xE0000}},
    {kTablesContainer, {Account::Creator, 0xF00FE, true}},
    {kTablesContainer, {Account::Admin, 0x60001}},
    {kRelationshipsContainer, {Account::Creator, 0xF00FE, true}},
    {kRelationshipsContainer, {Account::Admin, 0x60001}},
    {kDatabasesContainer, {Account::Admin, 0x60000}},
    {kDatabaseObject, {Account::Admin, 0x6000E}},
    {kDatabaseObject, {Account::Users, 0xE}},
    {4, {Account::Users, 0x14}},
    {5, {Account::Users, 0x14}},
    {2, {Account::Users, 0x14}},
    {kTablesContainer, {Account::Users, kAllJet4, true}},
    {kRelationshipsContainer, {Account::Users, kAllTypes, true}},
};

/// Objects of Access have negative types. Its layouts have no rights in any file known; forms,
/// reports, macros and modules have.
bool hasRights(int type)
{
    constexpr int kLayout = -32757;
    return type != kLayout;
}

/// What other objects get.
std::vector<Right> rightsTo(const CatalogEntry& entry)
{
    switch (entry.type) {
    case object_type::kContainer:
        return {{Account::Creator, 0xF00FE, true},
                {Account::Admin, 0x60001},
                {Account::Users, kAllJet4, true}};
    case object_type::kQuery:
        return {{Account::Admin, 0xF00FE}, {Account::Users, kAllJet4}};
    case object_type::kRelationship:
        return {{Account::Admin, 0xF00FE}, {Account::Users, kAllTypes}};
    default:
        return {{Account::Admin, kAllJet4}, {Account::Users, kAllJet4}};
    }
}

/// The accounts as this file keeps them: the owner of one object tells the mask.
class Accounts {
public:
    explicit Accounts(Catalog& catalog)
    {
        const auto objects = catalog.objectTable();
        if (objects->file().format().version == 4)
            mask_ = kJet4Mask;
        const int field = fieldNamed(*objects, "Owner");
        PhysicalCursor cursor(objects);
        for (const CatalogEntry& entry : catalog.objects())
            for (const StandardObject& object : kObjects)
                if (field >= 0 && entry.id == object.id && entry.type == object.type &&
                    cursor.moveTo(entry.row) && takeMask(cursor.field(field), object.owner))
                    return;
    }
    std::string stored(Account account) const
    {
        std::string bytes;
        for (std::size_t i = 0; i < 2; ++i)
            bytes += static_cast<char>(plain(account)[i] ^ mask_[i]);
        return bytes;
    }

private:
    static const std::array<std::uint8_t, 2>& plain(Account account)
    {
        return kAccounts[static_cast<std::size_t>(account)];
    }
    bool takeMask(ValueView owner, Account account)
    {
        if (owner.kind() != ValueKind::Bytes || owner.asBytes().size() != 2)
            return false;
        for (std::size_t i = 0; i < 2; ++i)
            mask_[i] = owner.asBytes()[i] ^ plain(account)[i];
        return true;
    }
    std::array<std::uint8_t, 2> mask_{};
};

std::shared_ptr<JetTable> noTable(PageNumber)
{
    return nullptr;
}

std::set<std::int64_t> objectsWithRights(const std::shared_ptr<JetTable>& rights)
{
    std::set<std::int64_t> found;
    const int object = fieldNamed(*rights, "ObjectId");
    PhysicalCursor cursor(rights);
    for (bool on = cursor.first(); on && object >= 0; on = cursor.next())
        if (const ValueView id = cursor.field(object); id.kind() == ValueKind::Integer)
            found.insert(id.asInteger());
    return found;
}

}  // namespace

void addObject(Catalog& catalog, const NewObject& object)
{
    const auto table = catalog.objectTable();
    const std::string owner =
        Accounts(catalog).stored(object.engines ? Account::Engine : Account::Admin);
    const ValueView now = ValueView::date(catalogTime());
    SystemRow row(*table);
    row.set("Id", ValueView::integer(object.id));
    row.set("ParentId", ValueView::integer(object.parent));
    row.set("Name", ValueView::text(object.name));
    row.set("Type", ValueView::integer(object.type));
    row.set("DateCreate", now);
    row.set("DateUpdate", now);
    row.setBytes("Owner", owner);
    row.set("Flags", ValueView::integer(static_cast<std::int32_t>(object.flags)));
    JetWriter(table, noTable, false).insert(row.values());
    catalog.forget();
}

namespace {

/// Takes out the rights to those objects that `goes` picks by their number.
template <class Goes> void removeRights(Catalog& catalog, Goes goes)
{
    const auto rights = catalog.systemTable("MSysACEs");
    const int object = fieldNamed(*rights, "ObjectId");
    std::vector<RowId> rows;
    PhysicalCursor cursor(rights);
    for (bool on = cursor.first(); on && object >= 0; on = cursor.next())
        if (const ValueView of = cursor.field(object);
            of.kind() == ValueKind::Integer && goes(of.asInteger()))
            rows.push_back(cursor.row());
    JetWriter writer(rights, noTable, false);
    for (const RowId row : rows)
        writer.remove(row);
}

}  // namespace

void removeStrayRights(Catalog& catalog)
{
    std::set<std::int64_t> ids{kRootContainer};
    for (const CatalogEntry& entry : catalog.objects())
        ids.insert(entry.id);
    removeRights(catalog, [&ids](std::int64_t id) { return !ids.contains(id); });
}

void removeObject(Catalog& catalog, std::int32_t id)
{
    removeRights(catalog, [id](std::int64_t object) { return object == id; });
    std::vector<RowId> rows;
    for (const CatalogEntry& entry : catalog.objects())
        if (entry.id == id)
            rows.push_back(entry.row);
    JetWriter objects(catalog.objectTable(), noTable, false);
    for (const RowId row : rows)
        objects.remove(row);
    catalog.forget();
}

int addMissingObjects(Catalog& catalog)
{
    int added = 0;
    for (const StandardObject& object : kObjects) {
        const auto& objects = catalog.objects();
        const auto named = [&](const CatalogEntry& entry) {
            return entry.parent == object.parent && paths::sameName(entry.name, object.name);
        };
        if (std::any_of(objects.begin(), objects.end(), named))
            continue;
        // Two programs number the last two system tables differently: the other may have this
        // one's.
        std::int32_t id = object.id;
        for (const CatalogEntry& entry : objects)
            if (entry.id == object.id && id >= 4 && id <= 5)
                id = 4 + 5 - object.id;
        addObject(catalog, {object.name, id, object.parent, object.type, kSystemObject,
                            object.owner == Account::Engine});
        ++added;
    }
    return added;
}

bool contradictsStandard(std::int32_t id, std::int32_t parent, int type, std::string_view name)
{
    const auto matches = [&](const StandardObject& object) {
        // The last two system tables may change places.
        const bool sameId =
            object.id == id || (object.id >= 4 && object.id <= 5 && id >= 4 && id <= 5);
        return sameId && object.parent == parent && object.type == type &&
               paths::sameName(object.name, name);
    };
    const auto touches = [&](const StandardObject& object) {
        return object.id == id || (object.parent == parent && paths::sameName(object.name, name));
    };
    return std::any_of(std::begin(kObjects), std::end(kObjects), touches) &&
           std::none_of(std::begin(kObjects), std::end(kObjects), matches);
}

namespace {

/// The container for a kind of object; 0 where it is one of Access's own, which are not known here.
std::int32_t containerFor(int type)
{
    switch (type) {
    case object_type::kTable:
    case object_type::kQuery:
    case object_type::kLink:
    case object_type::kOdbcLink:
        return kTablesContainer;
    case object_type::kRelationship:
        return kRelationshipsContainer;
    case object_type::kContainer:
        return kRootContainer;
    default:
        return 0;
    }
}

}  // namespace

int containLostObjects(Catalog& catalog)
{
    std::set<std::int32_t> ids{kRootContainer};
    for (const CatalogEntry& entry : catalog.objects())
        ids.insert(entry.id);
    std::vector<CatalogEntry> lost;
    for (const CatalogEntry& entry : catalog.objects())
        if (!ids.contains(entry.parent))
            lost.push_back(entry);
    const int parent = fieldNamed(*catalog.objectTable(), "ParentId");
    int gone = 0;
    for (const CatalogEntry& entry : lost) {
        const FieldChange change{parent, ValueView::integer(containerFor(entry.type))};
        try {
            if (containerFor(entry.type) != 0) {
                JetWriter(catalog.objectTable(), noTable, false)
                    .update(entry.row, std::span(&change, 1));
                continue;
            }
        } catch (const EngineError& error) {
            if (error.code() != EngineErrorNumber::DuplicateKey)
                throw;  // the name is taken where it would go
        }
        removeObject(catalog, entry.id);
        ++gone;
    }
    catalog.forget();
    return gone;
}

int addMissingRights(Catalog& catalog)
{
    const auto table = catalog.systemTable("MSysACEs");
    const auto before = objectsWithRights(table);
    const bool jet3 = table->file().format().version == 3;
    const Accounts accounts(catalog);
    JetWriter writer(table, noTable, false);
    const auto give = [&](std::int32_t object, const Right& right) {
        const std::string sid = accounts.stored(right.account);
        const bool widened = jet3 && object == kTablesContainer && right.mask == kAllJet4;
        SystemRow row(*table);
        row.set("ObjectId", ValueView::integer(object));
        row.setBytes("SID", sid);
        row.set("ACM", ValueView::integer(widened ? kAllTypes : right.mask));
        row.set("FInheritable", ValueView::boolean(right.inherit));
        writer.insert(row.values());
    };
    std::set<std::int64_t> there;
    for (const CatalogEntry& entry : catalog.objects())
        there.insert(entry.id);
    std::set<std::int64_t> given;
    for (const StandardRight& standard : kRights)
        if (there.contains(standard.object) && !before.contains(standard.object)) {
            give(standard.object, standard.right);
            given.insert(standard.object);
        }
    for (const CatalogEntry& entry : catalog.objects()) {
        if (before.contains(entry.id) || given.contains(entry.id) || !hasRights(entry.type))
            continue;
        for (const Right& right : rightsTo(entry))
            give(entry.id, right);
        given.insert(entry.id);
    }
    return static_cast<int>(given.size());
}

}  // namespace velnor::jet
