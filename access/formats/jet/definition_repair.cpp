#include "access/formats/jet/definition_repair.h"

#include <algorithm>
#include <set>

#include "platform/paths.h"

namespace velnor::jet {
namespace {

bool possible(const TableDef& def, const RealIndex& index)
{
    return !index.columns.empty() && std::all_of(index.columns.begin(), index.columns.end(),
                                                 [&def](const IndexColumn& column) {
                                                     const Column* c = def.columnById(column.id);
                                                     return c && c->type != column_type::kOle;
                                                 });
}

bool knownType(std::uint8_t type)
{
    return type >= column_type::kBoolean && type <= 20;
}

/// Of the columns picked by `takesPart`: those whose number is out of bounds or another's. Where
/// only one is, and only one number is free, it gets that; all others are marked to go.
template <class TakesPart> void mendNumbers(TableDef& def, std::uint16_t Column::*number, int bound,
                                            std::vector<bool>& goes, TakesPart takesPart)
{
    std::vector<bool> taken(static_cast<std::size_t>(bound), false);
    std::vector<std::size_t> wrong;
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        if (goes[i] || !takesPart(def.columns[i]))
            continue;
        const std::uint16_t own = def.columns[i].*number;
        if (own >= bound || taken[own])
            wrong.push_back(i);
        else
            taken[own] = true;
    }
    const auto free = std::find(taken.begin(), taken.end(), false);
    if (wrong.size() == 1 && std::count(taken.begin(), taken.end(), false) == 1)
        def.columns[wrong.front()].*number = static_cast<std::uint16_t>(free - taken.begin());
    else
        for (const std::size_t i : wrong)
            goes[i] = true;
}

bool readableName(const std::string& name)
{
    return !name.empty() && std::none_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20;
    });
}

void nameColumns(TableDef& def)
{
    std::set<std::string> names;
    int number = 0;
    for (Column& column : def.columns) {
        std::string name = readableName(column.name) ? column.name : "Field";
        while (!names.insert(paths::foldName(name)).second)
            name = "Field " + std::to_string(++number);
        column.name = name;
    }
}

bool used(const TableDef& def, std::uint32_t real)
{
    return std::any_of(def.logicalIndexes.begin(), def.logicalIndexes.end(),
                       [real](const LogicalIndex& index) { return index.realIndex == real; });
}

}  // namespace

void dropRealIndex(TableDef& def, std::uint32_t real)
{
    std::erase_if(def.logicalIndexes,
                  [real](const LogicalIndex& index) { return index.realIndex == real; });
    def.realIndexes.erase(def.realIndexes.begin() + real);
    for (LogicalIndex& index : def.logicalIndexes)
        if (index.realIndex > real && index.realIndex <= def.realIndexes.size())
            --index.realIndex;
}

std::vector<std::string> mendColumns(TableDef& def)
{
    std::vector<bool> goes(def.columns.size(), false);
    for (std::size_t i = 0; i < def.columns.size(); ++i)
        goes[i] = !knownType(def.columns[i].type);
    def.maxColumns = std::clamp<std::uint16_t>(
        def.maxColumns, static_cast<std::uint16_t>(std::min<std::size_t>(def.columns.size(), 255)),
        kMaxColumns);
    const auto variable = std::count_if(def.columns.begin(), def.columns.end(),
                                        [](const Column& c) { return !c.fixed(); });
    def.variableColumns = std::clamp<std::uint16_t>(
        def.variableColumns, static_cast<std::uint16_t>(std::min<std::ptrdiff_t>(variable, 255)),
        kMaxColumns);
    mendNumbers(def, &Column::id, def.maxColumns, goes, [](const Column&) { return true; });
    mendNumbers(def, &Column::variableSlot, def.variableColumns, goes,
                [](const Column& c) { return !c.fixed(); });
    std::vector<std::string> gone;
    std::vector<Column> kept;
    for (std::size_t i = 0; i < def.columns.size(); ++i)
        if (goes[i])
            gone.push_back(def.columns[i].name);
        else
            kept.push_back(std::move(def.columns[i]));
    def.columns = std::move(kept);
    nameColumns(def);
    if (def.kind != 'N' && def.kind != 'S')
        def.kind = 'N';
    return gone;
}

std::vector<std::string> dropImpossibleIndexes(TableDef& def)
{
    std::vector<std::string> gone;
    std::set<std::string> names;
    std::set<std::uint32_t> numbers;
    std::erase_if(def.logicalIndexes, [&](const LogicalIndex& index) {
        const bool hasTree = index.realIndex < def.realIndexes.size()
                                 ? possible(def, def.realIndexes[index.realIndex])
                                 : index.relation == RelationKind::ChildWithoutIndex;
        const bool keep = hasTree && !index.name.empty() &&
                          names.insert(paths::foldName(index.name)).second &&
                          numbers.insert(index.number).second;
        if (!keep)
            gone.push_back(index.name);
        return !keep;
    });
    for (auto real = static_cast<std::uint32_t>(def.realIndexes.size()); real-- > 0;)
        if (!possible(def, def.realIndexes[real]) || !used(def, real))
            dropRealIndex(def, real);
    for (LogicalIndex& index : def.logicalIndexes)
        if (index.kind == LogicalKind::Primary && index.realIndex < def.realIndexes.size() &&
            !def.realIndexes[index.realIndex].unique())
            index.kind = LogicalKind::Ordinary;
    return gone;
}

std::vector<std::size_t> brokenRelations(const TableDef& def, const DefinitionByPage& others)
{
    std::vector<std::size_t> broken;
    for (std::size_t i = 0; i < def.logicalIndexes.size(); ++i) {
        const LogicalIndex& index = def.logicalIndexes[i];
        if (index.relation == RelationKind::None)
            continue;
        const TableDef* other = others(index.otherTable);
        const bool known =
            other &&
            std::any_of(other->logicalIndexes.begin(), other->logicalIndexes.end(),
                        [&](const LogicalIndex& end) {
                            return static_cast<std::int32_t>(end.number) == index.otherIndex &&
                                   end.otherTable == def.page() &&
                                   end.otherIndex == static_cast<std::int32_t>(index.number);
                        });
        if (!known)
            broken.push_back(i);
    }
    return broken;
}

void dropRelations(TableDef& def, const std::vector<std::size_t>& ends)
{
    for (auto end = ends.rbegin(); end != ends.rend(); ++end) {
        LogicalIndex& index = def.logicalIndexes[*end];
        const auto sharers =
            std::count_if(def.logicalIndexes.begin(), def.logicalIndexes.end(),
                          [&](const LogicalIndex& o) { return o.realIndex == index.realIndex; });
        if (sharers > 1 || index.realIndex >= def.realIndexes.size()) {
            def.logicalIndexes.erase(def.logicalIndexes.begin() +
                                     static_cast<std::ptrdiff_t>(*end));
            continue;
        }
        index.relation = RelationKind::None;
        index.kind = LogicalKind::Ordinary;
        index.otherIndex = -1;
        index.otherTable = 0;
        index.updateRule = index.deleteRule = 4;
    }
}

}  // namespace velnor::jet
