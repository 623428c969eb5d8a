// Headers: read, and made anew byte by byte.
#include <algorithm>

#include "access/formats/paradox/cipher.h"
#include "access/formats/paradox/file_header.h"
#include "tests/access/paradox/paradox_testing.h"

using namespace velnor;
using namespace velnor::paradox;
using namespace velnor::paradox_testing;

namespace {

/// What programs write into these bytes only they know: pointers, times, counters, the most blocks.
bool isTheirOwn(std::size_t at, bool second)
{
    const auto in = [&](std::size_t from, std::size_t to) { return at >= from && at < to; };
    return in(0x12, 0x14) || in(0x16, 0x1E) || in(0x30, 0x38) || in(0x3A, 0x3C) || in(0x40, 0x48) ||
           (second && (in(0x60, 0x64) || in(0x70, 0x78)));
}

struct Opened {
    explicit Opened(const Bytes& bytes)
    {
        files.put("C:\\T.DB", bytes);
        set = std::make_unique<FileSet>(files, "C:\\T.DB", PageFileOptions{}, true);
    }
    MemoryFileSystem files;
    std::unique_ptr<FileSet> set;
};

/// The differences between a header and the one that is made from what was read of it.
Rows differencesOf(const Bytes& bytes)
{
    Opened opened(bytes);
    FileHeader header = readHeader(opened.set->main(), {});
    const std::uint16_t size = header.headerSize, real = header.realSize;
    layOutHeader(header);
    Rows found;
    if (header.version >= 5 && (header.headerSize > size || header.realSize != real))
        found.push_back("laid out with " + std::to_string(header.realSize) + " bytes, not " +
                        std::to_string(real));
    header.headerSize = size;
    header.realSize = real;
    const Bytes made = headerBytes(header);
    const bool second = header.hasSecondHeader();
    const std::size_t variable = second ? 0x78 : 0x58;
    const std::size_t pointers = variable + 2 * header.fields.size();
    const std::size_t name = pointers + 4 + (header.isTree() ? 0 : 4 * header.fields.size());
    const std::size_t nameEnd = name + storedNameBytes(header.version);
    for (std::size_t at = 0; at < size; ++at) {
        const bool rubbish = (at >= pointers && at < name) ||
                             (at >= name + header.storedTableName.size() && at < nameEnd);
        if (made[at] != bytes[at] && !rubbish && !(at < variable && isTheirOwn(at, second)))
            found.push_back("byte " + std::to_string(at));
    }
    return found;
}

}  // namespace

TEST(ParadoxHeader, headersOfRealFilesAreMadeAnewByteByByte)
{
    const auto folder = corpusFolder();
    if (folder.empty())
        GTEST_SKIP() << "the corpus of real files (VELNOR_CORPUS) is not here";
    int tables = 0, indexes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        std::string extension = entry.path().extension().string();
        std::transform(extension.begin(), extension.end(), extension.begin(), ::toupper);
        const bool index =
            extension == ".PX" || extension.starts_with(".X") || extension.starts_with(".Y");
        if (extension != ".DB" && !index)
            continue;
        const Bytes bytes = contentOf(entry.path());
        if (bytes.size() < 0x58)
            continue;
        EXPECT_EQ(differencesOf(bytes), Rows{}) << entry.path();
        (index ? indexes : tables) += 1;
    }
    EXPECT_GT(tables, 50);
    EXPECT_GT(indexes, 30);
}

TEST(ParadoxHeader, theStampOfAnIndexFollowsFromThatOfItsTable)
{
    EXPECT_EQ(linkOf(89, 17), 108);  // a table in the order ANSII850
    EXPECT_EQ(linkOf(205, 17), 224);
    EXPECT_EQ(linkOf(2, 76), 80);
    EXPECT_EQ(linkOf(200, 76), 23);  // over 255 it goes on with 1
    EXPECT_EQ(linkOf(42, 0), 42);    // "ascii" adds nothing
    EXPECT_EQ(nextStamp(255), 1);
}

TEST(ParadoxHeader, blocksAreTheSmallestThatHoldThreeRecords)
{
    EXPECT_EQ(blockBytesFor(644), 2048u);
    EXPECT_EQ(blockBytesFor(724), 4096u);
    EXPECT_EQ(blockBytesFor(2987), 16384u);
    EXPECT_EQ(blockBytesFor(6676), 32768u);
}

TEST(ParadoxHeader, whatIsNoTableIsRefused)
{
    const auto refused = [](Bytes bytes) {
        Opened opened(bytes);
        return errorOf([&] { readHeader(opened.set->main(), {}); });
    };
    EXPECT_EQ(refused({}), 3274);
    EXPECT_EQ(refused(Bytes(29, 'x')), 3274);
    EXPECT_EQ(refused(Bytes(4096, 0)), 3274);
    Bytes other(4096, 0);
    const std::string_view mark = "SQLite format 3";
    std::copy(mark.begin(), mark.end(), other.begin());
    EXPECT_EQ(refused(other), 3274);
}

TEST(ParadoxHeader, anUnknownCodePageIsRefused)
{
    MemoryFileSystem files;
    openStore(files)->createTable(layoutOf({fieldDef("A", FieldType::Text, 3)}));
    FileSet set(files, "C:\\T.DB", PageFileOptions{}, true);
    EXPECT_EQ(readHeader(set.main(), "866").codePage->number(), 866);
    EXPECT_EQ(errorOf([&] { readHeader(set.main(), "nonsense"); }), 3001);
}

TEST(ParadoxCipher, thePasswordOfTheSamplesGivesTheirKey)
{
    EXPECT_EQ(keyOfPassword("123"), 0x0A25E09Au);
    EXPECT_NE(keyOfPassword("124"), 0x0A25E09Au);
    EXPECT_EQ(keyOfPassword(""), 0u);
}

TEST(ParadoxCipher, whatIsEncipheredIsDecipheredAgain)
{
    Bytes plain(2048);
    for (std::size_t i = 0; i < plain.size(); ++i)
        plain[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    Bytes block = plain;
    encipherBlock(block, 0x0A25E09Au, 5);
    EXPECT_NE(block, plain);
    Bytes wrong = block;
    decipherBlock(wrong, 0x0A25E09Au, 6);
    EXPECT_NE(wrong, plain);
    decipherBlock(block, 0x0A25E09Au, 5);
    EXPECT_EQ(block, plain);
}
