// access/formats/jet/whole_file.h - files that appear under their name only when they are whole.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "platform/file_system.h"

namespace velnor::jet {

/// Writes the first pages under a sibling's name, lets `fill` do the rest there, and renames it; a
/// file under `path` is replaced in that instant. When anything fails the sibling is removed, and
/// what stood under `path` still does. RunErrors come as EngineErrors: 3026, 3044, 3051.
void makeWholeFile(FileSystem& files, const std::string& path,
                   std::span<const std::uint8_t> firstPages,
                   const std::function<void(const std::string& sibling)>& fill);

/// A copy of a file's bytes, safe on the disk. 3026 when it has no room; nothing is left then.
void copyWholeFile(FileSystem& files, const std::string& from, const std::string& to);

}  // namespace velnor::jet
