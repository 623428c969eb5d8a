#include "access/formats/xbase/index_check.h"

#include <algorithm>
#include <array>

#include "access/engine_error.h"
#include "access/formats/xbase/index_tree.h"

namespace velnor::xbase {
namespace {

constexpr int kMostReports = 20;  // of one index

class IndexCheck {
public:
    IndexCheck(DbfTable& table, const IndexSet::Named& named, const ProblemSink& report)
        : table_(table), index_(*named.index), sink_(report),
          where_(named.file + ", index " + named.index->tag().name)
    {
    }

    void run()
    {
        const IndexTag& tag = index_.tag();
        if (!tag.walkable || !index_.keys())
            return say("is not checked: " + tag.trouble, true);
        index_.flush();
        seen_.assign(table_.count() + std::size_t{1}, false);
        TreeWalker walker(index_.nodes());
        for (bool on = walker.first(); on && reports_ < kMostReports; on = walker.next())
            entry(walker);
        if (reports_ < kMostReports)
            missing();
    }

    void say(const std::string& text, bool harmless = false)
    {
        ++reports_;
        sink_({where_, text, harmless});
    }

private:
    const std::uint8_t* record(std::uint32_t number)
    {
        if (number - blockFirst_ >= blockRecords_) {
            blockRecords_ = std::min(16u, table_.count() - number + 1);
            block_.resize(std::size_t{blockRecords_} * table_.header().recordLength);
            table_.readRecords(number, blockRecords_, block_);
            blockFirst_ = number;
        }
        return block_.data() + std::size_t{number - blockFirst_} * table_.header().recordLength;
    }

    static std::string named(std::uint32_t number) { return "record " + std::to_string(number); }

    void entry(const TreeWalker& walker)
    {
        const std::uint32_t length = index_.tag().keyLength, number = walker.record();
        if (entries_ && std::memcmp(last_.data(), walker.key(), length) > 0)
            say("the key of " + named(number) + " is out of order");
        std::copy_n(walker.key(), length, last_.data());
        ++entries_;
        if (number == 0 || number > table_.count())
            return say("tells of " + named(number) + ", which is not there");
        if (seen_[number])
            return say(named(number) + " is in it twice");
        seen_[number] = true;
        if (!index_.keys()->make(record(number), number, wanted_.data()))
            return say(named(number) + " should not be in it");
        if (!std::equal(wanted_.data(), wanted_.data() + length, walker.key()))
            say("the key of " + named(number) + " is not that of its fields");
    }

    void missing()
    {
        for (std::uint32_t n = 1; n <= table_.count() && reports_ < kMostReports; ++n) {
            if (seen_[n])
                continue;
            const std::uint8_t* bytes = record(n);
            if (*bytes == '*' || !index_.keys()->make(bytes, n, wanted_.data()))
                continue;
            TreeWalker walker(index_.nodes());
            const std::uint32_t length = index_.tag().keyLength;
            const bool equal = index_.tag().unique && walker.seek(wanted_.data(), length) &&
                               std::equal(wanted_.data(), wanted_.data() + length, walker.key());
            if (!equal)
                say(named(n) + " is not in it");
        }
    }

    DbfTable& table_;
    TableIndex& index_;
    const ProblemSink& sink_;
    std::string where_;
    std::vector<std::uint8_t> block_;
    std::uint32_t blockFirst_ = 1, blockRecords_ = 0;
    std::vector<bool> seen_;
    std::array<std::uint8_t, kLongestKey> last_{}, wanted_{};
    std::uint64_t entries_ = 0;
    int reports_ = 0;
};

}  // namespace

void checkIndexes(DbfTable& table, const ProblemSink& report)
{
    for (const auto& [file, why] : table.indexes().troubles())
        report({file, "cannot be read: " + why, false});
    for (const IndexSet::Named& named : table.indexes().all()) {
        IndexCheck check(table, named, report);
        try {
            check.run();
        } catch (const EngineError& error) {
            check.say(error.what());
        }
    }
}

}  // namespace velnor::xbase
