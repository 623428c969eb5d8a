#include "cli/result_json.h"

#include "cli/output.h"

namespace velnor::cli {

void ResultJson::begin(std::string_view name)
{
    made_ += made_.empty() ? "{" : ",";
    appendJsonString(made_, name);
    made_ += ':';
}

ResultJson& ResultJson::text(std::string_view name, std::string_view value)
{
    begin(name);
    appendJsonString(made_, value);
    return *this;
}

ResultJson& ResultJson::texts(std::string_view name, const std::vector<std::string>& values)
{
    begin(name);
    made_ += '[';
    for (std::size_t i = 0; i < values.size(); ++i) {
        made_ += i ? "," : "";
        appendJsonString(made_, values[i]);
    }
    made_ += ']';
    return *this;
}

ResultJson& ResultJson::number(std::string_view name, std::int64_t value)
{
    begin(name);
    made_ += std::to_string(value);
    return *this;
}

ResultJson& ResultJson::truth(std::string_view name, bool value)
{
    begin(name);
    made_ += value ? "true" : "false";
    return *this;
}

void ResultJson::print(Context& context) const
{
    Output output(context.files, "");
    output.buffer() += made_ + "}\n";
    output.finish();
}

}  // namespace velnor::cli
