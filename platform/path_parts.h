// platform/path_parts.h - a path "C:\folder\file.ext" cut into its root and its parts. No disk.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/run_error.h"

namespace velnor {

/// A path, cut. Doubled backslashes and "." are gone, ".." has taken its part away; a forward slash
/// counts as a backslash. The parts are views into the text that was cut, and live as long as it.
struct PathParts {
    std::string root;  ///< "C:" or "\\server\share"
    std::vector<std::string_view> parts;

    /// The path in its one form: "C:\folder\file.ext", "C:" for the root.
    std::string text() const;
};

/// Cuts a path. 52 for what is none: no drive and no share, or a zero byte in it.
PathParts cutPath(std::string_view path);

/// True when the path lies in `front` or is it: same root and first parts, blind to case.
bool startsWith(const PathParts& path, const PathParts& front);

/// An error of a path, in words: what failed, then the path.
RunError pathError(RunErrorNumber number, std::string_view path);

}  // namespace velnor
