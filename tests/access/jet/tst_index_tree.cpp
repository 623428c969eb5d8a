// Index trees of both page sizes against a plain sorted set.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "access/formats/jet/entry_run.h"
#include "access/formats/jet/index_builder.h"
#include "access/formats/jet/index_ordinals.h"
#include "tests/access/jet/index_testing.h"

namespace velnor::jet {
namespace {

using Key = std::vector<std::uint8_t>;

enum class Shape { Tiny, Number, SharedBeginning, Large, Mixed };

struct Keys {
    std::mt19937 random;
    Shape shape;

    Key next()
    {
        switch (shape) {
        case Shape::Tiny:
            return Key(1 + random() % 3, static_cast<std::uint8_t>(random() % 3));
        case Shape::Number:
            return number(random() % 5000);
        case Shape::SharedBeginning: {
            Key key(60, 0x55);
            const Key tail = number(random() % 5000);
            key.insert(key.end(), tail.begin(), tail.end());
            return key;
        }
        case Shape::Large: {
            Key key(400 + random() % 111, static_cast<std::uint8_t>(random() % 4));
            key[random() % 10] = static_cast<std::uint8_t>(random());
            return key;
        }
        default:
            const Shape shapes[] = {Shape::Tiny, Shape::Number, Shape::SharedBeginning,
                                    Shape::Large};
            shape = shapes[random() % 4];
            Key key = next();
            shape = Shape::Mixed;
            return key;
        }
    }
    RowPointer row()
    {
        return {1 + static_cast<std::uint32_t>(random() % 50),
                static_cast<std::uint8_t>(random() % 8)};
    }
    static Key number(std::uint32_t n)
    {
        return {0x7F, static_cast<std::uint8_t>(n >> 24), static_cast<std::uint8_t>(n >> 16),
                static_cast<std::uint8_t>(n >> 8), static_cast<std::uint8_t>(n)};
    }
};

struct Case {
    const JetFormat* format;
    Shape shape;
};

class RandomWork : public testing::TestWithParam<Case> {};

TEST_P(RandomWork, treeHoldsWhatASetHolds)
{
    TestTree t(*GetParam().format);
    Keys keys{std::mt19937(7), GetParam().shape};
    for (int round = 0; round < 8; ++round) {
        // Phases of growth and decay, so that pages split and vanish.
        const unsigned insertsInTen = round % 4 == 3 ? 1 : 7;
        for (int i = 0; i < 1000; ++i) {
            if (keys.random() % 10 < insertsInTen || t.expected.empty()) {
                t.insert(keys.next(), keys.row());
            } else {
                auto at = t.expected.lower_bound(TestTree::entry(keys.next(), keys.row()));
                if (at == t.expected.end())
                    at = t.expected.begin();
                const Entry e = *at;
                t.erase(KeyView(e).first(e.size() - 4),
                        RowPointer::fromWord(loadBE<std::uint32_t>(&e[e.size() - 4])));
            }
        }
        t.verify();
        if (HasFatalFailure())
            return;
    }
    while (!t.expected.empty()) {
        const Entry e = *t.expected.begin();
        t.erase(KeyView(e).first(e.size() - 4),
                RowPointer::fromWord(loadBE<std::uint32_t>(&e[e.size() - 4])));
    }
    t.verify();
    EXPECT_EQ(t.map.pages, std::set<std::uint32_t>{t.root}) << "an empty tree is its root alone";
}

/// Entries of appends wait in groups of any size, between looks of all kinds.
TEST_P(RandomWork, entriesThatWait_areThereForEveryLook)
{
    TestTree t(*GetParam().format);
    Keys keys{std::mt19937(17), GetParam().shape};
    const auto later = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const Key key = keys.next();
            const RowPointer row{100 + static_cast<PageNumber>(keys.random() % 100000), 0};
            if (t.expected.insert(TestTree::entry(key, row)).second)
                t.tree->insertLater(key, row);
        }
    };
    IndexWalker walker(*t.tree);
    IndexOrdinals ordinals(*t.tree);
    for (const int group : {1, 30, 700, 5, 60, 2000, 3, 400, 20, 1500}) {
        later(group);
        const Key key = keys.next();
        const auto from = t.expected.lower_bound(TestTree::entry(key, {}));
        ASSERT_EQ(walker.seek(key), from != t.expected.end());
        if (from != t.expected.end()) {
            ASSERT_EQ(TestTree::entry(walker.key(), walker.row()), *from);
            ASSERT_EQ(ordinals.of(walker), std::distance(t.expected.begin(), from));
        }
        later(2);
        t.insert(keys.next(), keys.row());
        later(1);
        const Entry e = *std::next(t.expected.begin(), keys.random() % t.expected.size());
        t.erase(KeyView(e).first(e.size() - 4),
                RowPointer::fromWord(loadBE<std::uint32_t>(&e[e.size() - 4])));
        later(group / 2);
        t.tree->settle();
        t.verify();
        if (HasFatalFailure())
            return;
        for (int i = 0; i < 20; ++i) {
            const auto n = static_cast<std::int64_t>(keys.random() % t.expected.size());
            ASSERT_TRUE(ordinals.moveTo(walker, n));
            ASSERT_EQ(TestTree::entry(walker.key(), walker.row()),
                      *std::next(t.expected.begin(), n));
            ASSERT_EQ(ordinals.of(walker), n);
        }
        ASSERT_FALSE(ordinals.moveTo(walker, static_cast<std::int64_t>(t.expected.size())));
        ASSERT_FALSE(ordinals.moveTo(walker, -1));
    }
    later(10);
    t.tree->clear();
    t.expected.clear();
    t.verify();
}

