// cli/arguments.h - the command line of one command: what it takes, its help, and what was given.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velnor::cli {

/// Wrong use: told on stderr, exit code 2.
class UsageError : public std::runtime_error {
    using runtime_error::runtime_error;
};

struct OptionSpec {
    std::string_view name;   ///< "--format"
    std::string_view value;  ///< "csv|json"; empty: a switch without a value
    std::string_view help;
    bool many = false;  ///< may be given more than once
};

class Arguments {
public:
    /// Takes what stands behind the command. "--name=value" and "--name value" are the same; "--"
    /// ends the options. Unknown options, missing values and repeats are UsageError.
    Arguments(std::span<const OptionSpec> options, std::span<char* const> given);

    const std::vector<std::string>& positional() const { return positional_; }
    bool has(std::string_view option) const;
    /// The value, or `otherwise` when the option was not given.
    std::string value(std::string_view option, std::string_view otherwise = {}) const;
    std::vector<std::string> values(std::string_view option) const;
    /// UsageError unless between `least` and `most` positional words were given.
    void expectPositional(std::size_t least, std::size_t most) const;

private:
    struct Given {
        std::string_view name;
        std::string value;
    };
    std::vector<Given> options_;
    std::vector<std::string> positional_;
};

}  // namespace velnor::cli
