// Memo files of the three forms.
#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/xbase/memo_file.h"
#include "platform/memory_file_system.h"

using namespace velnor;
using namespace velnor::xbase;

namespace {

constexpr const char* kPath = "C:\\M.DBT";

class Memos {
public:
    Memos(MemoForm form, const std::vector<std::uint8_t>& content) : form_(form)
    {
        files.put(kPath, content);
        open();
    }
    explicit Memos(MemoForm form) : Memos(form, newMemoHeader(form, "ORDERS")) {}

    void open()
    {
        memo.reset();
        set.reset();
        set = std::make_unique<FileSet>(files, kPath, memoFileOptions(), false);
        memo = std::make_unique<MemoFile>(set->main(), form_);
    }
    std::uint32_t write(const std::string& text, std::uint64_t old = 0)
    {
        return memo->write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, true,
                           old);
    }
    std::string read(std::uint64_t block)
    {
        std::string text = "left over from before";
        return memo->read(block, text) ? text : "none";
    }

    MemoryFileSystem files;
    std::unique_ptr<FileSet> set;
    std::unique_ptr<MemoFile> memo;

private:
    MemoForm form_;
};

class EveryForm : public ::testing::TestWithParam<MemoForm> {};
INSTANTIATE_TEST_SUITE_P(Memo, EveryForm,
                         ::testing::Values(MemoForm::DbtIII, MemoForm::DbtIV, MemoForm::Fpt));

std::vector<std::uint8_t> bytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

}  // namespace

TEST_P(EveryForm, textsComeBackAfterReopening)
{
    Memos m(GetParam());
    const std::string longText(5000, 'x');
    const auto a = m.write("first\r\nline"), b = m.write(longText), c = m.write("third");
    m.set->commit();
    m.open();
    EXPECT_EQ(m.read(a), "first\r\nline");
    EXPECT_EQ(m.read(b), longText);
    EXPECT_EQ(m.read(c), "third");
}

TEST_P(EveryForm, aTextThatFitsIsChangedInPlace)
{
    Memos m(GetParam());
    const auto a = m.write(std::string(700, 'a')), b = m.write("b");
    const std::uint64_t size = m.memo->fileBytes();
    EXPECT_EQ(m.write(std::string(690, 'A'), a), a);
    EXPECT_EQ(m.memo->fileBytes(), size);
    EXPECT_EQ(m.read(a), std::string(690, 'A'));
    EXPECT_EQ(m.read(b), "b");
}

TEST_P(EveryForm, aLongerTextGoesToTheEndAndHurtsNoOther)
{
    Memos m(GetParam());
    const auto a = m.write("short"), b = m.write("neighbour");
    const auto moved = m.write(std::string(3000, 'z'), a);
    EXPECT_NE(moved, a);
    EXPECT_EQ(m.read(moved), std::string(3000, 'z'));
    EXPECT_EQ(m.read(b), "neighbour");
    EXPECT_GE(m.memo->nextFreeBlock(), moved);
}

TEST_P(EveryForm, blocksOutsideTheFileHoldNothing)
{
    Memos m(GetParam());
    m.write("only");
    EXPECT_EQ(m.read(0), "none");
    EXPECT_EQ(m.read(100000), "none");
    EXPECT_EQ(m.read(~0ull), "none");
}

TEST_P(EveryForm, aWrongNextFreeBlockOverwritesNothing)
{
    Memos m(GetParam());
    const auto a = m.write(std::string(2000, 'a'));
    m.set->main().writeAt(0, bytesOf(std::string(4, '\0')));
    const auto b = m.write("b");
    m.set->main().writeAt(0, bytesOf(std::string(4, '\xFF')));
    const auto c = m.write("c");
    EXPECT_EQ(m.read(a), std::string(2000, 'a'));
    EXPECT_EQ(m.read(b), "b");
    EXPECT_EQ(m.read(c), "c");
    EXPECT_LT(m.memo->fileBytes(), 8000u);
}

