// access/formats/paradox/companions.h - the files that belong to a table, found by their names.
//
// Nothing in a table names its indexes: the folder is the catalogue.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace velnor::paradox {

inline constexpr std::string_view kTableExtension = "DB";

enum class CompanionKind { PrimaryTree, LongValues, Index, IndexTree, Checks, Settings };

struct Companion {
    CompanionKind kind;
    std::string extension;  ///< upper case: "PX", "MB", "X02", "YG0", "VAL"
    std::string path;       ///< as spelled on the disk
};

/// What an extension stands for beside a table; nothing when it does not belong to one.
std::optional<CompanionKind> companionKind(std::string_view extension);
/// Every companion that lies beside the table, sorted by extension.
std::vector<Companion> companionsOf(FileSystem& files, std::string_view tablePath);
/// The one with this extension; null when there is none.
const Companion* findCompanion(const std::vector<Companion>& all, std::string_view extension);

/// "X0A" for a table's tenth field, "XG3"; of its tree with 'Y'.
std::string singleExtension(char letter, unsigned field);
std::string groupExtension(char letter, unsigned number);

}  // namespace velnor::paradox
