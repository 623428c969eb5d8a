// cli/command.h - one command of velnor-cli: its words, its help, its work.
#pragma once

#include <span>
#include <string_view>

#include "access/engine.h"
#include "cli/arguments.h"

namespace velnor::cli {

/// Exit codes of the program.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;
inline constexpr int kDifferent = 3;  ///< diff: the tables are not the same

struct Context {
    FileSystem& files;
    Workspace& workspace;
};

struct Command {
    std::string_view name;
    std::string_view arguments;  ///< "FILE [TABLE]"
    std::string_view summary;    ///< one line
    std::string_view details;    ///< more lines, may be empty
    std::span<const OptionSpec> options;
    int (*run)(Context& context, const Arguments& arguments);
};

extern const Command kTables;
extern const Command kSchema;
extern const Command kInfo;
extern const Command kExport;
extern const Command kQuery;
extern const Command kDiff;
extern const Command kDeleteTable;
extern const Command kCopy;
extern const Command kConvert;
extern const Command kCreate;
extern const Command kCheck;
extern const Command kIndex;
extern const Command kCompact;
extern const Command kPassword;
extern const Command kRepair;

/// Every command, in the order of the help.
std::span<const Command* const> commands();

}  // namespace velnor::cli
