// access/formats/jet/relations.h - what the enforced relationships of a table ask of its changes.
//
// A record of a child table needs its parent, unless a field of its key is Null. A parent that has
// children cannot go or change its key, unless the relationship carries the change on to them: then
// the changes that follow are handed out, for cascade.h to plan and make. What touches no
// relationship is allowed.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "access/formats/jet/jet_table.h"
#include "access/value.h"

namespace velnor::jet {

/// The table whose definition starts on a page; null when there is none.
using TableByPage = std::function<std::shared_ptr<JetTable>(PageNumber)>;
/// A record's value by field.
using FieldValue = std::function<ValueView(int)>;

/// A change of a child record that follows from one of its parent.
struct LinkedChange {
    PageNumber table = 0;   // page of its definition
    std::int32_t end = -1;  // number of the relationship's end there
    RowPointer row;
    bool remove = false;
    std::vector<std::pair<int, Value>> fields;  // new values, when it is not removed
};

class Relations {
public:
    Relations(JetTable& table, const TableByPage& tables);

    bool any() const { return !ends_.empty(); }
    /// To be called before a change: the structure of another table may have changed since.
    void refresh();
    /// 3201 when a parent record is not there.
    void checkInsert(const FieldValue& value);
    /// What must follow when the record `self` goes; 3200 when it must not.
    void followRemove(RowPointer self, const FieldValue& value, std::vector<LinkedChange>& out);
    /// New values for fields of the record itself: of one that is its own parent and gets another
    /// key. To be added to the change before followUpdate(); 3200 when the key must not change.
    void followOwnKey(const FieldValue& before, const FieldValue& after,
                      std::vector<std::pair<int, Value>>& out);
    /// The same when its fields change; 3201 as well. `asked`: the end through which this change
    /// came, whose parent changes likewise; -1 when none.
    void followUpdate(RowPointer self, const FieldValue& before, const FieldValue& after,
                      std::int32_t asked, std::vector<LinkedChange>& out);

private:
    static constexpr std::uint8_t kCascade = 1, kSetNull = 2;
    struct End {
        bool parent = false;
        std::string name;
        std::int32_t number = 0, otherNumber = -1;
        std::uint8_t updateRule = 0, deleteRule = 0;
        std::vector<int> fields;       // of this table, in key order
        std::vector<int> otherFields;  // of the other table
        PageNumber otherPage = 0;
        std::shared_ptr<JetTable> other;  // null for this table itself
        int otherIndex = -1;  // real index of the other table; -1 when it cannot be found
        std::unique_ptr<KeyBuilder> here, there;
    };
    void findEnds();
    JetTable& otherOf(const End& end) { return end.other ? *end.other : table_; }
    /// The key under which the other table has the records of this one; none for a Null in it.
    std::optional<KeyView> keyThere(End& end, const FieldValue& value);
    bool parentIsThere(End& end, const FieldValue& value);
    bool isOwnParent(End& end, const FieldValue& value, KeyView key);
    std::vector<RowPointer> children(End& end, RowPointer self, const FieldValue& value);
    bool changes(End& end, const FieldValue& before, const FieldValue& after);
    [[noreturn]] void refuse(const End& end, const char* why) const;
    [[noreturn]] void refuseParent(const End& end);
    [[noreturn]] void refuseChild(const End& end);

    JetTable& table_;
    TableByPage tables_;
    std::vector<End> ends_;
    std::vector<ValueView> values_;
    std::vector<std::uint8_t> before_;
};

}  // namespace velnor::jet
