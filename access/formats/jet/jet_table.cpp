#include "access/formats/jet/jet_table.h"

#include <algorithm>

#include "access/storage/byte_reader.h"
#include "platform/paths.h"

namespace velnor::jet {
namespace {

constexpr int kMaxHops = 8;

TableDef readTableDef(JetFile& file, PageNumber page)
{
    std::vector<PageNumber> chain;
    const auto bytes = readTableChain(file, page, chain);
    TableDef def = parseTableDef(bytes, file.names());
    def.chain = std::move(chain);
    return def;
}

}  // namespace

JetTable::JetTable(JetFile& file, PageNumber definition, std::string name)
    : JetTable(file, readTableDef(file, definition), std::move(name))
{
}

JetTable::JetTable(JetFile& file, TableDef definition, std::string name)
    : file_(file), name_(std::move(name)), def_(std::move(definition)),
      plan_(file.format(), file.codePage(), def_), owned_(std::in_place, file, def_.ownedMap),
      space_(std::in_place, file, def_.spaceMap)
{
    indexes_.resize(def_.realIndexes.size());
}

// ---- pages

const std::vector<PageNumber>& JetTable::pages()
{
    if (!pagesKnown_)
        findPages();
    return pages_;
}

void JetTable::findPages()
{
    pages_.clear();
    whyReadOnly_.clear();
    bool damaged = false;
    try {
        const PageNumber count = file_.pageCount();
        for (PageNumber page = owned_->next(1); page != 0 && page < count;
             page = owned_->next(page + 1))
            pages_.push_back(page);
    } catch (const EngineError&) {
        damaged = true;
    }
    if (damaged || (pages_.empty() && def_.recordCount != 0))
        findPagesByOwner();
    pagesKnown_ = true;
    countsKnown_ = false;
    ++pagesVersion_;
}

void JetTable::findPagesByOwner()
{
    pages_.clear();
    for (PageNumber number = 3; number < file_.pageCount(); ++number)
        if (dataPage(number))
            pages_.push_back(number);
    if (!pages_.empty())
        whyReadOnly_ = "The list of pages of table \"" + name_ +
                       "\" is damaged; repair the database before changing it.";
}

std::size_t JetTable::placeOf(PageNumber page)
{
    const auto& all = pages();
    return static_cast<std::size_t>(std::lower_bound(all.begin(), all.end(), page) - all.begin());
}

const std::string& JetTable::whyReadOnly()
{
    pages();
    return whyReadOnly_;
}

std::optional<PageRef> JetTable::dataPage(PageNumber number)
{
    if (number >= file_.pageCount())
        return std::nullopt;
    PageRef page = file_.page(number);
    const DataPage view(file_.format(), page.data());
    if (!view.isData() || view.owner() != def_.page())
        return std::nullopt;
    return page;
}

std::optional<HeldRow> JetTable::row(RowPointer home)
{
    const auto page = dataPage(home.page);
    if (!page)
        return std::nullopt;
    return rowOn(*page, home.slot);
}

std::optional<HeldRow> JetTable::rowOn(const PageRef& page, int slot)
{
    const DataPage view(file_.format(), page.data());
    if (slot >= view.rowCount() || !view.delivered(slot))
        return std::nullopt;
    auto bytes = view.row(slot);
    if (!bytes)
        return std::nullopt;
    if (!view.moved(slot))
        return HeldRow{PageRef(), *bytes, {page.number(), static_cast<std::uint8_t>(slot)}};
    for (int hops = 0; hops < kMaxHops; ++hops) {
        if (bytes->size() < 4)
            return std::nullopt;
        const RowPointer target = RowPointer::fromWord(loadLE<std::uint32_t>(bytes->data()));
        auto held = dataPage(target.page);
        if (!held)
            return std::nullopt;
        const DataPage there(file_.format(), held->data());
        if (target.slot >= there.rowCount())
            return std::nullopt;
        bytes = there.row(target.slot);
        if (!bytes || (there.entry(target.slot) & row_flag::kDeleted) == row_flag::kDeleted)
            return std::nullopt;
        if (!(there.entry(target.slot) & row_flag::kMoved))
            return HeldRow{std::move(*held), *bytes, target};
    }
    return std::nullopt;
}

// ---- counts

void JetTable::loadCounts()
{
    const auto& all = pages();
    counts_.assign(all.size(), 0);
    records_ = 0;
    sumPlace_ = 0;
    sum_ = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (const auto page = dataPage(all[i])) {
            const int rows = DataPage(file_.format(), page->data()).deliveredRows();
            counts_[i] = static_cast<std::uint8_t>(std::min(rows, 255));
            records_ += counts_[i];
        }
    }
    countsKnown_ = true;
}

std::int64_t JetTable::recordCount()
{
    if (!countsKnown_ || !pagesKnown_)
        loadCounts();
    return records_;
}

int JetTable::recordsOn(std::size_t place)
{
    recordCount();
    return place < counts_.size() ? counts_[place] : 0;
}

std::int64_t JetTable::recordsBefore(std::size_t place)
{
    recordCount();
    place = std::min(place, counts_.size());
    while (sumPlace_ < place)
        sum_ += counts_[sumPlace_++];
    while (sumPlace_ > place)
        sum_ -= counts_[--sumPlace_];
    return sum_;
}

