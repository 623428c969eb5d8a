// Many sorted entries into a tree at once, and the entries that a long append keeps aside until
// somebody looks.
#include <algorithm>

#include "access/formats/jet/entry_run.h"
#include "access/formats/jet/index_builder.h"
#include "access/formats/jet/jet_index.h"

namespace velnor::jet {
namespace {

// From so many standing entries on for each new one, hardly two new ones go to the same leaf.
constexpr std::uint64_t kSparse = 128;

bool sameKey(KeyView entry, KeyView key)
{
    return entry.size() == key.size() + 4 && std::equal(key.begin(), key.end(), entry.begin());
}

}  // namespace

// ---- entries kept aside

void IndexTree::insertLater(KeyView key, RowPointer row)
{
    requireKeySize(key);
    if (!aside_)
        aside_ = std::make_unique<EntryRun>(space_);
    if (aside_->full())
        settle();
    aside_->add(key, row);
    raiseTop(key);
    waiting_ = true;
    ++version_;
}

std::size_t IndexTree::waitingBytes() const
{
    return waiting_ ? aside_->bytes() : 0;
}

bool IndexTree::beyondAll(KeyView key)
{
    if (!top_) {
        IndexWalker last(*this);
        top_.emplace();
        if (last.last())
            top_->assign(last.key().begin(), last.key().end());
    }
    return std::ranges::lexicographical_compare(*top_, key);
}

void IndexTree::raiseTop(KeyView key)
{
    if (top_ && std::ranges::lexicographical_compare(*top_, key))
        top_->assign(key.begin(), key.end());
}

/// After a failure all of them go on waiting: an entry that has been added already does no harm.
void IndexTree::addWaiting()
{
    struct Waiting {
        IndexTree& tree;
        ~Waiting() { tree.waiting_ = !tree.aside_->empty(); }
    } const waiting{*this};
    waiting_ = false;  // the steps below look at the tree as it stands
    merge(aside_->count(), aside_->sorted());
    aside_->clear();
}

void IndexTree::pagesWentBack()
{
    nodesChanged();
    top_.reset();
}

void IndexTree::invalidate()
{
    pagesWentBack();
    newKeys_ = 0;
    waiting_ = false;
    if (aside_)
        aside_->clear();
}

// ---- merging

std::uint64_t IndexTree::merge(std::uint64_t count, const EntrySource& entries)
{
    settle();
    auto first = entries();
    if (!first)
        return 0;
    const std::uint64_t standing = roughCount();
    const bool behind = standing > 0 && behindAll(*first);
    const EntrySource all = [&] {
        return first ? std::exchange(first, std::nullopt) : entries();
    };
    if (standing <= count && !behind)
        return mergeBuilding(all);
    if (standing / kSparse <= count)
        return mergeByLeaf(all);
    std::uint64_t added = 0;
    while (const auto entry = all())
        added += insert(entry->key, entry->row);
    return added;
}

/// Whether an entry, and so all that follow it, comes after every one that stands.
bool IndexTree::behindAll(const IndexEntry& entry)
{
    IndexWalker last(*this);
    return !last.last() || compareEntries(last.whole(), makeEntry(entry.key, entry.row)) < 0;
}

/// Builds the tree anew from the entries that stand and the new ones.
std::uint64_t IndexTree::mergeBuilding(const EntrySource& entries)
{
    IndexWalker standing(*this);
    bool more = standing.first();
    auto fresh = entries();
    bool stepStanding = false;
    bool stepFresh = false;
    std::uint64_t added = 0;
    std::uint32_t keys = 0;
    std::vector<std::uint8_t> last;
    const auto both = [&]() -> std::optional<IndexEntry> {
        if (stepStanding)
            more = standing.next();
        if (stepFresh)
            fresh = entries();
        stepStanding = stepFresh = false;
        if (!more && !fresh) {
            standing.park();
            return std::nullopt;
        }
        int order = !more ? 1 : -1;
        if (more && fresh)
            order = compareEntries(standing.whole(), makeEntry(fresh->key, fresh->row));
        stepStanding = order <= 0;
        stepFresh = order >= 0;
        const IndexEntry entry = order <= 0 ? standing.entry() : *fresh;
        if (order > 0) {
            ++added;
            keys += !std::ranges::equal(last, entry.key) &&
                    !(more && std::ranges::equal(standing.key(), entry.key));
        }
        last.assign(entry.key.begin(), entry.key.end());
        return entry;
    };
    build(both);
    newKeys_ += keys;
    return added;
}

/// Reads each leaf that gets new entries once, and writes it once as long as they fit.
std::uint64_t IndexTree::mergeByLeaf(const EntrySource& entries)
{
    std::uint64_t added = 0;
    std::vector<std::uint8_t> bound;
    for (auto entry = entries(); entry;) {
        IndexPageView leaf;
        PageRef page = descend(makeEntry(entry->key, entry->row), leaf);
        leafBound(bound);
        content_.load(leaf);
        const std::uint32_t most = format_.indexPage.prefixBytes == 1 ? 0xFF : 0xFFFF;
        std::uint32_t shared = content_.count() > 1 ? content_.commonPrefix(format_) : most;
        int at = 0;
        bool changed = false, full = false;
        while (entry && !full) {
            const KeyView whole = makeEntry(entry->key, entry->row);
            if (!bound.empty() && compareEntries(whole, bound) > 0)
                break;
            at = content_.lowerBound(at, whole);
            const bool stands =
                at < content_.count() && std::ranges::equal(content_.entry(at), whole);
            if (!stands) {
                if (content_.count() > 0)
                    shared = std::min(shared, sharedBytes(content_.entry(0), whole));
                const std::size_t plain = content_.plainSize() + whole.size();
                const auto saved = shared * static_cast<std::size_t>(content_.count());
                full = plain - saved > static_cast<std::size_t>(format_.indexPage.entryBytes);
                if (full)
                    break;
                content_.insert(at, whole);
                const bool known =
                    (at > 0 && sameKey(content_.entry(at - 1), entry->key)) ||
                    (at + 1 < content_.count() && sameKey(content_.entry(at + 1), entry->key));
                newKeys_ += !known;
                raiseTop(entry->key);
                ++added;
                changed = true;
            }
            entry = entries();
        }
        if (changed) {
            writeIndexPage(format_, page.edit(), content_);
            ++version_;
        }
        page.release();
        space_.breathe();
        if (full) {  // the leaf is cut in two, the usual way
            added += insert(entry->key, entry->row);
            entry = entries();
        }
    }
    return added;
}

/// The entry that bounds the leaf found by the last descend(); empty when it is the last one.
void IndexTree::leafBound(std::vector<std::uint8_t>& bound)
{
    bound.clear();
    for (std::size_t depth = path_.size(); depth-- > 0;) {
        IndexPageView view;
        const PageRef page = load(path_[depth].page, view);
        if (path_[depth].child >= view.count())
            continue;
        view.entry(path_[depth].child, bound);
        bound.resize(bound.size() - 4);
        return;
    }
}

}  // namespace velnor::jet
