// access/formats/drivers.cpp - the table of drivers.

#include "access/formats/driver.h"

#include "access/formats/excel/excel_driver.h"
#include "access/formats/jet/jet_driver.h"
#include "access/formats/lotus/lotus_driver.h"
#include "access/formats/paradox/paradox_driver.h"
#include "access/formats/text/text_driver.h"
#include "access/formats/xbase/xbase_driver.h"
#include "platform/paths.h"

namespace velnor {
namespace {

std::vector<const Driver*>& addedDrivers()
{
    static std::vector<const Driver*> added;
    return added;
}

std::span<const Driver* const> builtInDrivers()
{
    static const jet::JetDriver jetDriver;
    static const xbase::XbaseDriver xbaseDriver;
    static const text::TextDriver textDriver;
    static const paradox::ParadoxDriver paradoxDriver;
    static const excel::ExcelDriver excelDriver;
    static const lotus::LotusDriver lotusDriver;
    static const Driver* const drivers[] = {&jetDriver,     &xbaseDriver, &textDriver,
                                            &paradoxDriver, &excelDriver, &lotusDriver};
    return drivers;
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
    for (const Driver* driver : builtInDrivers())
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
