#include "access/formats/jet/system_tables.h"

#include <algorithm>
#include <string_view>

#include "access/formats/jet/column_width.h"

namespace velnor::jet {
namespace {

using namespace column_type;

struct SystemColumn {
    const char* name;
    std::uint8_t type;
    bool owner = false;  // the field that says whose an object is
    bool jet4Only = false;
};

struct SystemIndex {
    const char* name;
    std::uint8_t flags;
    bool primary;
    std::vector<const char*> columns;
};

struct SystemTable {
    std::vector<SystemColumn> columns;  // in the order of ids
    std::vector<SystemIndex> indexes;   // in the order of the real indexes
};

const SystemTable& objects()
{
    static const SystemTable table{
        {{"Id", kLong},
         {"ParentId", kLong},
         {"Name", kText},
         {"Type", kInteger},
         {"DateCreate", kDate},
         {"DateUpdate", kDate},
         {"Owner", kBinary, true},
         {"Flags", kLong},
         {"Database", kMemo},
         {"Connect", kMemo},
         {"ForeignName", kText},
         {"RmtInfoShort", kBinary},
         {"RmtInfoLong", kOle},
         {"Lv", kOle},
         {"LvProp", kOle},
         {"LvModule", kOle},
         {"LvExtra", kOle}},
        {{"ParentIdName", index_flag::kUnique, false, {"ParentId", "Name"}},
         {"Id", index_flag::kUnique, true, {"Id"}}}};
    return table;
}

const SystemTable& rights()
{
    static const SystemTable table{
        {{"ObjectId", kLong}, {"SID", kBinary, true}, {"ACM", kLong}, {"FInheritable", kBoolean}},
        {{"ObjectId", index_flag::kRequired, false, {"ObjectId"}}}};
    return table;
}

const SystemTable& queries()
{
    static const SystemTable table{
        {{"ObjectId", kLong},
         {"Attribute", kByte},
         {"Order", kBinary},
         {"Name1", kText},
         {"Name2", kText},
         {"Expression", kMemo},
         {"Flag", kInteger},
         {"LvExtra", kLong, false, true}},
        {{"ObjectIdAttribute", index_flag::kUnique, true, {"ObjectId", "Attribute", "Order"}}}};
    return table;
}

const SystemTable& relationships()
{
    static const SystemTable table{
        {{"szRelationship", kText},
         {"grbit", kLong},
         {"ccolumn", kLong},
         {"icolumn", kLong},
         {"szObject", kText},
         {"szColumn", kText},
         {"szReferencedObject", kText},
         {"szReferencedColumn", kText}},
        {{"szRelationship", index_flag::kIgnoreNulls, false, {"szRelationship"}},
         {"szObject", index_flag::kIgnoreNulls, false, {"szObject"}},
         {"szReferencedObject", index_flag::kIgnoreNulls, false, {"szReferencedObject"}}}};
    return table;
}

std::uint16_t lengthOf(const JetFormat& format, std::uint8_t type)
{
    switch (type) {
    case kText:
        return format.wideText ? 510 : 255;
    case kBinary:
        return static_cast<std::uint16_t>(format.maxBinary);
    default:
        return static_cast<std::uint16_t>(describedWidth(type));
    }
}

/// Slots are given in the order of ids, to long values as well; all ordinals are 0.
void addColumns(const ColumnDefaults& defaults, const SystemTable& table, TableDef& def)
{
    std::uint16_t offset = 0, slot = 0;
    for (const SystemColumn& column : table.columns) {
        if (column.jet4Only && defaults.format.version == 3)
            continue;
        Column c;
        c.name = column.name;
        c.type = column.type;
        c.id = static_cast<std::uint16_t>(def.columns.size());
        c.length = lengthOf(defaults.format, column.type);
        c.flags = column_flag::kAlwaysSet | column_flag::kSystem;
        if (column.owner)
            c.flags |= column_flag::kOwner;
        c.order = defaults.order;
        c.codePage = defaults.codePage;
        c.columnWord = defaults.columnWord;
        const bool variable = column.type == kText || column.type == kBinary ||
                              column.type == kMemo || column.type == kOle;
        c.variableSlot = slot;
        if (variable) {
            ++slot;
        } else {
            c.flags |= column_flag::kFixed;
            c.fixedOffset = column.type == kBoolean ? 0 : offset;
            offset = static_cast<std::uint16_t>(offset + (column.type == kBoolean ? 0 : c.length));
        }
        if (c.longValue())
            def.longValues.push_back({c.id, {}, {}});
        def.columns.push_back(std::move(c));
    }
    def.maxColumns = static_cast<std::uint16_t>(def.columns.size());
    def.variableColumns = slot;
}

void addIndexes(const ColumnDefaults& defaults, const SystemTable& table, TableDef& def)
{
    for (const SystemIndex& index : table.indexes) {
        RealIndex real;
        real.flags = index.flags | defaults.format.realIndex.alwaysFlags;
        for (const std::string_view name : index.columns)
            for (const Column& c : def.columns)
                if (c.name == name)
                    real.columns.push_back({c.id, false});
        LogicalIndex logical;
        logical.name = index.name;
        logical.number = logical.realIndex = static_cast<std::uint32_t>(def.realIndexes.size());
        logical.kind = index.primary ? LogicalKind::Primary : LogicalKind::Ordinary;
        def.realIndexes.push_back(std::move(real));
        def.logicalIndexes.push_back(std::move(logical));
    }
    std::sort(def.logicalIndexes.begin(), def.logicalIndexes.end(),
              [](const LogicalIndex& a, const LogicalIndex& b) { return a.name < b.name; });
}

}  // namespace

std::vector<TableDef> systemTableDefs(const ColumnDefaults& defaults)
{
    std::vector<TableDef> defs;
    for (const SystemTable* table : {&objects(), &rights(), &queries(), &relationships()}) {
        TableDef def;
        def.kind = 'S';
        addColumns(defaults, *table, def);
        addIndexes(defaults, *table, def);
        defs.push_back(std::move(def));
    }
    return defs;
}

}  // namespace velnor::jet
