#include "access/formats/jet/create_database.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "access/formats/jet/catalog_objects.h"
#include "access/formats/jet/data_page.h"
#include "access/formats/jet/fresh_file.h"
#include "access/formats/jet/index_page.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/jet/page_codec.h"
#include "access/formats/jet/system_tables.h"
#include "access/formats/jet/whole_file.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr PageNumber kMapsPage = 1, kFirstDefinition = 2, kFirstMapRecords = 6;
constexpr SortOrder kGeneral{};
constexpr std::uint16_t kCodePage = 1252;
constexpr std::uint16_t kBuildJet3 = 623, kBuildJet4 = 9756;
// Accounts are stored under a mask that depends on this date; with another date the accounts below
// would be nobody's.
constexpr std::uint8_t kCreationDate[8] = {0x3E, 0x85, 0xD3, 0x3B, 0x3E, 0xAB, 0xE4, 0x40};

/// The pages of a file that does not stand yet.
class Skeleton {
public:
    Skeleton(const JetFormat& format, std::string_view password);
    std::vector<std::uint8_t> run();

private:
    std::uint8_t* page(PageNumber number)
    {
        const std::size_t end = (std::size_t{number} + 1) * format_.pageSize;
        if (bytes_.size() < end)
            bytes_.resize(end);
        return bytes_.data() + end - format_.pageSize;
    }
    PageNumber pages() const { return static_cast<PageNumber>(bytes_.size() / format_.pageSize); }
    void header();
    void tables();
    void roots();
    void mapRecords();
    void globalMaps();
    RowPointer nextMap();
    void setBit(RowPointer map, PageNumber number);

    const JetFormat& format_;
    std::string_view password_;
    std::vector<std::uint8_t> bytes_;
    std::vector<TableDef> defs_;
    std::vector<PageNumber> mapPages_;
    int maps_ = 0;
};

Skeleton::Skeleton(const JetFormat& format, std::string_view password)
    : format_(format), password_(password)
{
    defs_ = systemTableDefs({format, kGeneral, kCodePage, 0});
}

std::vector<std::uint8_t> Skeleton::run()
{
    header();
    tables();
    mapRecords();
    roots();
    globalMaps();
    return std::move(bytes_);
}

void Skeleton::header()
{
    const HeaderLayout& o = format_.header;
    std::uint8_t* p = page(0);
    p[1] = 1;
    std::memcpy(p + 4, "Standard Jet DB", 15);
    p[0x14] = o.versionByte;
    storeLE(p + o.globalMap, RowPointer{kMapsPage, 0}.word());
    storeLE(p + o.releasedMap, RowPointer{kMapsPage, 1}.word());
    for (PageNumber i = 0; i < 4; ++i)
        storeLE(p + o.systemPages + 4 * i, kFirstDefinition + i);
    storeLE(p + o.lcid, kGeneral.lcid);
    storeLE(p + o.codePage, kCodePage);
    storeLE(p + o.build, format_.version == 3 ? kBuildJet3 : kBuildJet4);
    if (o.created >= 0) {
        std::memcpy(p + o.created, kCreationDate, sizeof kCreationDate);
        storeLE(p + 0x98, std::uint32_t{1620});
        std::memcpy(p + 0x9C, "4.0", 4);
    }
    setDatabasePassword(std::span(p, format_.pageSize), password_);
    maskHeader(std::span(p, format_.pageSize));
    layCommitCounters(format_, p);
}

/// Map records in the order of creation: owned and free pages, long values, indexes; table by
/// table. Pages of records are numbered behind the roots when the first is full.
RowPointer Skeleton::nextMap()
{
    const int room = static_cast<int>(format_.pageSize) - format_.data.rowTable;
    const int aPage = room / static_cast<int>(UsageMap::newBytes(format_) + 2);
    const int at = maps_++;
    PageNumber firstFurther = kFirstMapRecords + 1;
    for (const TableDef& def : defs_)
        firstFurther += static_cast<PageNumber>(def.realIndexes.size());
    const auto nth = static_cast<PageNumber>(at / aPage);
    const PageNumber number = nth == 0 ? kFirstMapRecords : firstFurther + nth - 1;
    if (at % aPage == 0) {
        DataPageEditor::lay(format_, page(number), 0);
        mapPages_.push_back(number);
    }
    DataPageEditor editor(format_, page(number));
    UsageMap::lay(format_, editor.append(UsageMap::newBytes(format_)));
    return {number, static_cast<std::uint8_t>(at % aPage)};
}

