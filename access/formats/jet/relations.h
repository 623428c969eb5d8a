// access/formats/jet/relations.h - what the enforced relationships of a table ask of its changes.
//
// Nothing is carried on to other tables: a change that a cascade would have to follow is refused,
// as is one that would leave a child record without its parent. What touches no relationship is
// allowed.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "access/formats/jet/jet_table.h"
#include "access/value.h"

namespace velnor::jet {

/// The table whose definition starts on a page; null when there is none.
using TableByPage = std::function<std::shared_ptr<JetTable>(PageNumber)>;

class Relations {
public:
    Relations(JetTable& table, const TableByPage& tables);

    bool any() const { return !ends_.empty(); }
    /// `value` gives a record's value by field. 3251 when the parent record is not there.
    void checkInsert(const std::function<ValueView(int)>& value);
    /// 3251 when another table's records refer to this one.
    void checkRemove(const std::function<ValueView(int)>& value);
    /// Both, for those relationships whose fields change.
    void checkUpdate(const std::function<ValueView(int)>& before,
                     const std::function<ValueView(int)>& after);

private:
    struct End {
        bool parent = false;
        std::string name;
        std::vector<int> fields;  // of this table, in key order
        std::shared_ptr<JetTable> other;
        int otherIndex = -1;  // real index of the other table; -1 when it cannot be found
        std::unique_ptr<KeyBuilder> here, there;
    };
    bool otherHas(End& end, const std::function<ValueView(int)>& value);
    bool changes(End& end, const std::function<ValueView(int)>& before,
                 const std::function<ValueView(int)>& after);
    [[noreturn]] void refuse(const End& end, const char* why) const;

    JetTable& table_;
    std::vector<End> ends_;
    std::vector<ValueView> values_;
    std::vector<std::uint8_t> before_;
};

}  // namespace velnor::jet
