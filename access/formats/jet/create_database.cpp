#include "access/formats/jet/jet_driver.h"

namespace velnor::jet {

void JetDriver::create(FileSystem& files, const CreateRequest& request) const
{
    Driver::create(files, request);
}

}  // namespace velnor::jet
