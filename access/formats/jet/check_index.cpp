#include "access/formats/jet/check_index.h"

#include <algorithm>

#include "access/formats/jet/jet_cursor.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Entry = std::vector<std::uint8_t>;

constexpr int kMaxDepth = 12;

class IndexCheck {
public:
    IndexCheck(CheckContext& context, std::shared_ptr<JetTable> table, int real,
               const std::string& where)
        : context_(context), table_(table), def_(table->def().realIndexes[at(real)]),
          index_(table->index(real)), where_(where), owner_(context.addOwner(where)),
          format_(context.file.format()),
          keys_(!format_.wideText, &context.file.codePage(), index_.keyColumns), cursor_(table)
    {
    }
    void run(std::int64_t records);

private:
    static std::size_t at(int n) { return static_cast<std::size_t>(n); }
    int visit(PageNumber number, int depth, const Entry& high);
    int children(const IndexPageView& view, PageNumber number, int depth, const Entry& high);
    void leaf(const IndexPageView& view, PageNumber number, const Entry& high);
    void entry(const Entry& whole, PageNumber number);
    void compare(KeyView key, RowPointer row);
    void order(const Entry& whole, const Entry& high, PageNumber number);
    void problem(const std::string& text) { context_.problem(where_, text); }
    static std::string pageText(PageNumber number) { return "Page " + std::to_string(number); }

    CheckContext& context_;
    std::shared_ptr<JetTable> table_;
    const RealIndex& def_;
    OpenIndex& index_;
    const std::string& where_;
    CheckContext::Owner owner_;
    const JetFormat& format_;
    KeyBuilder keys_;
    PhysicalCursor cursor_;
    std::vector<ValueView> values_;
    std::vector<PageNumber> pages_;
    Entry last_;  // the leaf entry before
    std::int64_t entries_ = 0;
    PageNumber lastLeaf_ = 0;
    PageNumber expectedLeaf_ = 0;
};

void IndexCheck::run(std::int64_t records)
{
    index_.tree->settle();
    visit(def_.root, 0, {});
    if (expectedLeaf_ != 0)
        problem("Its last leaf names page " + std::to_string(expectedLeaf_) + " as the next.");
    if (entries_ != records)
        problem("It has " + std::to_string(entries_) + " entries for " + std::to_string(records) +
                " records.");
    std::ranges::sort(pages_);
    const std::vector<PageNumber> mapped = context_.useMap(def_.map, where_);
    std::vector<PageNumber> odd;
    std::ranges::set_difference(pages_, mapped, std::back_inserter(odd));
    if (!odd.empty())
        problem("Its page map lacks page " + std::to_string(odd.front()) + ".");
    odd.clear();
    std::ranges::set_difference(mapped, pages_, std::back_inserter(odd));
    if (!odd.empty())
        problem("Its page map names page " + std::to_string(odd.front()) +
                ", which is not in its tree.");
}

/// Returns the height of the page over the leaves. `high` bounds its entries; empty: nothing does.
int IndexCheck::visit(PageNumber number, int depth, const Entry& high)
{
    if (depth > kMaxDepth)
        throw EngineError(EngineErrorNumber::Corrupt, "It is too deep.");
    if (!context_.claim(number, owner_))
        throw EngineError(EngineErrorNumber::Corrupt, "Its tree cannot be followed.");
    const PageRef page = context_.file.page(number);
    IndexPageView view;
    view.open(format_, page.data(), number, table_->page());
    pages_.push_back(number);
    if (loadLE<std::uint16_t>(page.data() + format_.indexPage.freeBytes) != view.room())
        problem(pageText(number) + " says a wrong number of free bytes.");
    if (!view.leaf())
        return children(view, number, depth, high);
    if (view.level() != 0)
        problem(pageText(number) + " is a leaf with the level of a node.");
    if (view.count() == 0 && depth > 0)
        context_.note(where_, pageText(number) + " is empty.");
    leaf(view, number, high);
    return 0;
}

int IndexCheck::children(const IndexPageView& view, PageNumber number, int depth, const Entry& high)
{
    int height = -1;
    Entry bound;
    Entry before;
    for (int i = 0; i <= view.count(); ++i) {
        if (i < view.count()) {
            view.entry(i, bound);
            bound.resize(bound.size() - 4);
            if (!before.empty() && compareEntries(before, bound) >= 0)
                problem(pageText(number) + " has entries out of order.");
            order(bound, high, number);
            before = bound;
        } else {
            bound = high;
        }
        const int below = visit(view.child(i), depth + 1, bound);
        if (height >= 0 && below != height)
            problem(pageText(number) + " has children of different heights.");
        height = below;
    }
    if (view.level() != height + 1)
        context_.note(where_, pageText(number) + " has a wrong level.");
    return height + 1;
}

void IndexCheck::order(const Entry& whole, const Entry& high, PageNumber number)
{
    if (!high.empty() && compareEntries(high, whole) < 0)
        problem(pageText(number) + " has an entry beyond what its parent says.");
}

void IndexCheck::leaf(const IndexPageView& view, PageNumber number, const Entry& high)
{
    const bool first = lastLeaf_ == 0;
    if (view.previous() != lastLeaf_ || (!first && expectedLeaf_ != number))
        problem(pageText(number) + " does not follow the leaf in front of it.");
    lastLeaf_ = number;
    expectedLeaf_ = view.next();
    Entry whole;
    for (int i = 0; i < view.count(); ++i) {
        view.entry(i, whole);
        order(whole, high, number);
        entry(whole, number);
    }
}

void IndexCheck::entry(const Entry& whole, PageNumber number)
{
    ++entries_;
    const KeyView key = KeyView(whole).first(whole.size() - 4);
    const auto row = RowPointer::fromWord(loadBE<std::uint32_t>(&whole[whole.size() - 4]));
    if (!last_.empty() && compareEntries(last_, whole) >= 0)
        problem(pageText(number) + " has entries out of order.");
    const bool repeated =
        last_.size() > 4 && std::ranges::equal(KeyView(last_).first(last_.size() - 4), key);
    last_ = whole;
    if (!cursor_.moveTo(rowIdOf(row))) {
        problem("An entry on page " + std::to_string(number) +
                " names no record: " + placeText(row) + ".");
        return;
    }
    compare(key, row);
    if (repeated && def_.unique() && !keys_.allNull())
        problem("The record on " + placeText(row) + " has a key that another has, too.");
}

void IndexCheck::compare(KeyView key, RowPointer row)
{
    values_.clear();
    for (const int field : index_.fields)
        values_.push_back(field < 0 ? ValueView::null() : cursor_.field(field));
    const KeyView made = keys_.build(values_);
    if (!keys_.sure() || std::ranges::equal(made, key))
        return;
    if (key.size() > kLongestKey)
        context_.note(where_, "The key of the record on " + placeText(row) +
                                  " is longer than keys may be.");
    else
        problem("The record on " + placeText(row) + " stands under a key that is not its own.");
}

}  // namespace

void checkIndex(CheckContext& context, std::shared_ptr<JetTable> table, int real,
                std::int64_t records, const std::string& where)
{
    try {
        IndexCheck(context, std::move(table), real, where).run(records);
    } catch (const EngineError& error) {
        context.problem(where, error.what());
    }
}

}  // namespace velnor::jet
