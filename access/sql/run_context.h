// access/sql/run_context.h - what all parts of one running statement share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>

#include "access/engine_error.h"
#include "access/sql/grouping.h"

namespace velnor::sql {

struct RunOptions {
    /// Bytes that a statement may keep of tables, and again as much for sorting; beyond it sorts
    /// and results go to temporary files.
    std::size_t memory = 64u << 20;
    /// Asked again and again while a statement runs; true ends it with 3059. May be empty.
    std::function<bool()> cancelled;
};

struct RunContext {
    RunOptions options;
    /// What a table threw while the statement machine was on the stack, where nothing may be
    /// thrown.
    std::exception_ptr failure;
    bool severalTables = false;
    bool groupsInMemory = true;  ///< until they were too many once
    /// The table gives groups in place of records.
    const Grouping* grouping = nullptr;

    /// Once for each record looked at.
    void step() { work(kStepWork); }
    /// For each value handed on: long texts are work, too.
    void workOn(std::size_t bytes) { work(bytes); }
    void stopIfCancelled() const
    {
        if (options.cancelled && options.cancelled())
            throw EngineError(EngineErrorNumber::Cancelled, "The statement was stopped.");
    }

private:
    static constexpr std::size_t kStepWork = 2048;  // as much as so many bytes of text
    static constexpr std::size_t kWorkBetweenQuestions = 1u << 20;
    std::size_t work_ = 0;

    void work(std::size_t amount)
    {
        if ((work_ += amount) < kWorkBetweenQuestions)
            return;
        work_ = 0;
        stopIfCancelled();
    }
};

}  // namespace velnor::sql
