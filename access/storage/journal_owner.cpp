#include "access/storage/journal_owner.h"

#include <unistd.h>

#include <fstream>
#include <sstream>

namespace velnor {

namespace {
constexpr std::size_t kLongestBootId = 64;

std::string firstLine(const std::string& file)
{
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return line;
}
}  // namespace

std::uint64_t JournalOwner::startTimeOf(std::uint32_t process)
{
    const std::string stat = firstLine("/proc/" + std::to_string(process) + "/stat");
    // The name of the program stands in round brackets and may hold blanks; 19 words lie between it
    // and the start time.
    const std::size_t name = stat.rfind(')');
    if (name == std::string::npos)
        return 0;
    std::istringstream words(stat.substr(name + 1));
    std::string word;
    for (int i = 0; i < 19; ++i)
        words >> word;
    std::uint64_t start = 0;
    words >> start;
    return start;
}

const JournalOwner& JournalOwner::thisProcess()
{
    thread_local JournalOwner owner;
    const auto process = static_cast<std::uint32_t>(getpid());
    if (owner.process != process) {  // the first time, or in a forked child
        owner.process = process;
        owner.startTime = startTimeOf(process);
        owner.bootId = firstLine("/proc/sys/kernel/random/boot_id").substr(0, kLongestBootId);
    }
    return owner;
}

bool JournalOwner::livesElsewhere() const
{
    const JournalOwner& self = thisProcess();
    return *this != self && bootId == self.bootId && startTime != 0 &&
           startTimeOf(process) == startTime;
}

}  // namespace velnor