INSTANTIATE_TEST_SUITE_P(Shapes, RandomWork,
                         testing::Values(Case{&kJet3, Shape::Tiny}, Case{&kJet3, Shape::Number},
                                         Case{&kJet3, Shape::SharedBeginning},
                                         Case{&kJet3, Shape::Large}, Case{&kJet3, Shape::Mixed},
                                         Case{&kJet4, Shape::Tiny}, Case{&kJet4, Shape::Number},
                                         Case{&kJet4, Shape::SharedBeginning},
                                         Case{&kJet4, Shape::Large}, Case{&kJet4, Shape::Mixed}));

class BothVersions : public testing::TestWithParam<const JetFormat*> {};
INSTANTIATE_TEST_SUITE_P(Versions, BothVersions, testing::Values(&kJet3, &kJet4));

TEST_P(BothVersions, loadInKeyOrder_leavesFullPages)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 20000; ++n)
        t.insert(Keys::number(n), {1 + n / 50, static_cast<std::uint8_t>(n % 50)});
    t.verify();
    IndexPageView view;
    PageRef page = t.space.page(t.root);
    view.open(*GetParam(), page.data(), t.root, TestTree::kOwner);
    std::uint32_t number = t.root;
    while (!view.leaf()) {
        number = view.child(0);
        page = t.space.page(number);
        view.open(*GetParam(), page.data(), number, TestTree::kOwner);
    }
    EXPECT_LT(view.room(), 10u);
    EXPECT_GT(view.prefix(), 0u) << "a full leaf is packed";
}

TEST_P(BothVersions, builtTree_equalsItsEntries_andTakesInserts)
{
    for (const std::uint32_t count : {0u, 1u, 2u, 500u, 3000u, 20000u}) {
        TestTree t(*GetParam());
        for (std::uint32_t n = 0; n < 50; ++n)
            t.insert(Keys::number(n), {9, 9});
        t.expected.clear();
        std::uint32_t n = 0;
        Key key;
        const auto made = t.tree->build([&]() -> std::optional<IndexEntry> {
            if (n == count)
                return std::nullopt;
            key = Keys::number(n * 3);
            const RowPointer row{1 + n, 2};
            ++n;
            t.expected.insert(TestTree::entry(key, row));
            return IndexEntry{key, row};
        });
        EXPECT_EQ(made, count);
        t.verify();
        std::mt19937 random(3);
        for (int i = 0; i < 500; ++i)
            t.insert(Keys::number(random() % (count * 3 + 1)), {7, 7});
        t.verify();
    }
}

