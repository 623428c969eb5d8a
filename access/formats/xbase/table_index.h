// access/formats/xbase/table_index.h - one index of an open table: its tree, its keys, and what is
// still to be entered.
//
// 1. New entries are collected and go into the tree together, sorted: before the tree is read,
// changed otherwise, or committed.
// 2. An index is walked once before the first change to it: what is not in order, or does not tell
// of every record, is never written to. For a search alone in a large table a sample is enough: the
// last records, which a program that knows no indexes adds, and some of the others.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "access/formats/xbase/entry_list.h"
#include "access/formats/xbase/index_key.h"
#include "access/formats/xbase/index_tag.h"
#include "access/formats/xbase/index_tree.h"
#include "access/layout.h"

namespace velnor::xbase {

class DbfTable;
using RecordImage = std::span<const std::uint8_t>;

class TableIndex {
public:
    /// `keys`: nothing when the expression is not understood; then `tag.trouble` says why.
    TableIndex(DbfTable& table, IndexTag tag, std::unique_ptr<NodeStore> nodes,
               std::optional<KeyMaker> keys);

    const IndexTag& tag() const { return tag_; }
    const KeyMaker* keys() const { return keys_ ? &*keys_ : nullptr; }
    const std::vector<std::size_t>& fields() const { return fields_; }
    NodeStore& nodes() { return *nodes_; }
    IndexDef definition() const;
    /// The tree rises in the file, the index falls.
    bool walksBackwards() const { return tag_.descending && !(keys_ && keys_->form().turned); }
    /// Walks the index if that was not done; why it cannot be kept right, empty when it can.
    const std::string& whyNotKept();
    /// Why it cannot be searched; looks at a sample of the entries only (2.).
    const std::string& whyNotSearched();
    /// Whether build() gives what the file had: not for keys that nobody here makes, or in an
    /// order of another kind.
    bool canBeBuilt();

    /// Throws 3022, and 3800 for a stale index; changes nothing.
    void before(std::uint32_t number, RecordImage oldImage, RecordImage newImage);
    void after(std::uint32_t number);
    bool caresForDeletion() const { return keys_ && keys_->caresForDeletion(); }
    /// 1. `relieve` is called from time to time where many entries go in.
    void flush(const std::function<void()>& relieve = {});
    bool changed() const { return changed_; }
    void committed() { changed_ = false; }
    std::size_t pendingBytes() const { return pending_.bytes(); }

    /// Puts an entry for each record of the table in place of all it has. 3022 for equal keys.
    /// `tolerant`: equal keys are no error; gives how many records are left out for them.
    std::uint64_t build(bool tolerant = false);
    void drop() { tree_.drop(); }

private:
    void verify();
    bool samplesFit();
    bool tellsOf(std::uint32_t number, std::span<std::uint8_t> image);
    class FirstOfEqual;
    /// A deleted record makes room for another with its key.
    bool isDeleted(std::uint32_t number);
    std::uint32_t keyLength() const { return tag_.keyLength; }

    DbfTable& table_;
    IndexTag tag_;
    std::unique_ptr<NodeStore> nodes_;
    IndexTree tree_;
    std::optional<KeyMaker> keys_;
    std::vector<std::size_t> fields_;
    bool verified_ = false, sampled_ = false;
    bool otherOrder_ = false;
    bool changed_ = false;
    std::uint64_t entries_ = 0;
    EntryList pending_;
    std::array<std::uint8_t, kLongestKey> oldKey_{}, newKey_{};
    bool leaves_ = false, enters_ = false;  // of the change between before() and after()
    std::uint32_t replaced_ = 0;
};

}  // namespace velnor::xbase
