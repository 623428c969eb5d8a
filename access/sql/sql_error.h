// access/sql/sql_error.h - errors of statements: the engine's number, and words that say where.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "access/engine_error.h"

namespace velnor::sql {

/// "What, at character N, near 'xyz'."; N counts from 1, in bytes of the statement's UTF-8.
[[noreturn]] void fail(EngineErrorNumber number, const std::string& what,
                       std::string_view statement, std::size_t at);

/// Errors cross the statement machine as its message: number and words in one text, and back.
/// `otherwise` for a text that is no such message.
std::string errorMessage(EngineErrorNumber number, std::string_view words);
EngineError errorOfMessage(const char* message, const EngineError& otherwise);

}  // namespace velnor::sql
