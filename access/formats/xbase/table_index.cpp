#include "access/formats/xbase/table_index.h"

#include <algorithm>

#include "access/engine_error.h"
#include "access/formats/xbase/dbf_table.h"
#include "access/formats/xbase/entry_sorter.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kMostPendingBytes = 16u << 20;
constexpr std::size_t kFewEntries = 64;
constexpr std::size_t kMostMergedBytes = 8u << 20;  // beyond it entries go in one by one
constexpr std::size_t kEntriesBetweenLooks = 1024;
constexpr std::uint8_t kDeleted = '*';
constexpr std::uint32_t kSampledFrom = 10'000;  // records; fewer are walked at once
constexpr std::uint32_t kLastSamples = 32, kOtherSamples = 64;

}  // namespace

TableIndex::TableIndex(DbfTable& table, IndexTag tag, std::unique_ptr<NodeStore> nodes,
                       std::optional<KeyMaker> keys)
    : table_(table), tag_(std::move(tag)), nodes_(std::move(nodes)), tree_(*nodes_),
      keys_(std::move(keys)), fields_(fieldsOfExpression(tag_.expression, table.header())),
      pending_(tag_.keyLength)
{
}

IndexDef TableIndex::definition() const
{
    IndexDef def;
    def.name = tag_.name;
    for (const std::size_t n : fields_)
        def.fields.push_back({table_.header().fields[n].name, tag_.descending});
    if (def.fields.empty())
        def.fields.push_back({tag_.expression, tag_.descending});
    def.unique = tag_.unique;
    def.primary = tag_.primary;
    def.expression = tag_.expression;
    def.condition = tag_.condition;
    if (!tag_.trouble.empty())
        def.cannotKeep = "The index " + tag_.name + ": " + tag_.trouble + ".";
    return def;
}

const std::string& TableIndex::whyNotKept()
{
    if (!verified_ && tag_.trouble.empty()) {
        try {
            verify();
        } catch (const EngineError& error) {
            tag_.trouble = error.what();
        }
        verified_ = true;
    }
    return tag_.trouble;
}

const std::string& TableIndex::whyNotSearched()
{
    if (verified_ || !keys_ || table_.count() < kSampledFrom)
        return whyNotKept();
    if (!sampled_ && tag_.trouble.empty()) {
        flush();
        if (!samplesFit())
            return whyNotKept();  // the whole walk tells what it is
        sampled_ = true;
    }
    return tag_.trouble;
}

bool TableIndex::samplesFit()
{
    std::vector<std::uint8_t> image(table_.header().recordLength);
    const std::uint32_t count = table_.count();
    for (std::uint32_t i = 0; i < kLastSamples; ++i)
        if (!tellsOf(count - i, image))
            return false;
    for (std::uint32_t i = 0; i < kOtherSamples; ++i)
        if (!tellsOf(1 + i * (count / kOtherSamples), image))
            return false;
    return true;
}

/// True as well of a record that the index need not have.
bool TableIndex::tellsOf(std::uint32_t number, std::span<std::uint8_t> image)
{
    table_.readLoneRecord(number, image);
    std::array<std::uint8_t, kLongestKey> key{};
    if (image[0] == kDeleted || !keys_->make(image.data(), number, key.data()))
        return true;
    return tag_.unique ? tree_.find(key.data()) != 0 : tree_.contains(key.data(), number);
}

bool TableIndex::canBeBuilt()
{
    whyNotKept();
    return keys_ && !otherOrder_;
}

