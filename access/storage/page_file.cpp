#include "access/storage/page_file.h"

#include <utility>

#include "access/storage/page_file_state.h"

namespace velnor {

PageRef::PageRef(PageRef&& other) noexcept
    : file_(other.file_), slot_(std::exchange(other.slot_, nullptr)), data_(other.data_)
{
}

PageRef& PageRef::operator=(PageRef&& other) noexcept
{
    if (this == &other)
        return *this;
    release();
    file_ = other.file_;
    slot_ = std::exchange(other.slot_, nullptr);
    data_ = other.data_;
    return *this;
}

std::uint32_t PageRef::number() const
{
    return slot_->number;
}

std::uint8_t* PageRef::edit()
{
    file_->state_->edit(*slot_);
    return slot_->bytes.get();
}

void PageRef::release()
{
    if (slot_)
        std::exchange(slot_, nullptr)->release();
}

PageFile::PageFile(std::unique_ptr<State> state) : state_(std::move(state)) {}

PageFile::~PageFile() = default;

std::uint32_t PageFile::pageSize() const
{
    return state_->pageSize();
}

std::uint64_t PageFile::size() const
{
    return state_->size();
}

std::uint32_t PageFile::pageCount() const
{
    return state_->pageCount();
}

PageRef PageFile::hold(PageSlot& slot)
{
    PageRef ref;
    ++slot.pins;
    ref.file_ = this;
    ref.slot_ = &slot;
    ref.data_ = slot.bytes.get();
    return ref;
}

PageRef PageFile::read(std::uint32_t page)
{
    return hold(state_->page(page));
}

PageRef PageFile::append()
{
    return hold(state_->append());
}

std::size_t PageFile::readAt(std::uint64_t offset, std::span<std::uint8_t> out)
{
    return state_->readAt(offset, out);
}

std::size_t PageFile::peekAt(std::uint64_t offset, std::span<std::uint8_t> out)
{
    return state_->peekAt(offset, out);
}

void PageFile::writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    state_->writeAt(offset, bytes);
}

void PageFile::resize(std::uint64_t bytes)
{
    state_->resize(bytes);
}

void PageFile::setCodec(const PageCodec* codec)
{
    state_->setCodec(codec);
}

}  // namespace velnor
