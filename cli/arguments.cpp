#include "cli/arguments.h"

#include <algorithm>

namespace velnor::cli {

Arguments::Arguments(std::span<const OptionSpec> options, std::span<char* const> given)
{
    bool onlyWords = false;
    for (std::size_t i = 0; i < given.size(); ++i) {
        const std::string_view word = given[i];
        if (onlyWords || word.size() < 2 || word.substr(0, 2) != "--") {
            positional_.emplace_back(word);
            continue;
        }
        if (word == "--") {
            onlyWords = true;
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string_view name = word.substr(0, equals);
        const auto spec = std::find_if(options.begin(), options.end(),
                                       [&](const OptionSpec& o) { return o.name == name; });
        if (spec == options.end())
            throw UsageError("unknown option " + std::string(name));
        if (has(name) && !spec->many)
            throw UsageError(std::string(name) + " was given twice");
        Given entry{spec->name, {}};
        if (!spec->value.empty()) {
            if (equals != std::string_view::npos)
                entry.value = word.substr(equals + 1);
            else if (++i < given.size())
                entry.value = given[i];
            else
                throw UsageError(std::string(name) + " needs a value");
        } else if (equals != std::string_view::npos) {
            throw UsageError(std::string(name) + " takes no value");
        }
        options_.push_back(std::move(entry));
    }
}

bool Arguments::has(std::string_view option) const
{
    return std::any_of(options_.begin(), options_.end(),
                       [&](const Given& g) { return g.name == option; });
}

std::string Arguments::value(std::string_view option, std::string_view otherwise) const
{
    for (const Given& g : options_)
        if (g.name == option)
            return g.value;
    return std::string(otherwise);
}

std::vector<std::string> Arguments::values(std::string_view option) const
{
    std::vector<std::string> all;
    for (const Given& g : options_)
        if (g.name == option)
            all.push_back(g.value);
    return all;
}

void Arguments::expectPositional(std::size_t least, std::size_t most) const
{
    if (positional_.size() < least)
        throw UsageError("too few arguments");
    if (positional_.size() > most)
        throw UsageError("too many arguments: " + positional_[most]);
}

}  // namespace velnor::cli
