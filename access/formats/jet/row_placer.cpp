#include "access/formats/jet/row_placer.h"

#include <cstring>

namespace velnor::jet {
namespace {

// How many pages of the map of pages with room are looked at before a new one is taken.
constexpr int kTries = 4;

[[noreturn]] void gone()
{
    throw EngineError(EngineErrorNumber::NoCurrentRecord, "The record is deleted.");
}

}  // namespace

RowPointer RowPlacer::add(Bytes bytes)
{
    const RowPointer home = put(bytes, 0, 0);
    table_.recordsChanged(home.page, 1);
    return home;
}

RowPointer RowPlacer::put(Bytes bytes, std::uint16_t flags, PageNumber notOn)
{
    if (!holdWithRoom(bytes.size(), notOn))
        newPage();
    DataPageEditor editor(table_.file().format(), page_.edit());
    const RowPointer place{page_.number(), static_cast<std::uint8_t>(editor.rowCount())};
    std::memcpy(editor.append(bytes.size(), flags), bytes.data(), bytes.size());
    return place;
}

bool RowPlacer::tryPage(PageNumber number, std::size_t bytes)
{
    auto page = table_.dataPage(number);
    if (!page)
        return false;
    const DataPage view(table_.file().format(), page->data());
    const bool fits =
        view.rowCount() < kMaxRowsPerPage && view.freeBytes() >= static_cast<int>(bytes) + 2;
    if (fits)
        page_ = std::move(*page);
    return fits;
}

bool RowPlacer::holdWithRoom(std::size_t bytes, PageNumber notOn)
{
    const JetFormat& f = table_.file().format();
    // The pages of the table are another list since: the page in hand may be gone.
    if (pagesVersion_ != table_.pagesVersion()) {
        page_.release();
        table_.pages();
        pagesVersion_ = table_.pagesVersion();
    }
    if (page_ && page_.number() != notOn) {
        const DataPage view(f, page_.data());
        if (view.rowCount() < kMaxRowsPerPage && view.freeBytes() >= static_cast<int>(bytes) + 2)
            return true;
        // A page that is nearly full would only be looked at in vain from now on.
        if (view.freeBytes() < static_cast<int>(f.pageSize / 8) ||
            view.rowCount() >= kMaxRowsPerPage)
            table_.space().remove(page_.number());
    }
    const PageNumber tried = page_ ? page_.number() : 0;
    PageNumber candidate = table_.space().next(1);
    for (int tries = 0; candidate != 0 && tries < kTries; ++tries) {
        if (candidate != tried && candidate != notOn && tryPage(candidate, bytes))
            return true;
        candidate = table_.space().next(candidate + 1);
    }
    return false;
}

void RowPlacer::newPage()
{
    JetFile& file = table_.file();
    const PageNumber number = file.allocate();
    PageRef page = file.page(number);
    DataPageEditor::lay(file.format(), page.edit(), table_.page());
    try {
        table_.owned().add(number);
        table_.space().add(number);
    } catch (...) {
        file.release(number, page_type::kFreed);
        throw;
    }
    table_.pageAdded(number);
    pagesVersion_ = table_.pagesVersion();
    page_ = std::move(page);
}

bool RowPlacer::replaceOn(RowPointer place, Bytes bytes, std::uint16_t flags)
{
    auto page = table_.dataPage(place.page);
    if (!page)
        gone();
    if (!DataPageEditor(table_.file().format(), page->edit()).fitsInPlace(place.slot, bytes.size()))
        return false;
    DataPageEditor editor(table_.file().format(), page->edit());
    std::memcpy(editor.resize(place.slot, bytes.size(), flags), bytes.data(), bytes.size());
    return true;
}

void RowPlacer::point(RowPointer home, RowPointer target)
{
    std::uint8_t pointer[kPointer];
    storeLE(pointer, target.word());
    if (!replaceOn(home, pointer, row_flag::kMoved))
        throw EngineError(EngineErrorNumber::RecordTooLarge, "Record is too large.");
}

void RowPlacer::replace(RowPointer home, RowPointer stored, Bytes bytes)
{
    if (home == stored) {
        if (replaceOn(home, bytes, 0))
            return;
        const RowPointer target = put(bytes, row_flag::kHidden, home.page);
        try {
            point(home, target);
        } catch (...) {
            erase(target);
            throw;
        }
        return;
    }
    if (replaceOn(stored, bytes, row_flag::kHidden))
        return;
    if (!replaceOn(home, bytes, 0))  // there may be room at home again
        point(home, put(bytes, row_flag::kHidden, stored.page));
    erase(stored);
}

/// Deletes the bytes at a place; gives the page back when nothing is left on it.
void RowPlacer::erase(RowPointer place)
{
    JetFile& file = table_.file();
    bool empty = false;
    {
        auto page = table_.dataPage(place.page);
        if (!page)
            gone();
        DataPageEditor editor(file.format(), page->edit());
        editor.erase(place.slot);
        empty = editor.empty();
    }
    if (!empty) {
        table_.space().add(place.page);
        return;
    }
    if (page_ && page_.number() == place.page)
        page_.release();
    table_.owned().remove(place.page);
    table_.space().remove(place.page);
    file.release(place.page, page_type::kFreed);
    table_.pageRemoved(place.page);
}

void RowPlacer::remove(RowPointer home, RowPointer stored)
{
    table_.recordsChanged(home.page, -1);
    if (home != stored)
        erase(stored);
    erase(home);
}

}  // namespace velnor::jet