/// 2.
void TableIndex::verify()
{
    TreeWalker walker(*nodes_);
    std::vector<bool> seen(table_.count() + std::size_t{1});
    std::array<std::uint8_t, kLongestKey> last{};
    std::uint32_t lastRecord = 0;
    entries_ = 0;
    for (bool on = walker.first(); on; on = walker.next()) {
        const int by = entries_ ? std::memcmp(last.data(), walker.key(), keyLength()) : -1;
        if (by > 0 || (by == 0 && nodes_->recordsAreOrdered() && lastRecord >= walker.record())) {
            tag_.trouble = "its keys are not in the order of their bytes";
            otherOrder_ = true;
            return;
        }
        const std::uint32_t record = walker.record();
        if (record == 0 || record > table_.count() || seen[record]) {
            tag_.trouble = "it does not fit the records of the table";
            return;
        }
        seen[record] = true;
        std::copy_n(walker.key(), keyLength(), last.data());
        lastRecord = record;
        ++entries_;
    }
    if (!tag_.condition.empty() || tag_.unique || entries_ == table_.count())
        return;
    // Some programs leave deleted records out.
    std::vector<std::uint8_t> image(table_.header().recordLength);
    for (std::uint32_t n = 1; n <= table_.count(); ++n) {
        if (seen[n])
            continue;
        table_.readRecords(n, 1, image);
        if (image[0] != kDeleted) {
            tag_.trouble = "it is stale, record " + std::to_string(n) + " is not in it";
            return;
        }
    }
}

bool TableIndex::isDeleted(std::uint32_t number)
{
    std::vector<std::uint8_t> image(table_.header().recordLength);
    table_.readRecords(number, 1, image);
    return image[0] == kDeleted;
}

void TableIndex::before(std::uint32_t number, RecordImage oldImage, RecordImage newImage)
{
    leaves_ = !oldImage.empty() && keys_->make(oldImage.data(), number, oldKey_.data());
    enters_ = !newImage.empty() && keys_->make(newImage.data(), number, newKey_.data());
    replaced_ = 0;
    if (leaves_ && enters_ &&
        std::equal(oldKey_.data(), oldKey_.data() + keyLength(), newKey_.data()))
        leaves_ = enters_ = false;
    if (!leaves_ && !(enters_ && tag_.unique))
        return;
    flush();
    if (leaves_ && !tag_.unique && !tree_.contains(oldKey_.data(), number))
        throw EngineError(EngineErrorNumber::IndexNotMaintained,
                          "The index " + tag_.name + " of " + table_.path() + " is stale: record " +
                              std::to_string(number) + " is not in it. Nothing was written.");
    if (!enters_ || !tag_.unique)
        return;
    const std::uint32_t equal = tree_.find(newKey_.data());
    if (equal == 0 || equal == number)
        return;
    if (equal > table_.count() || isDeleted(equal))
        replaced_ = equal;
    else if (tag_.refusesEqual)
        throw EngineError(EngineErrorNumber::DuplicateKey,
                          "A record with this key is in the index " + tag_.name + " already.");
    else
        enters_ = false;  // of equal keys only the first is entered
}

void TableIndex::after(std::uint32_t number)
{
    if (!leaves_ && !enters_)
        return;
    changed_ = true;
    if (leaves_)
        entries_ -= tree_.erase(oldKey_.data(), number);
    if (replaced_)
        entries_ -= tree_.erase(newKey_.data(), replaced_);
    if (!enters_)
        return;
    if (leaves_ || tag_.unique) {
        tree_.insert(newKey_.data(), number);
        ++entries_;
        return;
    }
    pending_.add(newKey_.data(), number);
    if (pending_.bytes() > kMostPendingBytes)
        flush();
}

/// Many entries are merged with all that there are; few are entered one by one.
void TableIndex::flush(const std::function<void()>& relieve)
{
    if (pending_.empty())
        return;
    EntryList added(keyLength());
    std::swap(added, pending_);
    added.sort();
    const std::uint64_t mergedBytes = (entries_ + added.count()) * std::uint64_t{keyLength() + 4};
    if (added.count() > kFewEntries && added.count() > entries_ / 4 &&
        mergedBytes <= kMostMergedBytes) {
        EntryList all(keyLength());
        all.reserve(static_cast<std::size_t>(entries_) + added.count());
        TreeWalker walker(*nodes_);
        for (bool on = walker.first(); on; on = walker.next())
            all.add(walker.key(), walker.record());
        all.merge(added);
        ListedEntries entries(all);
        entries_ = tree_.build(entries);
        return;
    }
    for (std::size_t i = 0; i < added.count(); ++i) {
        tree_.insert(added.key(i), added.record(i));
        if (relieve && i % kEntriesBetweenLooks == 0)
            relieve();
    }
    entries_ += added.count();
}

