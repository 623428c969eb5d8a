// access/sql/statement.h - a translated statement while it runs: one record of the answer after the
// other.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "access/sql/run_context.h"
#include "access/sql/translation.h"

namespace velnor::sql {

class Statement {
public:
    enum class Gives : std::uint8_t {
        Values,   ///< the columns of the translation
        Records,  ///< the names of records alone; only where the translation has recordsSql
    };
    Statement(const Translation& translation, Gives gives, RunOptions options);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Goes to the next record of the answer. 3059 when it was cancelled; errors of the tables and
    /// of functions come out of here.
    bool step();
    /// Column n of the record, in the kind of its field; a text is good until the next step, or
    /// until the column is asked for again.
    ValueView value(int n);
    /// The first out.size() columns at once.
    void values(std::span<ValueView> out);
    RowId record() const;

private:
    struct Machine;
    std::unique_ptr<Machine> machine_;
};

}  // namespace velnor::sql