TEST_P(BothVersions, buildFromUnorderedEntries_isRefused_andLeavesTheOldTree)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 3000; ++n)
        t.insert(Keys::number(n), {9, 9});
    std::uint32_t n = 0;
    Key key;
    EXPECT_THROW(t.tree->build([&]() -> std::optional<IndexEntry> {
        key = Keys::number(n++ == 2000 ? 5 : n);
        return IndexEntry{key, {1, 1}};
    }),
                 EngineError);
    t.verify();
}

TEST_P(BothVersions, merge_addsSortedEntries_fewOrMany)
{
    for (const std::uint32_t fresh : {10u, 5000u}) {
        TestTree t(*GetParam());
        for (std::uint32_t n = 0; n < 4000; ++n)
            t.insert(Keys::number(n * 2), {1, 1});
        std::uint32_t n = 0;
        std::uint64_t isNew = 0;
        Key key;
        const auto added = t.tree->merge(fresh, [&]() -> std::optional<IndexEntry> {
            if (n == fresh)
                return std::nullopt;
            key = Keys::number(n++);
            isNew += t.expected.insert(TestTree::entry(key, {1, 1})).second;
            return IndexEntry{key, {1, 1}};
        });
        EXPECT_EQ(added, isNew);
        t.verify();
    }
}

TEST_P(BothVersions, fullFile_leavesTheTreeAsItWas)
{
    for (int allowed = 0; allowed < 4; ++allowed) {
        TestTree t(*GetParam());
        Keys keys{std::mt19937(11), Shape::Large};
        for (int i = 0; i < 200; ++i)
            t.insert(keys.next(), keys.row());
        t.space.allocationsLeft = allowed;
        bool refused = false;
        for (int i = 0; i < 200 && !refused; ++i) {
            const Key key = keys.next();
            const RowPointer row = keys.row();
            try {
                if (t.tree->insert(key, row))
                    t.expected.insert(TestTree::entry(key, row));
            } catch (const EngineError& error) {
                EXPECT_EQ(error.code(), EngineErrorNumber::DatabaseFull);
                refused = true;
            }
        }
        EXPECT_TRUE(refused);
        t.verify();
    }
}

TEST_P(BothVersions, entriesThatFindNoRoom_waitOn)
{
    for (const int group : {20, 600}) {
        TestTree t(*GetParam());
        Keys keys{std::mt19937(13), Shape::Large};
        for (int i = 0; i < 200; ++i)
            t.insert(keys.next(), keys.row());
        for (int i = 0; i < group; ++i) {
            const Key key = keys.next();
            const RowPointer row{1000 + static_cast<std::uint32_t>(i), 1};
            t.tree->insertLater(key, row);
            t.expected.insert(TestTree::entry(key, row));
        }
        t.space.allocationsLeft = 2;
        EXPECT_THROW(t.tree->settle(), EngineError);
        EXPECT_THROW(IndexWalker(*t.tree).first(), EngineError);
        t.space.allocationsLeft = 1 << 20;
        t.tree->settle();
        t.verify();
    }
}

TEST_P(BothVersions, keysBeyondAllOthers_areKnown)
{
    TestTree t(*GetParam());
    EXPECT_TRUE(t.tree->beyondAll(Keys::number(1)));
    for (std::uint32_t n = 0; n < 1000; n += 2) {
        EXPECT_TRUE(t.tree->beyondAll(Keys::number(n)));
        t.insert(Keys::number(n), {1, 1});
        EXPECT_FALSE(t.tree->beyondAll(Keys::number(n)));
        t.tree->insertLater(Keys::number(n + 1), {1, 1});
        t.expected.insert(TestTree::entry(Keys::number(n + 1), {1, 1}));
        EXPECT_FALSE(t.tree->beyondAll(Keys::number(n + 1)));
    }
    t.tree->settle();
    t.verify();
    t.tree->clear();
    EXPECT_TRUE(t.tree->beyondAll(Keys::number(1)));
    t.tree->insertLater(Keys::number(7), {1, 1});
    t.tree->invalidate();
    EXPECT_TRUE(t.tree->beyondAll(Keys::number(5))) << "what waited is forgotten";
    t.tree->insert(Keys::number(3), {1, 1});
    IndexTree again(t.space, &t.map, t.root, TestTree::kOwner);
    EXPECT_FALSE(again.beyondAll(Keys::number(3)));
    EXPECT_TRUE(again.beyondAll(Keys::number(4)));
}

