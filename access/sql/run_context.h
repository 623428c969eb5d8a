// access/sql/run_context.h - what all parts of one running statement share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>

#include "access/engine_error.h"

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
    std::uint32_t steps = 0;

    /// Once for each record looked at.
    void step()
    {
        if ((++steps & 0xFFF) == 0)
            stopIfCancelled();
    }
    void stopIfCancelled() const
    {
        if (options.cancelled && options.cancelled())
            throw EngineError(EngineErrorNumber::Cancelled, "The statement was stopped.");
    }
};

}  // namespace velnor::sql
