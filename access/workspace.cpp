#include "access/workspace.h"

#include <memory>

#include "platform/host.h"

namespace velnor {

Workspace& workspace()
{
    static std::unique_ptr<Workspace> current;
    static const FileSystem* files = nullptr;
    if (!current || files != host().files) {
        files = host().files;
        current = std::make_unique<Workspace>(*host().files);
    }
    return *current;
}

}  // namespace velnor
