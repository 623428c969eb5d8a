// access/formats/jet/record_keys.h - the index entries of a record that is changed: the keys that it
// had and will have, and the way from the one to the other.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "access/formats/jet/jet_table.h"

namespace velnor::jet {

class RecordKeys {
public:
    explicit RecordKeys(JetTable& table);

    /// Fields that are part of a key.
    const std::vector<int>& fields() const { return fields_; }
    std::size_t indexCount() const { return indexes_.size(); }
    /// What the entries take that wait in the indexes.
    std::uint64_t waitingBytes() const;

    /// The record is new.
    void startEmpty();
    /// The record had the keys of these values; unless prepare() follows, it goes.
    void start(std::span<const ValueView> values);
    /// The record will have the keys of these values. 3022 when another than `self` has one where
    /// it may not, 3314 or 3058 for a Null where there must be none. Changes nothing.
    void prepare(std::span<const ValueView> values, RowPointer self);
    /// Adds the entries that are new; `later`: those that may, when somebody looks.
    void insert(RowPointer home, bool later);
    void undoInsert(RowPointer home);
    /// Removes the entries that are no more.
    void eraseOld(RowPointer home);

private:
    struct Part {
        OpenIndex* open = nullptr;
        int real = 0;  // its definition is looked up: it is read anew after a failed commit
        std::unique_ptr<KeyBuilder> keys;
        std::vector<std::uint8_t> oldKey, newKey;
        bool hadOld = false, hasNew = false;  // an entry stands, will stand
        bool changes = false;
        bool canWait = false;  // no other record's key can be the same, or it may be
        bool inserted = false;
    };
    const RealIndex& definition(const Part& part) const
    {
        return table_.def().realIndexes.at(static_cast<std::size_t>(part.real));
    }
    void build(Part& part, std::span<const ValueView> values, std::vector<std::uint8_t>& key,
               bool& has);
    void refuseDuplicate(Part& part, RowPointer self);
    static void eraseByPlace(IndexTree& tree, RowPointer home);

    JetTable& table_;
    std::vector<Part> indexes_;
    std::vector<int> fields_;
    std::vector<ValueView> keyValues_;
};

}  // namespace velnor::jet
