// fuzz/paradox_exercise.h - what the Paradox fuzzers do with a folder that holds the table T.
#pragma once

#include "platform/memory_file_system.h"

namespace velnor::fuzzing {

/// Opens the table, reads it by every index, checks it; then adds, changes and removes records, and
/// with `structure`, which takes long, fields.
void exerciseParadox(MemoryFileSystem& files, bool structure);

/// A sound table T with a key, a memo, two secondary indexes and some records.
void putParadoxFamily(MemoryFileSystem& files);

}  // namespace velnor::fuzzing