TEST_P(BothVersions, newKeys_areCounted)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 100; ++n)
        t.insert(Keys::number(n % 10), {1 + n, 1});
    EXPECT_EQ(t.tree->takeNewKeys(), 10u);
    for (std::uint32_t n = 0; n < 60; ++n)
        t.tree->insertLater(Keys::number(n % 20), {500 + n, 1});
    t.tree->settle();
    EXPECT_EQ(t.tree->takeNewKeys(), 10u);
    for (std::uint32_t n = 0; n < 300; ++n)
        t.tree->insertLater(Keys::number(n % 30), {1000 + n, 1});
    t.tree->settle();
    EXPECT_EQ(t.tree->takeNewKeys(), 10u);
}

TEST(EntryRun, sortsEntriesOfSeveralBlocks)
{
    for (const Shape shape : {Shape::Number, Shape::Mixed, Shape::Tiny}) {
        Keys keys{std::mt19937(5), shape};
        TestSpace space(kJet4);
        space.hasScratch = shape != Shape::Tiny;
        EntryRun run(space, 1u << 20);
        std::vector<Entry> expected;
        const int count = shape == Shape::Mixed ? 20000 : 400000;
        for (int i = 0; i < count; ++i) {
            const Key key = keys.next();
            const RowPointer row{1 + static_cast<PageNumber>(keys.random() % 0xFFFFFE), 7};
            run.add(key, row);
            expected.push_back(TestTree::entry(key, row));
        }
        EXPECT_EQ(run.count(), expected.size());
        EXPECT_EQ(space.scratchFiles, 1) << "they do not fit into memory";
        EXPECT_EQ(run.full(), !space.hasScratch);
        std::sort(expected.begin(), expected.end(), EntryLess());
        for (int round = 0; round < 2; ++round) {  // it can be read again
            const auto sorted = run.sorted();
            for (const Entry& wanted : expected) {
                const auto entry = sorted();
                ASSERT_TRUE(entry && TestTree::entry(entry->key, entry->row) == wanted);
            }
            EXPECT_FALSE(sorted());
        }
        run.clear();
        EXPECT_TRUE(run.empty());
        EXPECT_FALSE(run.sorted()());
    }
}

TEST_P(BothVersions, unique_findsAnotherRecordUnderTheSameKey)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 2000; ++n)
        t.insert(Keys::number(n / 3), {1 + n, 4});
    EXPECT_EQ(t.tree->find(Keys::number(100)), (RowPointer{301, 4}));
    EXPECT_EQ(t.tree->otherWithKey(Keys::number(100), {301, 4}), (RowPointer{302, 4}));
    EXPECT_EQ(t.tree->find(Keys::number(9999)), std::nullopt);
    EXPECT_EQ(t.tree->find(Key{0x7F, 0}), std::nullopt) << "a beginning is not the key";
}

TEST_P(BothVersions, searches_standWhereAsked)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 3000; ++n)
        t.insert(Keys::number(n / 2 * 10), {1, static_cast<std::uint8_t>(n % 2)});
    IndexWalker w(*t.tree);
    const auto value = [&] { return loadBE<std::uint32_t>(w.key().data() + 1); };
    ASSERT_TRUE(w.seek(Keys::number(5005)));
    EXPECT_EQ(value(), 5010u);
    ASSERT_TRUE(w.seek(Keys::number(5010)));
    EXPECT_EQ(value(), 5010u);
    EXPECT_EQ(w.row().slot, 0);
    ASSERT_TRUE(w.seekPast(Keys::number(5010)));
    EXPECT_EQ(value(), 5020u);
    ASSERT_TRUE(w.seekBefore(Keys::number(5010)));
    EXPECT_EQ(value(), 5000u);
    EXPECT_EQ(w.row().slot, 1);
    ASSERT_TRUE(w.seekLast(Keys::number(5010)));
    EXPECT_EQ(value(), 5010u);
    EXPECT_EQ(w.row().slot, 1);
    EXPECT_FALSE(w.seek(Keys::number(14991)));
    ASSERT_TRUE(w.seekLast(Keys::number(99999)));
    EXPECT_EQ(value(), 14990u);
    EXPECT_FALSE(w.seekBefore(Keys::number(0)));
    ASSERT_TRUE(w.seek(Key{0x7F, 0, 0, 0x13})) << "a beginning finds the first that has it";
    EXPECT_EQ(value(), 0x1306u);
    ASSERT_TRUE(w.seekEntry(Keys::number(5010), {1, 1}));
    EXPECT_EQ(w.row().slot, 1);
}

