// fuzz/xbase_exercise.h - everything that people do with a table, on whatever files stand in
// memory.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "platform/memory_file_system.h"

namespace velnor::fuzzing {

/// Opens "C:\T.DBF" by a dBASE and a FoxPro word: reads every field forward and back, seeks,
/// checks, then adds, changes and removes records. Errors of the engine are answers; anything else
/// ends the program.
void exerciseTable(MemoryFileSystem& files);

/// A table with this version byte whose records point to memo blocks 1 to 24 and to some that
/// cannot be.
void putMemoTable(MemoryFileSystem& files, std::uint8_t version);

}  // namespace velnor::fuzzing
