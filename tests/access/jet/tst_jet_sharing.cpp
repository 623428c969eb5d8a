// One database, several programs: ours lock the file, others lock its LDB.
#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/jet_driver.h"
#include "tests/access/jet/jet_testing.h"

namespace velnor::testing {
namespace {

constexpr const char* kLockFile = "C:\\TEST.LDB";

class Sharing : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        CreateRequest request;
        request.name = kTestFile;
        request.options = GetParam() == 3 ? 32 : 0;
        driver_.create(files_, request);
        TableLayout layout;
        layout.name = "Names";
        layout.fields.resize(1);
        layout.fields[0].name = "Name";
        layout.fields[0].size = 50;
        driver_.open(files_, writing())->createTable(layout);
    }
    int opening(OpenRequest request)
    {
        try {
            driver_.open(files_, request);
        } catch (const EngineError& error) {
            return error.number();
        }
        return 0;
    }
    static void add(Store& store, const char* name)
    {
        const ValueView value = ValueView::text(name);
        store.writer("Names")->insert(std::span(&value, 1));
    }
    static std::string names(Store& store)
    {
        std::string all;
        const auto cursor = store.cursor("Names", std::nullopt);
        for (bool on = cursor->first(); on; on = cursor->next())
            all += std::string(cursor->field(0).asText()) + ".";
        return all;
    }

    jet::JetDriver driver_;
    MemoryFileSystem files_;
};

TEST_P(Sharing, oneWritesAloneManyReadTogether)
{
    {
        const auto writer = driver_.open(files_, writing());
        EXPECT_EQ(opening(reading()), 3045);
        EXPECT_EQ(opening(writing()), 3045);
    }
    const auto reader = driver_.open(files_, reading());
    EXPECT_EQ(opening(reading()), 0);
    EXPECT_EQ(opening(writing()), 3045);
}

TEST_P(Sharing, aLockFileThatNobodyHoldsIsLeftAlone)
{
    files_.put(kLockFile, std::vector<std::uint8_t>(64, ' '));
    const auto store = driver_.open(files_, writing());
    add(*store, "one");
    store->commit();
    EXPECT_EQ(files_.content(kLockFile), std::vector<std::uint8_t>(64, ' '));
}

TEST_P(Sharing, whatAnotherProgramHasOpenIsOnlyRead)
{
    files_.put(kLockFile, std::vector<std::uint8_t>(64, ' '));
    const auto other = files_.open(kLockFile, OpenMode::ReadWrite);
    ASSERT_TRUE(other->tryLock(LockKind::Exclusive));
    const auto before = files_.content(kTestFile);
    EXPECT_EQ(opening(reading()), 0);
    EXPECT_EQ(opening(writing()), 3027);
    OpenRequest alone = writing();
    alone.exclusive = true;
    EXPECT_EQ(opening(alone), 3045);
    CreateRequest copy;
    copy.name = "C:\\COPY.MDB";
    copy.keepPassword = true;
    EXPECT_THROW(driver_.compact(files_, alone, copy), EngineError);
    EXPECT_THROW(driver_.repair(files_, alone, [](const Problem&) {}), EngineError);
    EXPECT_EQ(files_.content(kTestFile), before);
    other->unlock();
    EXPECT_EQ(opening(writing()), 0);
}

TEST_P(Sharing, aProgramThatComesLaterFindsTheFileAsItWasCommitted)
{
    const auto store = driver_.open(files_, writing());
    add(*store, "one");
    store->commit();
    const auto before = files_.content(kTestFile);
    add(*store, "two");
    files_.put(kLockFile, std::vector<std::uint8_t>(64, ' '));
    auto other = files_.open(kLockFile, OpenMode::ReadWrite);
    ASSERT_TRUE(other->tryLock(LockKind::Exclusive));
    int error = 0;
    try {
        store->commit();
    } catch (const EngineError& e) {
        error = e.number();
    }
    EXPECT_EQ(error, 3045);
    EXPECT_EQ(files_.content(kTestFile), before);
    EXPECT_EQ(names(*store), "one.");
    other.reset();
    add(*store, "three");
    store->commit();
    EXPECT_EQ(names(*driver_.open(*memoryWith(files_.content(kTestFile)), reading())),
              "one.three.");
}

INSTANTIATE_TEST_SUITE_P(Jet, Sharing, ::testing::Values(3, 4));

}  // namespace
}  // namespace velnor::testing
