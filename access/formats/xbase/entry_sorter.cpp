#include "access/formats/xbase/entry_sorter.h"

#include <cstring>

#include "access/storage/byte_reader.h"

namespace velnor::xbase {
namespace {

constexpr std::size_t kMostInMemory = 32u << 20;
constexpr std::size_t kRecordBytes = 4;

}  // namespace

EntrySorter::EntrySorter(FileSystem& files, std::string spillPath, std::uint32_t keyLength)
    : keyLength_(keyLength),
      rows_(files, std::move(spillPath), keyLength, keyLength + kRecordBytes, kMostInMemory)
{
}

void EntrySorter::add(const std::uint8_t* key, std::uint32_t record)
{
    std::uint8_t* row = rows_.add();
    std::memcpy(row, key, keyLength_);
    storeLE(row + keyLength_, record);
}

bool EntrySorter::more(EntryList& into)
{
    constexpr std::size_t kAtOnce = 2048;
    const std::uint8_t* row = rows_.row();
    for (std::size_t i = 0; i < kAtOnce && row; ++i) {
        into.add(row, loadLE<std::uint32_t>(row + keyLength_));
        rows_.next();
        row = rows_.row();
    }
    return row != nullptr;
}

}  // namespace velnor::xbase
