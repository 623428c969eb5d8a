#include <gtest/gtest.h>

#include <limits>

#include "access/storage/byte_reader.h"
#include "tests/access/storage/storage_testing.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

const Bytes kBytes = {0x01, 0x82, 0x03, 0x84, 0x05, 0x06, 0x07, 0x88};

TEST(ByteReaderTest, numbersOfBothByteOrders)
{
    const ByteReader reader(kBytes, "A header");
    EXPECT_EQ(reader.u8(1), 0x82);
    EXPECT_EQ(reader.u16(0), 0x8201);
    EXPECT_EQ(reader.u16be(0), 0x0182);
    EXPECT_EQ(reader.u24(1), 0x840382u);
    EXPECT_EQ(reader.u32(0), 0x84038201u);
    EXPECT_EQ(reader.u32be(0), 0x01820384u);
    EXPECT_EQ(reader.i32(0), static_cast<std::int32_t>(0x84038201u));
    EXPECT_EQ(reader.u64(0), 0x8807060584038201u);
    EXPECT_EQ(reader.text(4, 2), "\x05\x06");
    EXPECT_EQ(reader.bytes(8, 0).size(), 0u);
}

TEST(ByteReaderTest, everyReadPastTheEndIsRefused)
{
    const ByteReader reader(kBytes, "A header");
    const std::size_t far = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(engineNumberOf([&] { reader.u8(8); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.u16(7); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.u24(6); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.u32(5); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.u64(1); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.u32(far); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.bytes(4, far); }), 3274);
    EXPECT_EQ(engineNumberOf([&] { reader.bytes(9, 0); }), 3274);
    EXPECT_EQ(engineNumberOf([] { ByteReader({}, "Nothing").u8(0); }), 3274);
}

TEST(ByteReaderTest, theNumberAndTheWordsAreTheCallers)
{
    const ByteReader reader(kBytes, "Page 7", EngineErrorNumber::Corrupt);
    try {
        reader.u32(6);
        FAIL();
    } catch (const EngineError& error) {
        EXPECT_EQ(error.number(), 3197);
        EXPECT_TRUE(std::string_view(error.what()).starts_with("Page 7 is damaged"));
    }
}

TEST(ByteReaderTest, storedNumbersAreLoadedAgain)
{
    std::uint8_t bytes[4] = {};
    storeBE<std::uint32_t>(bytes, 0x01020304);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(loadBE<std::uint32_t>(bytes), 0x01020304u);
    storeLE<std::uint16_t>(bytes, 0xABCD);
    EXPECT_EQ(bytes[0], 0xCD);
    EXPECT_EQ(loadLE<std::uint16_t>(bytes), 0xABCD);
}

}  // namespace
