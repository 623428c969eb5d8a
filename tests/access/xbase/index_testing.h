// tests/access/xbase/index_testing.h - a table with indexes, and random changes to it.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <random>

#include "tests/access/xbase/xbase_testing.h"

namespace velnor::xbase_testing {

/// NAME, QTY, DAY, CITY, NOTE.
inline TableLayout peopleLayout()
{
    return layoutOf("T", {fieldDef("NAME", FieldType::Text, 12), numberDef("QTY", 10, 2),
                          fieldDef("DAY", FieldType::Date), fieldDef("CITY", FieldType::Text, 8),
                          fieldDef("NOTE", FieldType::Memo)});
}

inline RowId insertPerson(Store& store, const std::string& name, int quantity, int day)
{
    static const char* const kCities[] = {"Ulm", "Bonn", "Kiel", ""};
    const ValueView values[] = {text(name), ValueView::integer(quantity),
                                day ? ValueView::date(36000 + day) : ValueView::null(),
                                text(kCities[quantity & 3]), ValueView::null()};
    return store.writer("T")->insert(values);
}

inline std::vector<std::string> namesBy(Store& store, const std::string& index)
{
    const auto cursor = store.cursor("T", index);
    std::vector<std::string> names;
    for (bool on = cursor->first(); on; on = cursor->next())
        names.emplace_back(cursor->field(0).asText());
    return names;
}

/// An index of each kind of key.
inline std::vector<IndexDef> severalIndexes()
{
    std::vector<IndexDef> defs{indexDef("BYNAME", {"NAME"}), indexDef("BYQTY", {"QTY"}),
                               indexDef("BYDAY", {"DAY"}), indexDef("MIXED", {"CITY", "NAME"}),
                               indexDef("FALLS", {"QTY"})};
    defs[4].fields[0].descending = true;
    IndexDef upper = indexDef("UPPER", {});
    upper.expression = "UPPER(NAME)+DTOS(DAY)";
    upper.condition = ".NOT. DELETED() .AND. QTY>0";
    defs.push_back(upper);
    return defs;
}

inline void copyFile(FileSystem& from, FileSystem& to, std::string_view path)
{
    const auto in = from.open(path, OpenMode::Read);
    std::vector<std::uint8_t> bytes(in->size());
    in->readAt(0, bytes);
    to.open(path, OpenMode::Replace)->writeAt(0, bytes);
}

/// Puts `now` over every place in a file that has `was`.
inline void patch(FileSystem& files, std::string_view path, std::string_view was,
                  std::string_view now)
{
    const auto file = files.open(path, OpenMode::ReadWrite);
    std::vector<std::uint8_t> bytes(file->size());
    file->readAt(0, bytes);
    for (auto at = bytes.begin();; ++at) {
        at = std::search(at, bytes.end(), was.begin(), was.end());
        if (at == bytes.end())
            break;
        std::copy(now.begin(), now.end(), at);
    }
    file->writeAt(0, bytes);
}

/// Adds, changes, removes and seeks at random; looks at every index from time to time.
class RandomChanges {
public:
    RandomChanges(Store& store, int operations) : store_(&store), operations_(operations) {}

    void run()
    {
        for (int i = 1; i <= operations_ && !::testing::Test::HasFailure(); ++i) {
            one();
            if (i % 500 == 0)
                store_->commit();
            if (i % 4000 == 0)
                look();
            if (i % 3000 == 0)
                remake();
        }
        while (!live_.empty() && !::testing::Test::HasFailure()) {
            removeOne();
            if (live_.size() == 1000)
                look();
        }
        look();
        store_->commit();
    }

private:
    std::string name()
    {
        static const char* const kStems[] = {"Anna", "annA",      "Be",
                                             "",     "Zacharias", "M\xC3\xBCller"};
        std::string made = kStems[random_() % 6];
        if (random_() % 3)
            made += std::to_string(random_() % 900);
        return made;
    }
    int quantity() { return static_cast<int>(random_() % 4001) - 2000; }
    int day() { return static_cast<int>(random_() % 300); }

    void one()
    {
        const unsigned what = random_() % 10;
        if (what < 4 || live_.empty()) {
            live_.push_back(insertPerson(*store_, name(), quantity(), day()));
        } else if (what < 7) {
            const std::string to = name();
            const FieldChange changes[] = {{0, text(to)}, {1, ValueView::integer(quantity())}};
            store_->writer("T")->update(live_[random_() % live_.size()],
                                        std::span(changes, 1 + random_() % 2));
        } else if (what < 8) {
            removeOne();
        } else {
            seekOne();
        }
    }

    void removeOne()
    {
        std::swap(live_[random_() % live_.size()], live_.back());
        store_->writer("T")->remove(live_.back());
        live_.pop_back();
    }

    void seekOne()
    {
        const RowId row = live_[random_() % live_.size()];
        const auto plain = store_->cursor("T", std::nullopt);
        ASSERT_TRUE(plain->moveTo(row));
        const bool byName = random_() % 2;
        const auto cursor = store_->cursor("T", byName ? "BYNAME" : "BYQTY");
        const ValueView key = plain->field(byName ? 0 : 1);
        ASSERT_TRUE(cursor->seek(Comparison::Equal, std::span(&key, 1)));
        EXPECT_EQ(shown(cursor->field(byName ? 0 : 1)), shown(key));
    }

    /// One index goes and comes again.
    void remake()
    {
        const std::vector<IndexDef> all = store_->layout("T").indexes;
        const IndexDef& def = all[random_() % all.size()];
        store_->dropIndex("T", def.name);
        store_->addIndex("T", def);
    }

    void look()
    {
        EXPECT_EQ(faultsOf(*store_, "T"), std::vector<std::string>{});
        const auto cursor = store_->cursor("T", "BYQTY");
        std::size_t seen = 0;
        double before = -1e9;
        for (bool on = cursor->first(); on; on = cursor->next(), ++seen) {
            const double now = realOf(cursor->field(1)).value_or(0);
            ASSERT_LE(before, now);
            before = now;
        }
        EXPECT_EQ(seen, live_.size());
        const auto falls = store_->cursor("T", "BYDAY");
        for (bool on = falls->last(); on; on = falls->previous())
            --seen;
        EXPECT_EQ(seen, 0u);
    }

    Store* store_;
    int operations_;
    std::mt19937 random_{12345};
    std::vector<RowId> live_;
};

}  // namespace velnor::xbase_testing
