// The masked header, passwords and encoded pages.
#include <gtest/gtest.h>

#include <bit>

#include "access/engine_error.h"
#include "access/formats/jet/page_codec.h"
#include "access/storage/byte_reader.h"
#include "tests/access/jet/corpus_files.h"

namespace velnor::jet {
namespace {

std::vector<std::uint8_t> header(bool jet4, double created = 0)
{
    std::vector<std::uint8_t> page(4096);
    page[0x14] = jet4;
    storeLE(&page[0x3C], std::uint16_t{1252});
    if (jet4)
        storeLE(&page[0x72], std::bit_cast<std::uint64_t>(created));
    return page;
}

TEST(HeaderMask, comesOffAndGoesOn)
{
    auto page = header(true, 38000.5);
    const auto plain = page;
    maskHeader(page);
    EXPECT_NE(page, plain);
    EXPECT_EQ(page[0x18], 0xB5);
    maskHeader(page);
    EXPECT_EQ(page, plain);
}

TEST(HeaderMask, ofJet3EndsTwoBytesEarlier)
{
    auto page = header(false);
    maskHeader(page);
    EXPECT_EQ(page[0x96], 0);
    EXPECT_NE(page[0x95], 0);
}

TEST(HeaderMask, shortHeaderIsRefused)
{
    std::vector<std::uint8_t> page(40);
    EXPECT_THROW(maskHeader(page), EngineError);
}

TEST(Password, isKeptBesideTheCreationDate)
{
    for (const bool jet4 : {false, true}) {
        auto page = header(jet4, 41234.75);
        EXPECT_EQ(databasePassword(page), jet4 ? databasePassword(page) : "");
        setDatabasePassword(page, "S\xC3\xA9same");
        EXPECT_EQ(databasePassword(page), "S\xC3\xA9same");
        EXPECT_TRUE(passwordMatches(page, "S\xC3\xA9same"));
        EXPECT_FALSE(passwordMatches(page, "s\xC3\xA9same")) << "case counts";
        EXPECT_FALSE(passwordMatches(page, ""));
        setDatabasePassword(page, "");
        EXPECT_EQ(databasePassword(page), "");
        EXPECT_TRUE(passwordMatches(page, "anything"));
    }
}

TEST(Password, longerThanTwentyCharacters_isRefused)
{
    for (const bool jet4 : {false, true}) {
        auto page = header(jet4, 1);
        EXPECT_THROW(setDatabasePassword(page, std::string(21, 'x')), EngineError);
        setDatabasePassword(page, std::string(20, 'x'));
        EXPECT_EQ(databasePassword(page), std::string(20, 'x'));
    }
    auto page = header(false);
    EXPECT_THROW(setDatabasePassword(page, "\xE3\x81\x82"), EngineError);
}

TEST(Password, ofRealFiles)
{
    const auto read = [](const char* name) {
        auto bytes = corpusFile(name);
        if (!bytes.empty())
            maskHeader(bytes);
        return bytes;
    };
    const auto page = read("andipaetzold-V2003_with-password.mdb");
    if (page.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    EXPECT_EQ(databasePassword(page), corpusPassword("andipaetzold-V2003_with-password.mdb"));
    EXPECT_EQ(databasePassword(read("own-jet3-password.mdb")),
              corpusPassword("own-jet3-password.mdb"));
    EXPECT_EQ(databasePassword(read("jahlborn-delTestV2003.mdb")), "");
    EXPECT_EQ(encodingKey(read("jahlborn-delTestV2003.mdb")), 0u);
    EXPECT_NE(encodingKey(read("jahlborn-db-enc.mdb")), 0u);
}

TEST(EncodedPages, ofARealFileBecomePlain)
{
    auto bytes = corpusFile("jahlborn-db-enc.mdb");
    if (bytes.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    auto head = bytes;
    maskHeader(head);
    const Rc4PageCodec codec(encodingKey(head));
    const auto plain = std::span(bytes).subspan(2 * 4096, 4096);
    const std::vector<std::uint8_t> stored(plain.begin(), plain.end());
    codec.decode(2, plain);
    EXPECT_EQ(plain[0], 2) << "page 2 is the definition of the table of objects";
    EXPECT_EQ(plain[1], 1);
    EXPECT_EQ(plain[40], 'S');
    codec.encode(2, plain);
    EXPECT_TRUE(std::ranges::equal(stored, plain));
}

TEST(EncodedPages, theHeaderIsNeverEncoded)
{
    std::vector<std::uint8_t> page(4096, 7);
    Rc4PageCodec(0x1234).encode(0, page);
    EXPECT_EQ(page, std::vector<std::uint8_t>(4096, 7));
}

}  // namespace
}  // namespace velnor::jet
