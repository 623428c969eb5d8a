// cli/result_json.h - what a command did, as one JSON object on a line: for commands whose result
// is no data.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command.h"

namespace velnor::cli {

/// Members stand in the order in which they are added.
class ResultJson {
public:
    ResultJson& text(std::string_view name, std::string_view value);
    ResultJson& texts(std::string_view name, const std::vector<std::string>& values);
    ResultJson& number(std::string_view name, std::int64_t value);
    ResultJson& truth(std::string_view name, bool value);
    /// On standard output.
    void print(Context& context) const;

private:
    void begin(std::string_view name);
    std::string made_;
};

}  // namespace velnor::cli
