// tests/access/jet/index_testing.h - a space of pages in memory for index trees, and a judge of
// their structure.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "access/engine_error.h"
#include "access/formats/jet/jet_index.h"
#include "access/storage/byte_reader.h"
#include "access/storage/page_file.h"
#include "platform/memory_file_system.h"

namespace velnor::jet {

class TestSpace final : public PageSpace {
public:
    explicit TestSpace(const JetFormat& format) : format_(format), set_(open())
    {
        for (int i = 0; i < 7; ++i)
            set_.main().append();
    }
    const JetFormat& format() const override { return format_; }
    std::uint32_t pageCount() const override
    {
        return const_cast<FileSet&>(set_).main().pageCount();
    }
    PageRef page(std::uint32_t number) override { return set_.main().read(number); }
    std::uint32_t allocate() override
    {
        if (allocationsLeft == 0)
            throw EngineError(EngineErrorNumber::DatabaseFull, "full");
        --allocationsLeft;
        if (free_.empty())
            return set_.main().append().number();
        const std::uint32_t page = *free_.begin();
        free_.erase(free_.begin());
        PageRef held = this->page(page);
        std::fill_n(held.edit(), format_.pageSize, std::uint8_t{0});
        return page;
    }
    void release(std::uint32_t number, std::uint8_t typeByte) override
    {
        EXPECT_TRUE(free_.insert(number).second) << "page " << number << " freed twice";
        page(number).edit()[0] = typeByte;
    }
    bool isFree(std::uint32_t page) const { return free_.contains(page); }
    std::size_t freePages() const { return free_.size(); }

    std::unique_ptr<File> scratch() override
    {
        ++scratchFiles;
        return hasScratch ? files_.open("C:\\sort", OpenMode::Replace) : nullptr;
    }
    MemoryFileSystem& files() { return files_; }

    int allocationsLeft = 1 << 30;
    int scratchFiles = 0;
    bool hasScratch = true;

private:
    FileSet open()
    {
        files_.put("C:\\index.mdb", {});
        PageFileOptions options;
        options.pageSize = format_.pageSize;
        return FileSet(files_, "C:\\index.mdb", options, false);
    }
    const JetFormat& format_;
    MemoryFileSystem files_;
    FileSet set_;
    std::set<std::uint32_t> free_;
};

class TestMap final : public PageMap {
public:
    bool contains(std::uint32_t page) override { return pages.contains(page); }
    void add(std::uint32_t page) override { EXPECT_TRUE(pages.insert(page).second); }
    void remove(std::uint32_t page) override { EXPECT_EQ(pages.erase(page), 1u); }
    std::uint32_t next(std::uint32_t from) override
    {
        const auto at = pages.lower_bound(from);
        return at == pages.end() ? 0 : *at;
    }
    std::set<std::uint32_t> pages;
};

using Entry = std::vector<std::uint8_t>;  // key and place

/// Key first, then place: a key that begins another comes before it.
struct EntryLess {
    bool operator()(const Entry& a, const Entry& b) const
    {
        const auto parts = [](const Entry& e) {
            return std::pair(Entry(e.begin(), e.end() - 4), Entry(e.end() - 4, e.end()));
        };
        return parts(a) < parts(b);
    }
};

/// A tree in a space of its own, beside the set that it must equal.
struct TestTree {
    static constexpr std::uint32_t kOwner = 5;
    explicit TestTree(const JetFormat& format) : space(format), root(space.allocate())
    {
        map.add(root);
        tree.emplace(space, &map, root, kOwner);
        tree->clearRoot();
    }
    TestSpace space;
    TestMap map;
    std::uint32_t root;
    std::optional<IndexTree> tree;
    std::set<Entry, EntryLess> expected;

