#include "access/formats/paradox/paradox_driver.h"

#include "access/formats/paradox/new_table.h"
#include "access/formats/paradox/paradox_store.h"

namespace velnor::paradox {
namespace {

constexpr std::string_view kWords[] = {"Paradox 5.x;", "Paradox 7.x;", "Paradox 4.x;",
                                       "Paradox 3.x;"};

FormatTraits makeTraits()
{
    FormatTraits traits;
    traits.folder = true;
    traits.maxFieldName = 25;
    traits.maxFields = 255;
    traits.maxText = 255;
    traits.emptyTextIsNull = true;
    return traits;
}

}  // namespace

std::span<const std::string_view> ParadoxDriver::connectWords() const
{
    return kWords;
}

const FormatTraits& ParadoxDriver::traits(std::string_view) const
{
    static const FormatTraits traits = makeTraits();
    return traits;
}

std::unique_ptr<Store> ParadoxDriver::open(FileSystem& files, const OpenRequest& request) const
{
    const NewTableForm* form = formOfConnectWord(request.connectWord);
    if (!form)
        throw EngineError(EngineErrorNumber::NoDriver,
                          "There is no driver for \"" + request.connectWord + "\".");
    needFolder(files, request.name);
    return std::make_unique<ParadoxStore>(files, request, *form);
}

}  // namespace velnor::paradox
