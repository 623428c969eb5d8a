#include "access/formats/sheet/sheet_options.h"

#include <charconv>
#include <optional>
#include <string>

#include "access/formats/driver.h"
#include "platform/paths.h"

namespace velnor::sheet {
namespace {

constexpr int kMostGuessRows = 16;

[[noreturn]] void wrong(std::string_view key, std::string_view value)
{
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      std::string(key) + " cannot be \"" + std::string(value) + "\".");
}

bool yesOrNo(std::string_view key, std::string_view value)
{
    for (const char* yes : {"yes", "true", "1"})
        if (paths::sameName(value, yes))
            return true;
    for (const char* no : {"no", "false", "0"})
        if (paths::sameName(value, no))
            return false;
    wrong(key, value);
}

int numberUpTo(std::string_view key, std::string_view value, int most)
{
    int n = -1;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), n);
    if (error != std::errc{} || end != value.data() + value.size() || n < 0 || n > most)
        wrong(key, value);
    return n;
}

}  // namespace

SheetOptions sheetOptions(std::string_view connectOptions)
{
    SheetOptions options;
    if (const auto value = connectOption(connectOptions, "HDR"))
        options.header = yesOrNo("HDR", *value);
    if (const auto value = connectOption(connectOptions, "IMEX"))
        options.mixedAsText = numberUpTo("IMEX", *value, 2) == 1;
    if (const auto value = connectOption(connectOptions, "TypeGuessRows"))
        options.guessRows = numberUpTo("TypeGuessRows", *value, kMostGuessRows);
    if (const auto value = connectOption(connectOptions, "cells"))
        options.cells = yesOrNo("cells", *value);
    return options;
}

}  // namespace velnor::sheet
