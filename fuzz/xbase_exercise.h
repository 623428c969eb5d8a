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

/// A table with fields A (C 10), N (N 10.2) and D, whose header tells of a production index.
void putIndexedTable(MemoryFileSystem& files, std::uint8_t version);

/// Walks and searches every index that "C:\T.DBF" has by any word, then adds, changes and removes
/// records, makes an index and drops it.
void exerciseIndexes(MemoryFileSystem& files);

}  // namespace velnor::fuzzing