std::optional<std::size_t> JetTable::placeOfRecord(std::int64_t n, std::int64_t& before)
{
    if (n < 0 || n >= recordCount())
        return std::nullopt;
    while (sum_ > n)
        sum_ -= counts_[--sumPlace_];
    while (sum_ + counts_[sumPlace_] <= n)
        sum_ += counts_[sumPlace_++];
    before = sum_;
    return sumPlace_;
}

// ---- indexes

OpenIndex& JetTable::index(int real)
{
    auto& slot = indexes_.at(real);
    if (slot)
        return *slot;
    const RealIndex& def = def_.realIndexes[real];
    auto open = std::make_unique<OpenIndex>(IndexPlan(def_, plan_, def));
    open->map = std::make_unique<UsageMap>(file_, def.map);
    open->tree = std::make_unique<IndexTree>(file_, open->map.get(), def.root, def_.page());
    open->ordinals = std::make_unique<IndexOrdinals>(*open->tree);
    slot = std::move(open);
    return *slot;
}

int JetTable::realIndexOf(std::string_view name) const
{
    for (const LogicalIndex& index : def_.logicalIndexes)
        if (paths::sameName(index.name, name) && index.realIndex < def_.realIndexes.size())
            return static_cast<int>(index.realIndex);
    return -1;
}

// ---- changes

void JetTable::pageAdded(PageNumber page)
{
    if (!pagesKnown_)
        return;
    const std::size_t place = placeOf(page);
    pages_.insert(pages_.begin() + static_cast<std::ptrdiff_t>(place), page);
    if (countsKnown_)
        counts_.insert(counts_.begin() + static_cast<std::ptrdiff_t>(place), 0);
    if (place < sumPlace_)
        sumPlace_ = 0, sum_ = 0;
    ++pagesVersion_;
}

void JetTable::pageRemoved(PageNumber page)
{
    if (!pagesKnown_)
        return;
    const std::size_t place = placeOf(page);
    if (place >= pages_.size() || pages_[place] != page)
        return;
    pages_.erase(pages_.begin() + static_cast<std::ptrdiff_t>(place));
    if (countsKnown_) {
        records_ -= counts_[place];
        counts_.erase(counts_.begin() + static_cast<std::ptrdiff_t>(place));
    }
    sumPlace_ = 0;
    sum_ = 0;
    ++pagesVersion_;
}

void JetTable::recordsChanged(PageNumber page, int delta)
{
    def_.recordCount = static_cast<std::uint32_t>(
        std::max<std::int64_t>(0, std::int64_t{def_.recordCount} + delta));
    countsDirty_ = true;
    if (!countsKnown_ || !pagesKnown_)
        return;
    const std::size_t place =
        !pages_.empty() && pages_.back() == page ? pages_.size() - 1 : placeOf(page);
    if (place >= counts_.size())
        return;
    counts_[place] = static_cast<std::uint8_t>(counts_[place] + delta);
    records_ += delta;
    if (place < sumPlace_)
        sum_ += delta;
}

bool JetTable::entriesWait() const
{
    return std::any_of(indexes_.begin(), indexes_.end(),
                       [](const auto& open) { return open && open->tree->waitingBytes() > 0; });
}

void JetTable::settle()
{
    for (const auto& open : indexes_)
        if (open)
            open->tree->settle();
}

void JetTable::takeBack(const Numbers& numbers, bool pages)
{
    def_.recordCount = numbers.records;
    def_.lastAutonumber = numbers.lastAutonumber;
    if (!pages)
        return;
    for (const auto& open : indexes_)
        if (open)
            open->tree->pagesWentBack();
    forgetPages();
}

void JetTable::forgetPages()
{
    pagesKnown_ = false;
    countsKnown_ = false;
    ++pagesVersion_;
}

void JetTable::saveCounts()
{
    settle();
    if (!countsDirty_)
        return;
    for (std::size_t i = 0; i < indexes_.size(); ++i)
        if (indexes_[i])
            def_.realIndexes[i].distinct += indexes_[i]->tree->takeNewKeys();
    const TableDefLayout& o = file_.format().table;
    PageRef page = file_.page(def_.page());
    std::uint8_t* p = page.edit();
    storeLE(p + o.recordCount, def_.recordCount);
    storeLE(p + o.lastAutonumber, def_.lastAutonumber);
    for (std::size_t i = 0; i < def_.realIndexes.size(); ++i) {
        const std::size_t at = o.statistics + i * o.statisticBytes;
        if (at + 8 <= file_.format().pageSize) {
            storeLE(p + at, def_.realIndexes[i].entries);
            storeLE(p + at + 4, def_.realIndexes[i].distinct);
        }
    }
    countsDirty_ = false;
}

void JetTable::reload()
{
    const PageNumber page = def_.page();
    def_ = readTableDef(file_, page);
    plan_ = RowPlan(file_.format(), file_.codePage(), def_);
    owned_.emplace(file_, def_.ownedMap);
    space_.emplace(file_, def_.spaceMap);
    // Walkers hold the trees: they stay, and look their places up again.
    indexes_.resize(def_.realIndexes.size());
    for (const auto& open : indexes_)
        if (open)
            open->tree->invalidate();
    countsDirty_ = false;
    forgetPages();
}

}  // namespace velnor::jet
