#include "access/formats/jet/jet_driver.h"

#include "access/formats/jet/jet_store.h"

namespace velnor::jet {

std::span<const std::string_view> JetDriver::connectWords() const
{
    // A connect string that begins with its password (";pwd=...") has the empty word.
    static constexpr std::string_view kWords[] = {"Access 2000;", "", ";", "MS Access;"};
    return kWords;
}

const FormatTraits& JetDriver::traits(std::string_view) const
{
    static constexpr FormatTraits kTraits{};
    return kTraits;
}

std::unique_ptr<Store> JetDriver::open(FileSystem& files, const OpenRequest& request) const
{
    return std::make_unique<JetStore>(files, request);
}

}  // namespace velnor::jet
