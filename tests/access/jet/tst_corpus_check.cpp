// The deep check: sound files have no findings but harmless ones, damaged files have some.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "access/formats/jet/jet_check.h"
#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/open_corpus.h"

namespace velnor::jet {
namespace {

std::vector<Problem> findings(const std::vector<std::uint8_t>& bytes, const std::string& password,
                              std::string_view table = {})
{
    std::vector<Problem> found;
    try {
        OpenCorpusFile file(bytes, password);
        checkDatabase(
            file.file(), file.catalog(), table,
            [&](const CatalogEntry& entry) {
                return std::make_shared<JetTable>(file.file(), static_cast<PageNumber>(entry.id),
                                                  entry.name);
            },
            [&](const Problem& problem) { found.push_back(problem); });
    } catch (const EngineError& error) {
        found.push_back({"file", error.what(), false});
    }
    return found;
}

std::vector<Problem> findings(const std::string& name, std::string_view table = {})
{
    return findings(corpusFile(name), corpusPassword(name), table);
}

int serious(const std::vector<Problem>& found)
{
    return static_cast<int>(
        std::ranges::count_if(found, [](const Problem& p) { return !p.harmless; }));
}

TEST(Check, findsNothingSeriousInSoundFiles)
{
    const auto names = corpusNames();
    if (names.empty())
        GTEST_SKIP() << "no corpus";
    int harmless = 0;
    for (const std::string& name : names) {
        for (const Problem& problem : findings(name)) {
            harmless += problem.harmless;
            EXPECT_TRUE(problem.harmless) << name << ": " << problem.where << ": " << problem.text;
            if (std::getenv("VELNOR_SHOW_NOTES"))
                std::printf("%s: %s: %s\n", name.c_str(), problem.where.c_str(),
                            problem.text.c_str());
        }
    }
    EXPECT_GT(harmless, 0) << "real files have stale counts";
}

TEST(Check, findsTheDamageInEveryDamagedFile)
{
    const auto folder = corpusFolder() / "bad";
    if (corpusFolder().empty() || !std::filesystem::exists(folder))
        GTEST_SKIP() << "no corpus";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = "bad/" + entry.path().filename().string();
        const auto found = findings(name);
        for (const Problem& problem : found)
            if (std::getenv("VELNOR_SHOW_NOTES"))
                std::printf("%s: %s: %s\n", name.c_str(), problem.where.c_str(),
                            problem.text.c_str());
        if (name.find("count") != std::string::npos)
            EXPECT_FALSE(found.empty()) << name;  // a stale count loses nothing
        else
            EXPECT_GT(serious(found), 0) << name;
    }
}

TEST(Check, endsOnEveryDamage)
{
    if (corpusNames().empty())
        GTEST_SKIP() << "no corpus";
    std::mt19937 random(17);
    int hurt = 0;
    for (const char* name : {"jahlborn-delTestV2003.mdb", "jahlborn-indexTestV1997.mdb"}) {
        const auto sound = corpusFile(name);
        for (int round = 0; round < 60; ++round) {
            auto bytes = sound;
            const std::size_t page = (bytes[0x14] ? 4096 : 2048);
            for (int hit = 0; hit < 12; ++hit) {
                // Heads of pages are hit more often: that is where the structure is.
                const std::size_t start = random() % (bytes.size() / page) * page;
                const std::size_t at = start + random() % (hit % 2 ? page : 64);
                bytes[at] ^= static_cast<std::uint8_t>(1u << random() % 8);
            }
            hurt += serious(findings(bytes, "")) > 0;
        }
    }
    EXPECT_GT(hurt, 60);
}

TEST(Check, ofOneTableLooksAtThatTable)
{
    if (corpusNames().empty())
        GTEST_SKIP() << "no corpus";
    EXPECT_EQ(serious(findings("own-jet4-alltypes.mdb", "MSysObjects")), 0);
    EXPECT_EQ(findings("own-jet4-alltypes.mdb", "No such table").at(0).where, "file");
}

}  // namespace
}  // namespace velnor::jet
