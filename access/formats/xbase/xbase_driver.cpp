#include "access/formats/xbase/xbase_driver.h"

#include "access/formats/xbase/dbf_format.h"
#include "access/formats/xbase/table_repair.h"
#include "access/formats/xbase/xbase_store.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::string_view kWords[] = {"dBASE 5.0;",  "dBASE III;",  "dBASE IV;",  "FoxPro 2.0;",
                                       "FoxPro 2.5;", "FoxPro 2.6;", "FoxPro 3.0;"};

FormatTraits traitsOf(int maxFields)
{
    FormatTraits traits;
    traits.folder = true;
    traits.maxFieldName = 10;
    traits.cutFieldNames = true;
    traits.maxFields = maxFields;
    traits.maxText = 254;
    traits.emptyTextIsNull = true;
    return traits;
}

}  // namespace

std::span<const std::string_view> XbaseDriver::connectWords() const
{
    return kWords;
}

const FormatTraits& XbaseDriver::traits(std::string_view connectWord) const
{
    static const FormatTraits three = traitsOf(128), others = traitsOf(255);
    const NewTableForm* form = formOfConnectWord(connectWord);
    return form && form->maxFields == 128 ? three : others;
}

std::unique_ptr<Store> XbaseDriver::open(FileSystem& files, const OpenRequest& request) const
{
    const NewTableForm* form = formOfConnectWord(request.connectWord);
    if (!form)
        throw EngineError(EngineErrorNumber::NoDriver,
                          "There is no driver for \"" + request.connectWord + "\".");
    needFolder(files, request.name);
    return std::make_unique<XbaseStore>(files, request, *form);
}

void XbaseDriver::compact(FileSystem& files, const OpenRequest& from, const CreateRequest& to) const
{
    if (!paths::sameName(from.name, to.name))
        throw EngineError(EngineErrorNumber::NotSupported,
                          "A table is packed in its place, not into another file.");
    OpenRequest folder = from;
    folder.name = paths::folder(from.name);
    folder.readOnly = false;
    const NewTableForm* form = formOfConnectWord(from.connectWord);
    if (!form)
        form = formOfConnectWord("FoxPro 3.0;");  // opens every kind
    XbaseStore(files, folder, *form).pack(paths::baseName(from.name));
}

void XbaseDriver::repair(FileSystem& files, const OpenRequest& request,
                         const ProblemSink& report) const
{
    const NewTableForm* form = formOfConnectWord(request.connectWord);
    repairTable(files, request.name, form ? *form : *formOfConnectWord("FoxPro 3.0;"),
                request.codePage, report);
}

}  // namespace velnor::xbase