void Skeleton::mapRecords()
{
    for (TableDef& def : defs_) {
        def.ownedMap = nextMap();
        def.spaceMap = nextMap();
        for (LongValueMaps& maps : def.longValues) {
            maps.owned = nextMap();
            maps.space = nextMap();
        }
        for (RealIndex& index : def.realIndexes)
            index.map = nextMap();
    }
}

void Skeleton::tables()
{
    // Ties of ordinals are settled by name in Jet 4 and by id in Jet 3.
    if (format_.version == 4)
        for (TableDef& def : defs_)
            std::stable_sort(def.columns.begin(), def.columns.end(),
                             [](const Column& a, const Column& b) {
                                 return paths::foldName(a.name) < paths::foldName(b.name);
                             });
}

void Skeleton::roots()
{
    PageNumber root = kFirstMapRecords + 1;
    PageNumber definition = kFirstDefinition;
    for (TableDef& def : defs_) {
        for (RealIndex& index : def.realIndexes) {
            index.root = root++;
            initIndexPage(format_, page(index.root), page_type::kIndexLeaf, 0, definition);
            setBit(index.map, index.root);
        }
        ++definition;
    }
    const NameCoding names{format_, *CodePage::find(kCodePage)};
    definition = kFirstDefinition;
    for (TableDef& def : defs_) {
        // The list of long values stands in the order of the descriptors.
        std::vector<LongValueMaps> listed;
        for (const Column& c : def.columns)
            if (const LongValueMaps* maps = def.mapsOf(c.id))
                listed.push_back(*maps);
        def.longValues = std::move(listed);
        const std::string bytes = buildTableDef(def, names);
        std::memcpy(page(definition++), bytes.data(), bytes.size());
    }
}

void Skeleton::globalMaps()
{
    const PageNumber used = pages();
    layGlobalMaps(format_, page(kMapsPage), used);
}

void Skeleton::setBit(RowPointer map, PageNumber number)
{
    std::uint8_t* p = page(map.page);
    const auto offset = DataPage(format_, p).entry(map.slot) & row_flag::kOffset;
    p[offset + 5 + number / 8] |= static_cast<std::uint8_t>(1u << (number % 8));
}

}  // namespace

void layCommitCounters(const JetFormat& format, std::uint8_t* page0)
{
    // One counter a user slot; slot 0 has committed once.
    for (int slot = 0; slot < 256; ++slot)
        storeLE(page0 + format.header.commitCounters + 2 * slot,
                static_cast<std::uint16_t>(slot == 0 ? 0x0101 : 0x0100));
}

void layGlobalMaps(const JetFormat& format, std::uint8_t* page, PageNumber firstFree)
{
    constexpr std::size_t kHead = 5;  // kind and first page of an inline map
    DataPageEditor editor = DataPageEditor::lay(format, page, kMapsPage);
    std::uint8_t* freePages = editor.append(UsageMap::newBytes(format));
    UsageMap::lay(format, freePages);
    UsageMap::lay(format, editor.append(UsageMap::newBytes(format)));
    const auto reach = static_cast<PageNumber>(8 * format.map.inlineBytes);
    for (PageNumber number = firstFree; number < reach; ++number)
        freePages[kHead + number / 8] |= static_cast<std::uint8_t>(1u << (number % 8));
}

std::vector<std::uint8_t> databaseSkeleton(const JetFormat& format, std::string_view password)
{
    return Skeleton(format, password).run();
}

void fillCatalog(FileSystem& files, const OpenRequest& skeleton)
{
    JetFile file(files, skeleton, false);
    Catalog catalog(file);
    addMissingObjects(catalog);
    addMissingRights(catalog);
    catalog.saveCounts();
    file.commit();
}

void JetDriver::create(FileSystem& files, const CreateRequest& request) const
{
    if (files.exists(request.name))
        throw EngineError(EngineErrorNumber::DatabaseExists,
                          "Database \"" + request.name + "\" already exists.");
    const bool older = (request.options & kOlderVersionOption) != 0;
    const JetFormat& format = older ? kJet3 : kJet4;
    auto bytes = databaseSkeleton(format, request.password);
    if (request.options & kEncodeOption)
        encodePages(format, bytes, newEncodingKey());
    makeWholeFile(files, request.name, bytes, [&](const std::string& sibling) {
        OpenRequest skeleton;
        skeleton.name = sibling;
        skeleton.readOnly = false;
        skeleton.exclusive = true;
        skeleton.password = request.password;
        fillCatalog(files, skeleton);
    });
}

}  // namespace velnor::jet
