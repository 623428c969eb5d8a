#include "access/formats/jet/rebuild.h"

#include <algorithm>

#include "access/formats/jet/catalog_objects.h"

namespace velnor::jet {
namespace {

constexpr PageNumber kFirstOwnPage = 6;
constexpr std::size_t kGather = 16u << 20;  // bytes written at once

std::int64_t integerOf(ValueView v)
{
    return v.kind() == ValueKind::Integer ? v.asInteger() : 0;
}

}  // namespace

Rebuild::Rebuild(JetFile& from, JetFile& to) : from_(from), to_(to), maps_(to)
{
    Catalog catalog(from);
    for (const CatalogEntry& entry : catalog.objects())
        if (const auto page = static_cast<PageNumber>(entry.id);
            entry.table() && newPages_.emplace(page, 0).second)
            tables_.push_back(std::make_shared<JetTable>(from, page, entry.name));
}

Rebuild::Rebuild(JetFile& from, JetFile& to, Salvage& salvage, const ProblemSink& report)
    : from_(from), to_(to), salvage_(&salvage), report_(report), maps_(to)
{
    for (const Salvage::Table& found : salvage.tables())
        if (newPages_.emplace(found.table->page(), 0).second)
            tables_.push_back(found.table);
    // What the catalog holds is known before the rights to it are looked at.
    std::stable_partition(tables_.begin(), tables_.end(),
                          [](const auto& table) { return table->page() == kCatalogPage; });
}

void Rebuild::run()
{
    givePages();
    for (const auto& table : tables_)
        copy(*table);
    to_.commit();
}

/// The system tables keep their pages, which programs know; all others get new ones.
void Rebuild::givePages()
{
    for (const auto& table : tables_) {
        const PageNumber old = table->page();
        newPages_[old] = old < kFirstOwnPage ? old : to_.allocate();
    }
}

PageNumber Rebuild::newPageOf(PageNumber old) const
{
    const auto found = newPages_.find(old);
    return found == newPages_.end() ? 0 : found->second;
}

/// Of a damaged catalog: each object once, and none without a name.
bool Rebuild::takesObject(std::int32_t id, const RecordField& field)
{
    if (!salvage_)
        return true;
    const ValueView name = field("Name");
    if (name.kind() != ValueKind::Text || name.asText().empty())
        return false;
    const std::string text(name.asText());
    const auto parent = static_cast<std::int32_t>(integerOf(field("ParentId")));
    const auto type = static_cast<int>(integerOf(field("Type")));
    return !contradictsStandard(id, parent, type, text) && objects_.insert(id).second;
}

/// The catalog names tables by the pages of their definitions, and so do the rights.
std::optional<NumberChange> Rebuild::numbersOf(const JetTable& table)
{
    const auto renumbered = [this](std::int32_t id) -> std::optional<std::int32_t> {
        const PageNumber page = newPageOf(static_cast<PageNumber>(id));
        return page == 0 ? std::nullopt : std::optional(static_cast<std::int32_t>(page));
    };
    if (table.page() == kCatalogPage)
        return NumberChange{
            "Id",
            [=, this](std::int32_t id, const RecordField& field) -> std::optional<std::int32_t> {
                if (!takesObject(id, field))
                    return std::nullopt;
                return integerOf(field("Type")) == object_type::kTable ? renumbered(id)
                                                                       : std::optional(id);
            }};
    if (table.name() == "MSysACEs")
        return NumberChange{
            "ObjectId",
            [=, this](std::int32_t id, const RecordField& field) -> std::optional<std::int32_t> {
                const bool known = objects_.contains(id) || id == kRootContainer;
                if (salvage_ && (!known || field("SID").kind() != ValueKind::Bytes))
                    return std::nullopt;
                return id >= 0 && id < kRootContainer ? renumbered(id) : std::optional(id);
            }};
    return std::nullopt;
}

bool Rebuild::soundProperties(std::span<const std::uint8_t> block) const
{
    try {
        PropertyBlock::parse(block, {!from_.format().wideText, &from_.codePage()});
        return true;
    } catch (const EngineError&) {
        return false;
    }
}

void Rebuild::breathe()
{
    if (to_.pendingBytes() > kGather)
        to_.commit();
}

void Rebuild::copy(JetTable& table)
{
    TableCopyOptions options;
    options.salvage = salvage_ != nullptr;
    options.numbers = numbersOf(table);
    options.pages = salvage_ ? &salvage_->pagesOf(table.page()) : nullptr;
    options.breathe = [this] { breathe(); };
    options.report = report_;
    if (salvage_ && table.page() == kCatalogPage)
        options.makesSense = [this](const std::string& field, std::span<const std::uint8_t> value) {
            return field != "LvProp" || soundProperties(value);
        };
    const auto pageOf = [this](PageNumber old) { return newPageOf(old); };
    TableCopy(table, to_, newPageOf(table.page()), maps_, pageOf, options).run();
}

}  // namespace velnor::jet