TEST_P(BothVersions, walker_goesOn_whenTheTreeChangesUnderIt)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 2000; ++n)
        t.insert(Keys::number(n), {1, 1});
    IndexWalker w(*t.tree);
    std::uint32_t expected = 0;
    for (bool there = w.first(); there; there = w.next(), ++expected) {
        ASSERT_EQ(loadBE<std::uint32_t>(w.key().data() + 1), expected);
        t.erase(Keys::number(expected), {1, 1});
        t.insert(Keys::number(expected + 100000), {1, 1});
        if (expected == 3999)
            break;
        if (expected == 1999)
            expected = 99999;
        if (expected == 100500)
            break;
    }
    EXPECT_EQ(expected, 100500u);
    t.verify();

    ASSERT_TRUE(w.last());
    const std::uint32_t top = loadBE<std::uint32_t>(w.key().data() + 1);
    t.erase(Keys::number(top), {1, 1});
    ASSERT_TRUE(w.previous());
    EXPECT_EQ(loadBE<std::uint32_t>(w.key().data() + 1), top - 1);
}

TEST_P(BothVersions, leafThatFollowsItself_isAnErrorNotALoop)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 3000; ++n)
        t.insert(Keys::number(n), {1, 1});
    PageRef page = t.space.page(t.root);
    IndexPageView view;
    view.open(*GetParam(), page.data(), t.root, TestTree::kOwner);
    const std::uint32_t leaf = view.child(0);
    setNext(*GetParam(), t.space.page(leaf).edit(), leaf);
    IndexWalker w(*t.tree);
    ASSERT_TRUE(w.first());
    EXPECT_THROW(while (w.next()){}, EngineError);
}

TEST_P(BothVersions, nodeThatHoldsItself_isAnErrorNotALoop)
{
    TestTree t(*GetParam());
    for (std::uint32_t n = 0; n < 3000; ++n)
        t.insert(Keys::number(n), {1, 1});
    {
        PageRef page = t.space.page(t.root);
        storeLE(page.edit() + GetParam()->indexPage.tail, t.root);
    }
    IndexWalker w(*t.tree);
    EXPECT_THROW(w.last(), EngineError);
    EXPECT_THROW(w.seek(Keys::number(99999)), EngineError);
    EXPECT_THROW(t.tree->pages(), EngineError);
}

TEST_P(BothVersions, damagedPages_areErrors)
{
    std::mt19937 random(5);
    for (int round = 0; round < 80; ++round) {
        TestTree t(*GetParam());
        for (std::uint32_t n = 0; n < 400; ++n)
            t.tree->insert(Keys::number(n), {1, 1});
        for (int hit = 0; hit < 20; ++hit) {
            PageRef page =
                t.space.page(7 + static_cast<std::uint32_t>(random()) % (t.space.pageCount() - 7));
            page.edit()[random() % GetParam()->pageSize] ^=
                static_cast<std::uint8_t>(1u << random() % 8);
        }
        try {
            IndexWalker w(*t.tree);
            int steps = 0;
            for (bool there = w.first(); there; there = w.next())
                ASSERT_LT(++steps, 100000);
            for (std::uint32_t n = 0; n < 400; n += 7)
                w.seek(Keys::number(n));
            for (std::uint32_t n = 0; n < 400; n += 3)
                t.tree->erase(Keys::number(n), {1, 1});
            for (std::uint32_t n = 0; n < 400; n += 3)
                t.tree->insert(Keys::number(n), {1, 2});
        } catch (const EngineError&) {
            continue;
        }
    }
}

}  // namespace
}  // namespace velnor::jet
