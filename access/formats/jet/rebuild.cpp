#include "access/formats/jet/rebuild.h"

#include <algorithm>

namespace velnor::jet {
namespace {

constexpr PageNumber kFirstOwnPage = 6;
constexpr std::size_t kGather = 16u << 20;  // bytes written at once

}  // namespace

Rebuild::Rebuild(JetFile& from, JetFile& to, bool salvage, const ProblemSink& report)
    : from_(from), to_(to), salvage_(salvage), report_(report), catalog_(from), maps_(to)
{
}

void Rebuild::run()
{
    openTables();
    givePages();
    for (const Table& table : tables_)
        copy(table);
    to_.commit();
}

void Rebuild::openTables()
{
    for (const CatalogEntry& entry : catalog_.objects()) {
        if (!entry.table())
            continue;
        const auto page = static_cast<PageNumber>(entry.id);
        if (newPages_.contains(page))
            continue;
        newPages_[page] = 0;
        tables_.push_back({std::make_shared<JetTable>(from_, page, entry.name), 0});
    }
}

/// The system tables keep their pages, which programs know; all others get new ones.
void Rebuild::givePages()
{
    for (Table& table : tables_) {
        const PageNumber old = table.from->page();
        table.to = old < kFirstOwnPage ? old : to_.allocate();
        newPages_[old] = table.to;
    }
}

PageNumber Rebuild::newPageOf(PageNumber old) const
{
    const auto found = newPages_.find(old);
    return found == newPages_.end() ? 0 : found->second;
}

/// The catalog names tables by the pages of their definitions, and so do the rights.
std::optional<NumberChange> Rebuild::numbersOf(const JetTable& table) const
{
    const auto renumbered = [this](std::int32_t id) -> std::optional<std::int32_t> {
        const PageNumber page = newPageOf(static_cast<PageNumber>(id));
        if (page == 0)
            return std::nullopt;
        return static_cast<std::int32_t>(page);
    };
    using FieldOf = std::function<ValueView(const char*)>;
    if (table.page() == kCatalogPage)
        return NumberChange{"Id", [renumbered](std::int32_t id, const FieldOf& field) {
                                const ValueView type = field("Type");
                                const bool isTable = type.kind() == ValueKind::Integer &&
                                                     type.asInteger() == object_type::kTable;
                                return isTable ? renumbered(id) : std::optional(id);
                            }};
    if (table.name() == "MSysACEs")
        return NumberChange{"ObjectId", [renumbered](std::int32_t id, const FieldOf&) {
                                const bool isTable = id >= 0 && id < kRootContainer;
                                return isTable ? renumbered(id) : std::optional(id);
                            }};
    return std::nullopt;
}

void Rebuild::breathe()
{
    if (to_.pendingBytes() > kGather)
        to_.commit();
}

void Rebuild::copy(const Table& table)
{
    TableCopyOptions options;
    options.salvage = salvage_;
    options.numbers = numbersOf(*table.from);
    options.breathe = [this] { breathe(); };
    options.report = report_;
    const auto pageOf = [this](PageNumber old) { return newPageOf(old); };
    TableCopy copy(*table.from, to_, table.to, maps_, pageOf, options);
    copy.run();
    for (const std::string& index : copy.lostIndexes())
        lostIndexes_.push_back({table.from->name(), index});
}

}  // namespace velnor::jet
