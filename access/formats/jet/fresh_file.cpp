#include "access/formats/jet/fresh_file.h"

#include <algorithm>
#include <random>
#include <span>

#include "access/formats/jet/create_database.h"
#include "access/formats/jet/page_codec.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

constexpr PageNumber kMapsPage = 1, kPages = 6;

}  // namespace

std::vector<std::uint8_t> freshPages(JetFile& after, std::uint32_t key,
                                     const std::optional<std::string>& password)
{
    const JetFormat& format = after.format();
    const HeaderLayout& o = format.header;
    std::vector<std::uint8_t> header = after.plainHeader();
    storeLE(header.data() + o.globalMap, RowPointer{kMapsPage, 0}.word());
    storeLE(header.data() + o.releasedMap, RowPointer{kMapsPage, 1}.word());
    storeLE(header.data() + o.key, std::uint32_t{0});
    if (password)
        setDatabasePassword(header, *password);
    maskHeader(header);
    layCommitCounters(format, header.data());

    std::vector<std::uint8_t> pages(std::size_t{kPages} * format.pageSize);
    std::copy(header.begin(), header.end(), pages.begin());
    layGlobalMaps(format, pages.data() + format.pageSize, kPages);
    if (key != 0)
        encodePages(format, pages, key);
    return pages;
}

void encodePages(const JetFormat& format, std::span<std::uint8_t> pages, std::uint32_t key)
{
    maskHeader(pages);
    storeLE(pages.data() + format.header.key, key);
    maskHeader(pages);
    const Rc4PageCodec codec(key);
    for (std::size_t at = format.pageSize; at < pages.size(); at += format.pageSize)
        codec.encode(static_cast<std::uint32_t>(at / format.pageSize),
                     pages.subspan(at, format.pageSize));
}

std::uint32_t newEncodingKey()
{
    std::random_device source;
    std::uint32_t key = 0;
    while (key == 0)
        key = static_cast<std::uint32_t>(source());
    return key;
}

}  // namespace velnor::jet
