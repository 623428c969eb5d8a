#include "access/formats/lotus/lotus_driver.h"

#include "access/formats/lotus/lotus_store.h"
#include "access/formats/lotus/sheet_records.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::lotus {
namespace {

constexpr std::string_view kWords[] = {"Lotus WK4;", "Lotus WK3;", "Lotus WK1;", "Lotus WKS;"};

FormatTraits lotusTraits()
{
    FormatTraits traits;
    traits.maxTableName = 16;  // 15 and a ":"
    traits.canDelete = false;
    traits.emptyTextIsNull = true;
    return traits;
}

}  // namespace

std::span<const std::string_view> LotusDriver::connectWords() const
{
    return kWords;
}

const FormatTraits& LotusDriver::traits(std::string_view) const
{
    static const FormatTraits traits = lotusTraits();
    return traits;
}

std::unique_ptr<Store> LotusDriver::open(FileSystem& files, const OpenRequest& request) const
{
    return std::make_unique<LotusStore>(files, request);
}

void LotusDriver::create(FileSystem& files, const CreateRequest& request) const
{
    const auto is = [&](std::string_view word) {
        return paths::sameName(request.connectWord, word);
    };
    if (is("Lotus WK1;") || is("Lotus WKS;"))
        return Driver::create(files, request);  // such files are only read
    const Bytes bytes = newBook(is("Lotus WK3;") ? WkVersion::Wk3 : WkVersion::Wk4);
    FileReplacement file(files, request.name);
    file.file().writeAt(0, bytes);
    file.commit();
}

}  // namespace velnor::lotus
