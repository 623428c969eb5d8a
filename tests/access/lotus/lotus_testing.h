// tests/access/lotus/lotus_testing.h - worksheet files put together record by record, and read
// through the driver.
#pragma once

#include <cstring>

#include "access/formats/lotus/lotus_driver.h"
#include "tests/access/support/store_testing.h"

namespace velnor::lotus_testing {

using namespace store_testing;

inline constexpr const char* kFile = "C:\\T.WK4";

/// Bytes of a worksheet; numbers are little-endian.
class WkFile {
public:
    explicit WkFile(unsigned version = 0x1002) : old_(version < 0x1000)
    {
        Bytes bof(old_ ? 2 : 26);
        bof[0] = static_cast<std::uint8_t>(version);
        bof[1] = static_cast<std::uint8_t>(version >> 8);
        if (!old_) {
            bof[2] = 4;
            bof[16] = 1;
        }
        record(0, bof);
    }
    WkFile& record(unsigned type, const Bytes& data)
    {
        word(type);
        word(static_cast<unsigned>(data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
        return *this;
    }
    /// A cell of sheet 0 in WK3, WK4 and 123: the place, then these bytes.
    WkFile& cell(unsigned type, unsigned row, unsigned column, Bytes data, unsigned sheet = 0)
    {
        data.insert(data.begin(),
                    {static_cast<std::uint8_t>(row), static_cast<std::uint8_t>(row >> 8),
                     static_cast<std::uint8_t>(sheet), static_cast<std::uint8_t>(column)});
        return record(type, data);
    }
    WkFile& label(unsigned row, unsigned column, std::string_view text, unsigned sheet = 0)
    {
        Bytes data{'\''};
        data.insert(data.end(), text.begin(), text.end());
        data.push_back(0);
        return cell(0x16, row, column, data, sheet);
    }
    WkFile& whole(unsigned row, unsigned column, int value, unsigned sheet = 0)
    {
        const unsigned word = static_cast<unsigned>(value * 2);
        return cell(0x18, row, column,
                    {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8)}, sheet);
    }
    /// A cell of WK1 and WKS.
    WkFile& oldCell(unsigned type, unsigned format, unsigned row, unsigned column, Bytes data)
    {
        data.insert(data.begin(),
                    {static_cast<std::uint8_t>(format), static_cast<std::uint8_t>(column),
                     static_cast<std::uint8_t>(column >> 8), static_cast<std::uint8_t>(row),
                     static_cast<std::uint8_t>(row >> 8)});
        return record(type, data);
    }
    WkFile& sheetName(unsigned sheet, std::string_view name)
    {
        Bytes data{0xB0, 0x36, static_cast<std::uint8_t>(sheet), 0};
        data.insert(data.end(), name.begin(), name.end());
        data.push_back(0);
        return record(0x1B, data);
    }
    WkFile& range(std::string_view name, unsigned sheet, unsigned firstRow, unsigned firstColumn,
                  unsigned lastRow, unsigned lastColumn)
    {
        Bytes data(26);
        std::memcpy(&data[2], name.data(), name.size());
        put(data, 18, firstRow, sheet, firstColumn);
        put(data, 22, lastRow, sheet, lastColumn);
        return record(0x09, data);
    }
    Bytes end() { return record(1, {}).bytes; }

    Bytes bytes;

private:
    void word(unsigned value)
    {
        bytes.push_back(static_cast<std::uint8_t>(value));
        bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    }
    static void put(Bytes& data, std::size_t at, unsigned row, unsigned sheet, unsigned column)
    {
        data[at] = static_cast<std::uint8_t>(row);
        data[at + 1] = static_cast<std::uint8_t>(row >> 8);
        data[at + 2] = static_cast<std::uint8_t>(sheet);
        data[at + 3] = static_cast<std::uint8_t>(column);
    }
    bool old_;
};

/// The ten bytes of a number.
inline Bytes real(double value)
{
    const long double wide = value;
    Bytes bytes(10);
    std::memcpy(bytes.data(), &wide, 10);
    return bytes;
}
inline Bytes doubleBytes(double value)
{
    Bytes bytes(8);
    std::memcpy(bytes.data(), &value, 8);
    return bytes;
}

inline std::unique_ptr<Store> openStore(FileSystem& files, bool readOnly = false,
                                        std::string options = {})
{
    static const lotus::LotusDriver driver;
    OpenRequest request;
    request.name = kFile;
    request.connectWord = "Lotus WK4;";
    request.readOnly = readOnly;
    request.options = std::move(options);
    return driver.open(files, request);
}

inline void createFile(FileSystem& files)
{
    CreateRequest request;
    request.name = kFile;
    lotus::LotusDriver().create(files, request);
}

inline ValueView words(std::string_view t)
{
    return ValueView::text(t);
}

}  // namespace velnor::lotus_testing