TEST_P(EveryForm, anEmptyOrShortFileIsNoReasonToFail)
{
    for (const std::size_t bytes : {0u, 3u, 20u, 511u}) {
        Memos m(GetParam(), std::vector<std::uint8_t>(bytes, 0));
        EXPECT_EQ(m.read(600), "none");
        EXPECT_EQ(m.read(m.write("text")), "text");
    }
}

TEST(MemoThree, theFirstEndMarkEndsAText)
{
    std::string file(512, '\0');
    file += "one\x1A\x1A"
            "old rest" +
            std::string(499, '.');
    Memos m(MemoForm::DbtIII, bytesOf(file));
    EXPECT_EQ(m.read(1), "one");
}

TEST(MemoThree, aTextWithTheEndMarkCannotBeStored)
{
    Memos m(MemoForm::DbtIII);
    EXPECT_THROW(m.write("a\x1A"
                         "b"),
                 EngineError);
    EXPECT_EQ(m.memo->fileBytes(), 512u);
}

TEST(MemoThree, aLostEndMarkEndsAtTheEndOfTheFile)
{
    Memos m(MemoForm::DbtIII, bytesOf(std::string(512, '\0') + "never ends"));
    EXPECT_EQ(m.read(1), "never ends");
    EXPECT_EQ(m.memo->extent(1).state, MemoExtent::State::CutShort);
}

TEST(MemoFour, smallBlocksMayBeginInsideTheHeader)
{
    std::string file(512, '\0');
    file[20] = 64;
    file.replace(64, 11, std::string("\xFF\xFF\x08\0\x0B\0\0\0abc", 11));
    Memos m(MemoForm::DbtIV, bytesOf(file));
    EXPECT_EQ(m.memo->blockSize(), 64u);
    EXPECT_EQ(m.read(1), "abc");
    EXPECT_EQ(m.write("new"), 8u);  // new ones go behind the 512 bytes
}

TEST(MemoFour, withoutItsMarkABlockIsReadAsTheOldForm)
{
    std::string file(1024, '\0');
    file.replace(512, 5, "old\x1A\x1A");
    Memos m(MemoForm::DbtIV, bytesOf(file));
    EXPECT_EQ(m.read(1), "old");
    EXPECT_EQ(m.memo->extent(1).state, MemoExtent::State::OtherForm);
    EXPECT_NE(m.write("new", 1), 1u);
}

TEST(MemoFour, aLengthBeyondTheFileIsCutToIt)
{
    std::string file(512, '\0');
    file += std::string("\xFF\xFF\x08\0\xFF\xFF\xFF\x7F", 8) + "rest";
    Memos m(MemoForm::DbtIV, bytesOf(file));
    EXPECT_EQ(m.read(1), "rest");
    EXPECT_EQ(m.memo->extent(1).state, MemoExtent::State::CutShort);
}

TEST(MemoFpt, aBlockSizeOfZeroIsOneByte)
{
    Memos m(MemoForm::Fpt, std::vector<std::uint8_t>(512, 0));
    EXPECT_EQ(m.memo->blockSize(), 1u);
    EXPECT_EQ(m.write("abc"), 512u);
    EXPECT_EQ(m.write("d"), 523u);
    EXPECT_EQ(m.read(512), "abc");
}

TEST(MemoFpt, newFilesHaveBlocksOf64AndBeginAtTheEighth)
{
    Memos m(MemoForm::Fpt);
    EXPECT_EQ(m.memo->blockSize(), 64u);
    EXPECT_EQ(m.write("abc"), 8u);
    EXPECT_EQ(m.memo->nextFreeBlock(), 9u);
    EXPECT_EQ(m.memo->fileBytes(), 576u);
}

TEST(Memo, aRolledBackTextIsGone)
{
    Memos m(MemoForm::DbtIV);
    const auto a = m.write("kept");
    m.set->commit();
    const auto b = m.write("dropped");
    m.set->rollback();
    EXPECT_EQ(m.read(b), "none");
    EXPECT_EQ(m.read(a), "kept");
    EXPECT_EQ(m.write("again"), b);
}
