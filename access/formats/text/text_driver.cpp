#include "access/formats/text/text_driver.h"

#include "access/formats/text/text_store.h"

namespace velnor::text {
namespace {

constexpr std::string_view kWords[] = {"Text;"};

FormatTraits textTraits()
{
    FormatTraits traits;
    traits.folder = true;
    traits.cutFieldNames = true;
    traits.canDelete = false;
    return traits;
}

}  // namespace

std::span<const std::string_view> TextDriver::connectWords() const
{
    return kWords;
}

const FormatTraits& TextDriver::traits(std::string_view) const
{
    static const FormatTraits traits = textTraits();
    return traits;
}

std::unique_ptr<Store> TextDriver::open(FileSystem& files, const OpenRequest& request) const
{
    const auto folder = files.info(request.name);
    if (!folder || !folder->folder)
        throw EngineError(EngineErrorNumber::PathInvalid, request.name + " is not a folder.");
    return std::make_unique<TextStore>(files, request);
}

}  // namespace velnor::text
