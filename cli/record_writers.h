// cli/record_writers.h - the records of a recordset written in a text form.
#pragma once

#include <string>
#include <string_view>

#include "access/engine.h"
#include "cli/output.h"

namespace velnor::cli {

/// The words of --format that writeRecords() takes, for help texts: "csv|json|...".
extern const std::string_view kTextFormats;
bool isTextFormat(std::string_view format);

/// All records from the current one on. `name` is the title of a page or the name of a table. Stops
/// at Ctrl-C with the engine's "cancelled". Gives the number of records.
std::int64_t writeRecords(Recordset& rows, std::string_view format, const std::string& name,
                          Output& output, Progress& progress);

}  // namespace velnor::cli
