// access/formats/paradox/check_report.h - the findings of a check, at most a few of one sort.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "access/formats/driver.h"

namespace velnor::paradox {

class CheckReport {
public:
    explicit CheckReport(const ProblemSink& sink) : sink_(sink) {}

    void fault(const std::string& where, const std::string& text, const char* sort = nullptr)
    {
        say(where, text, sort, false);
    }
    void note(const std::string& where, const std::string& text, const char* sort = nullptr)
    {
        say(where, text, sort, true);
    }

private:
    static constexpr int kMostOfOneSort = 8;

    void say(const std::string& where, const std::string& text, const char* sort, bool harmless)
    {
        if (sort && ++said_[{where, sort}] > kMostOfOneSort)
            return;
        sink_({where, text, harmless});
    }

    const ProblemSink& sink_;
    std::map<std::pair<std::string, std::string>, int> said_;
};

}  // namespace velnor::paradox
