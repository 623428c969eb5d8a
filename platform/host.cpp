#include "platform/host.h"

namespace velnor {
namespace {

/// For programs without a desktop: nothing opens, nothing goes to a trash.
class NoDesktop final : public Desktop {
public:
    bool openWith(std::string_view) override { return false; }
    bool moveToTrash(std::string_view) override { return false; }
    std::string computerName() override { return {}; }
    VolumeInfo volume(std::string_view) override { return {}; }
};

struct DefaultHost {
    HostPaths paths;
    std::unique_ptr<FileSystem> files = makeLinuxFileSystem(paths);
    NoDesktop desktop;
    Host host{files.get(), &systemClock(), &desktop, &paths, paths.toProgram(".")};
};

Host* replacementHost = nullptr;

}  // namespace

Host& host()
{
    if (replacementHost)
        return *replacementHost;
    static DefaultHost standard;
    return standard.host;
}

void setHost(Host* replacement)
{
    replacementHost = replacement;
}

}  // namespace velnor
