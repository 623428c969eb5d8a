// cli/new_table.h - files and tables that do not exist yet.
#pragma once

#include "access/layout.h"
#include "cli/source.h"

namespace velnor::cli {

/// The words of --as.
inline constexpr const char* kAsWords =
    "access2000, access97; dbase5, dbase4, dbase3, foxpro3, foxpro2; excel97, excel95";

struct Target {
    Source source;
    bool fileExists = false;
    int createOptions = 0;  ///< 32: an Access 97 file
};

/// Where a command writes to; reads --as.
Target targetOf(Context& context, const std::string& word, const Arguments& arguments);
/// Opens it for writing; an Access file is made first when it is not there.
Database openTarget(Context& context, Target& target);
/// Whether the target has the table already.
bool hasTable(Context& context, Database& database, const Target& target);
/// Makes a table with its fields and indexes, through the engine's steps.
void makeTable(Database& database, const Target& target, const TableLayout& layout);
/// The same in a target that openTarget opened: a file that was made for the table goes with it
/// when the table cannot be made.
void makeTargetTable(Context& context, Database& database, const Target& target,
                     const TableLayout& layout);

}  // namespace velnor::cli
