// The password of a database: set, changed, removed, in both versions.
#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/jet_testing.h"
#include "tests/support/faulty_disk.h"

namespace velnor::testing {
namespace {

class Passwords : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
    }
    /// The error of opening with a password; 0 when it opens.
    int opening(std::string_view password)
    {
        try {
            driver_.open(files_, reading(password));
        } catch (const EngineError& error) {
            return error.number();
        }
        return 0;
    }
    void change(std::string_view from, std::string_view to)
    {
        driver_.open(files_, writing(from))->changePassword(to);
    }

    MemoryFileSystem files_;
    jet::JetDriver driver_;
};

TEST_P(Passwords, oneThatIsSetIsAskedForFromThenOn)
{
    const auto plain = files_.content(kTestFile);
    EXPECT_EQ(opening("anything"), 0);
    change("", "Sesam öffne");
    EXPECT_EQ(opening(""), 3031);
    EXPECT_EQ(opening("sesam öffne"), 3031) << "case counts";
    EXPECT_EQ(opening("Sesam öffne"), 0);
    const Verdict verdict = outsideCheck(files_.content(kTestFile), "Sesam öffne");
    if (verdict.available) {
        EXPECT_TRUE(verdict.sound) << verdict.output;
    }
    change("Sesam öffne", "other");
    EXPECT_EQ(opening("Sesam öffne"), 3031);
    EXPECT_EQ(opening("other"), 0);
    change("other", "");
    EXPECT_EQ(opening(""), 0);
    EXPECT_EQ(files_.content(kTestFile), plain) << "nothing else in the file changed";
}

TEST_P(Passwords, oneThatDoesNotFitIsRefusedAndTheOldOneStays)
{
    change("", "first");
    const std::string longest(20, 'x');
    for (const std::string& bad :
         {longest + "x", std::string("\u4E2D") + (GetParam() == 4 ? longest : "")}) {
        const auto store = driver_.open(files_, writing("first"));
        try {
            store->changePassword(bad);
            ADD_FAILURE() << bad;
        } catch (const EngineError& error) {
            EXPECT_EQ(error.number(), 3001);
        }
        EXPECT_TRUE(store->acceptsPassword("first"));
        EXPECT_FALSE(store->acceptsPassword(bad));
    }
    EXPECT_EQ(opening("first"), 0);
    change("first", longest);
    EXPECT_EQ(opening(longest), 0);
}

TEST_P(Passwords, aStoreThatIsReadOnlyRefuses)
{
    const auto store = driver_.open(files_, reading());
    EXPECT_THROW(store->changePassword("x"), EngineError);
    EXPECT_EQ(opening(""), 0);
}

TEST_P(Passwords, aFullDiskLeavesTheOldOne)
{
    FaultyDisk disk;
    disk.put(kTestFile, files_.content(kTestFile));
    for (long n = 1;; ++n) {
        const auto store = driver_.open(disk, writing());
        disk.failAt(n, RunErrorNumber::DiskFull);
        try {
            store->changePassword("new");
        } catch (const EngineError& error) {
            EXPECT_EQ(error.number(), 3026) << n;
            disk.clearFaults();
            EXPECT_TRUE(store->acceptsPassword("")) << n;
            EXPECT_EQ(store->info({})[6].second, "no") << n;
            continue;
        }
        ASSERT_GT(n, 1);
        EXPECT_EQ(store->info({})[6].second, "yes") << n;
        break;
    }
}

INSTANTIATE_TEST_SUITE_P(Jet, Passwords, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
