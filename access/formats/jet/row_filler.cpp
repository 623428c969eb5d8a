#include "access/formats/jet/row_filler.h"

#include <cstring>

#include "access/formats/jet/data_page.h"

namespace velnor::jet {

RowPointer RowFiller::add(std::span<const std::uint8_t> bytes)
{
    const JetFormat& format = table_.file().format();
    if (!page_ || !DataPageEditor(format, page_.edit()).fits(bytes.size()))
        newPage();
    DataPageEditor editor(format, page_.edit());
    const RowPointer place{page_.number(), static_cast<std::uint8_t>(editor.rowCount())};
    std::memcpy(editor.append(bytes.size()), bytes.data(), bytes.size());
    return place;
}

void RowFiller::newPage()
{
    JetFile& file = table_.file();
    page_.release();
    const PageNumber number = file.allocate();
    PageRef page = file.page(number);
    DataPageEditor::lay(file.format(), page.edit(), table_.page());
    table_.owned().add(number);
    page_ = std::move(page);
}

void RowFiller::finish()
{
    if (page_)
        table_.space().add(page_.number());
    page_.release();
}

}  // namespace velnor::jet
