// access/formats/drivers.cpp - the table of drivers.

#include "access/formats/driver.h"

#include "platform/paths.h"

namespace velnor {
namespace {

std::vector<const Driver*>& addedDrivers()
{
    static std::vector<const Driver*> added;
    return added;
}

bool takes(const Driver& driver, std::string_view connectWord)
{
    for (const std::string_view word : driver.connectWords())
        if (paths::sameName(word, connectWord))
            return true;
    return false;
}

}  // namespace

const Driver* findDriver(std::string_view connectWord)
{
    for (const Driver* driver : addedDrivers())
        if (takes(*driver, connectWord))
            return driver;
    return nullptr;
}

DriverAdded::DriverAdded(const Driver& driver) : driver_(driver)
{
    addedDrivers().insert(addedDrivers().begin(), &driver);
}

DriverAdded::~DriverAdded()
{
    std::erase(addedDrivers(), &driver_);
}

}  // namespace velnor