    static Entry entry(KeyView key, RowPointer row)
    {
        Entry e(key.begin(), key.end());
        const std::uint32_t word = row.word();
        for (int shift = 24; shift >= 0; shift -= 8)
            e.push_back(static_cast<std::uint8_t>(word >> shift));
        return e;
    }
    void insert(KeyView key, RowPointer row)
    {
        EXPECT_EQ(tree->insert(key, row), expected.insert(entry(key, row)).second);
    }
    void erase(KeyView key, RowPointer row)
    {
        EXPECT_EQ(tree->erase(key, row), expected.erase(entry(key, row)) == 1);
    }
    void verify();

private:
    struct Seen {
        std::vector<Entry> entries;
        std::vector<std::uint32_t> leaves;
        std::set<std::uint32_t> pages;
    };
    void visit(std::uint32_t number, int level, Seen& seen, Entry low, Entry high);
    void verifyWalks(const Seen& seen);
};

inline void TestTree::visit(std::uint32_t number, int level, Seen& seen, Entry low, Entry high)
{
    ASSERT_TRUE(seen.pages.insert(number).second) << "page twice in the tree";
    PageRef page = space.page(number);
    IndexPageView view;
    view.open(space.format(), page.data(), number, kOwner);
    if (level >= 0) {
        ASSERT_EQ(view.level(), level);
    }
    ASSERT_EQ(view.leaf(), view.level() == 0);
    const auto& layout = space.format().indexPage;
    ASSERT_EQ(loadLE<std::uint16_t>(page.data() + layout.freeBytes), view.room());
    if (view.leaf()) {
        seen.leaves.push_back(number);
        ASSERT_TRUE(view.count() > 0 || number == root);
    }
    std::vector<std::uint32_t> children;
    std::vector<Entry> bounds;
    for (int i = 0; i < view.count(); ++i) {
        Entry e;
        view.entry(i, e);
        if (!view.leaf()) {
            children.push_back(view.child(i));
            e.resize(e.size() - 4);
        }
        const Entry& before = bounds.empty() ? low : bounds.back();
        ASSERT_TRUE(before.empty() || EntryLess{}(before, e));
        ASSERT_TRUE(high.empty() || !EntryLess{}(high, e));
        bounds.push_back(e);
        if (view.leaf())
            seen.entries.push_back(e);
    }
    if (view.leaf())
        return;
    children.push_back(view.tail());
    bounds.push_back(high);
    const int below = view.level() - 1;
    for (std::size_t i = 0; i < children.size(); ++i)
        visit(children[i], below, seen, i == 0 ? low : bounds[i - 1], bounds[i]);
}

inline void TestTree::verify()
{
    Seen seen;
    visit(root, -1, seen, {}, {});
    ASSERT_EQ(seen.entries, std::vector<Entry>(expected.begin(), expected.end()));
    ASSERT_EQ(seen.pages, map.pages);
    for (const std::uint32_t page : seen.pages)
        ASSERT_FALSE(space.isFree(page));
    std::uint32_t previous = 0;
    for (std::size_t i = 0; i < seen.leaves.size(); ++i) {
        PageRef page = space.page(seen.leaves[i]);
        IndexPageView view;
        view.open(space.format(), page.data(), seen.leaves[i], kOwner);
        ASSERT_EQ(view.previous(), previous);
        ASSERT_EQ(view.next(), i + 1 < seen.leaves.size() ? seen.leaves[i + 1] : 0);
        previous = seen.leaves[i];
    }
    verifyWalks(seen);
}

inline void TestTree::verifyWalks(const Seen& seen)
{
    IndexWalker walker(*tree);
    std::size_t n = 0;
    for (bool there = walker.first(); there; there = walker.next(), ++n)
        ASSERT_EQ(entry(walker.key(), walker.row()), seen.entries.at(n));
    ASSERT_EQ(n, seen.entries.size());
    for (bool there = walker.last(); there; there = walker.previous())
        ASSERT_EQ(entry(walker.key(), walker.row()), seen.entries.at(--n));
    ASSERT_EQ(n, 0u);
}

}  // namespace velnor::jet