/// Of entries with one key the first whose record is not deleted stays.
class TableIndex::FirstOfEqual final : public EntrySource {
public:
    FirstOfEqual(TableIndex& index, EntrySource& all, bool tolerant)
        : index_(index), all_(all), tolerant_(tolerant), list_(index.keyLength()),
          held_(index.keyLength())
    {
    }
    /// Records left out although their index refuses equal keys.
    std::uint64_t doubled() const { return doubled_; }

    bool more(EntryList& into) override
    {
        list_.clear();
        const bool goesOn = all_.more(list_);
        for (std::size_t i = 0; i < list_.count(); ++i) {
            if (!held_.empty() &&
                std::memcmp(held_.key(0), list_.key(i), index_.keyLength()) == 0) {
                meet(list_.record(i));
                continue;
            }
            handOut(into);
            held_.add(list_.key(i), list_.record(i));
            liveHeld_ = met_ = false;
        }
        if (!goesOn)
            handOut(into);
        return goesOn;
    }

private:
    void handOut(EntryList& into)
    {
        if (!held_.empty())
            into.add(held_.key(0), held_.record(0));
        held_.clear();
    }

    void meet(std::uint32_t record)
    {
        if (!met_)
            liveHeld_ = !index_.isDeleted(held_.record(0));
        met_ = true;
        if (index_.isDeleted(record))
            return;
        const bool refused = liveHeld_ && index_.tag().refusesEqual;
        doubled_ += refused;
        if (refused && !tolerant_)
            throw EngineError(EngineErrorNumber::DuplicateKey,
                              "Two records have one key in the index " + index_.tag().name + ".");
        if (!liveHeld_)
            held_.setRecord(0, record);
        liveHeld_ = true;
    }

    TableIndex& index_;
    EntrySource& all_;
    bool tolerant_;
    std::uint64_t doubled_ = 0;
    EntryList list_, held_;
    bool met_ = false;       // the held entry has met an equal one
    bool liveHeld_ = false;  // known then: its record is not deleted
};

namespace {

/// Hands entries on, with a pause now and then.
class PausingSource final : public EntrySource {
public:
    PausingSource(EntrySource& all, const DbfTable& table) : all_(all), table_(table) {}
    bool more(EntryList& into) override
    {
        table_.pause();
        return all_.more(into);
    }

private:
    EntrySource& all_;
    const DbfTable& table_;
};

}  // namespace

std::uint64_t TableIndex::build(bool tolerant)
{
    constexpr std::uint32_t kAtOnce = 256;
    const std::uint32_t length = table_.header().recordLength;
    EntrySorter entries(table_.fileSystem(), table_.onDisk(table_.path()) + "-sort", keyLength());
    std::vector<std::uint8_t> block(std::size_t{kAtOnce} * length);
    std::array<std::uint8_t, kLongestKey> key;
    for (std::uint32_t first = 1; first <= table_.count(); first += kAtOnce) {
        const std::uint32_t now = std::min(kAtOnce, table_.count() - first + 1);
        table_.pause();
        table_.readRecords(first, now, block);
        for (std::uint32_t i = 0; i < now; ++i)
            if (keys_->make(block.data() + std::size_t{i} * length, first + i, key.data()))
                entries.add(key.data(), first + i);
    }
    FirstOfEqual firsts(*this, entries, tolerant);
    PausingSource all(tag_.unique ? static_cast<EntrySource&>(firsts) : entries, table_);
    entries_ = tree_.build(all);
    verified_ = changed_ = true;
    return firsts.doubled();
}

}  // namespace velnor::xbase
