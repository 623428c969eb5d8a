// cli/field_words.h - fields and indexes as words of the command line.
#pragma once

#include <string>
#include <string_view>

#include "access/layout.h"

namespace velnor::cli {

/// "Text", "Long", ...: the engine's names of its types; empty for None.
std::string fieldTypeWord(FieldType type);
/// NAME:TYPE[:SIZE][:required][:auto]; types are blind to case. UsageError when it is none.
FieldDef parseFieldWord(std::string_view word);
/// NAME:FIELD[ desc],FIELD...[:unique|:primary]. UsageError when it is none.
IndexDef parseIndexWord(std::string_view word);

}  // namespace velnor::cli
