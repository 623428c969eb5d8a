#include "access/formats/excel/excel_driver.h"

#include "access/formats/excel/compound_writer.h"
#include "access/formats/excel/excel_store.h"
#include "access/formats/excel/new_workbook.h"
#include "access/storage/replace_file.h"
#include "platform/paths.h"

namespace velnor::excel {
namespace {

FormatTraits traitsOfSheets()
{
    FormatTraits traits;
    traits.maxTableName = 31;
    traits.maxFieldName = 64;
    traits.canDelete = false;
    traits.emptyTextIsNull = true;
    return traits;
}

}  // namespace

std::span<const std::string_view> ExcelDriver::connectWords() const
{
    static constexpr std::string_view kWords[] = {"Excel 8.0;", "Excel 5.0;", "Excel 4.0;",
                                                  "Excel 3.0;"};
    return kWords;
}

const FormatTraits& ExcelDriver::traits(std::string_view) const
{
    static const FormatTraits kTraits = traitsOfSheets();
    return kTraits;
}

std::unique_ptr<Store> ExcelDriver::open(FileSystem& files, const OpenRequest& request) const
{
    return std::make_unique<ExcelStore>(files, request);
}

void ExcelDriver::create(FileSystem& files, const CreateRequest& request) const
{
    const bool five = paths::sameName(request.connectWord, "Excel 5.0;");
    if (!five && !paths::sameName(request.connectWord, "Excel 8.0;"))
        throw EngineError(EngineErrorNumber::NotSupported,
                          "Workbooks of this old version cannot be made.");
    const std::vector<std::uint8_t> stream = newWorkbookStream(biffForm(five ? 5 : 8));
    FileReplacement replacement(files, request.name);
    writeNewCompound(replacement.file(), five ? "Book" : "Workbook", stream.size(),
                     [&](StreamSink& sink) { sink.put(stream); });
    replacement.commit();
}

}  // namespace velnor::excel
