// Property blocks: what layouts ask for, and what must survive a rewriting.
#include <gtest/gtest.h>

#include "access/engine_error.h"
#include "access/formats/jet/properties.h"

namespace velnor::jet {
namespace {

const PropertyText kWide{};
const PropertyText kNarrow{true, CodePage::find(1252)};

std::span<const std::uint8_t> bytesOf(const std::string& s)
{
    return {reinterpret_cast<const std::uint8_t*>(s.data()), s.size()};
}

class BothVersions : public testing::TestWithParam<PropertyText> {};
INSTANTIATE_TEST_SUITE_P(Versions, BothVersions, testing::Values(kWide, kNarrow));

TEST_P(BothVersions, whatIsSet_isReadBack)
{
    PropertyBlock block(GetParam());
    block.setFlag("N\xC3\xA4me", "Required", true);
    block.setText("N\xC3\xA4me", "DefaultValue", PropertyType::Memo, "\"x\"");
    block.setText("", "Description", PropertyType::Text, "All of them");
    const std::string stored = block.build();
    EXPECT_EQ(stored.substr(0, 4),
              GetParam().jet3 ? std::string("KKD\0", 4) : std::string("MR2\0", 4));
    const PropertyBlock again = PropertyBlock::parse(bytesOf(stored), GetParam());
    EXPECT_TRUE(again.required("N\xC3\xA4me"));
    EXPECT_FALSE(again.required("Other"));
    EXPECT_TRUE(again.allowZeroLength("N\xC3\xA4me")) << "not said: not enforced";
    EXPECT_EQ(again.defaultValue("N\xC3\xA4me"), "\"x\"");
    EXPECT_EQ(again.description(""), "All of them");
    EXPECT_EQ(again.build(), stored);
}

TEST_P(BothVersions, namesAreBlindToCase)
{
    PropertyBlock block(GetParam());
    block.setFlag("City", "AllowZeroLength", false);
    EXPECT_FALSE(block.allowZeroLength("CITY"));
}

TEST_P(BothVersions, emptyText_removesTheProperty_andTheLastOneTheBlock)
{
    PropertyBlock block(GetParam());
    block.setText("a", "ValidationRule", PropertyType::Memo, ">0");
    block.setText("a", "ValidationRule", PropertyType::Memo, "");
    EXPECT_EQ(block.build(), "");
    EXPECT_EQ(PropertyBlock::parse({}, GetParam()).build(), "");
}

TEST_P(BothVersions, renamedField_takesItsPropertiesAlong)
{
    PropertyBlock block(GetParam());
    block.setText("old", "ValidationText", PropertyType::Text, "no");
    block.renameOwner("OLD", "new");
    EXPECT_EQ(block.validationText("new"), "no");
    EXPECT_EQ(block.validationText("old"), "");
}

TEST(PropertyBlocks, unknownChunksAndTypes_areKept)
{
    PropertyBlock block(kWide);
    block.setFlag("a", "Odd", true);
    std::string stored = block.build();
    stored += std::string("\x0A\0\0\0\x77\0test", 10);  // a chunk of kind 77
    PropertyBlock again = PropertyBlock::parse(bytesOf(stored), kWide);
    EXPECT_EQ(again.build(), stored);
    again.setFlag("a", "More", false);
    EXPECT_NE(again.build().find(stored.substr(stored.size() - 10)), std::string::npos);
}

TEST(PropertyBlocks, damage_isAnErrorAtEveryByte)
{
    PropertyBlock block(kWide);
    block.setFlag("a", "Required", true);
    block.setText("b", "DefaultValue", PropertyType::Memo, "5");
    const std::string good = block.build();
    for (std::size_t i = 0; i < good.size(); ++i) {
        for (const char flip : {'\x01', '\x80', '\xFF'}) {
            std::string bad = good;
            bad[i] = static_cast<char>(bad[i] ^ flip);
            try {
                PropertyBlock::parse(bytesOf(bad), kWide).build();
            } catch (const EngineError& error) {
                EXPECT_EQ(error.code(), EngineErrorNumber::UnexpectedFormat);
            }
        }
        if (i != 0 && i != 4) {
            bool refused = false;
            try {
                const std::string cut = good.substr(0, i);
                refused = PropertyBlock::parse(bytesOf(cut), kWide).build() != good;
            } catch (const EngineError&) {
                refused = true;
            }
            EXPECT_TRUE(refused) << "cut at " << i;
        }
    }
}

TEST(PropertyBlocks, textThatTheCodePageLacks_isRefused)
{
    PropertyBlock block(kNarrow);
    EXPECT_THROW(block.setText("a", "Description", PropertyType::Text, "\xE3\x81\x82"),
                 EngineError);
}

}  // namespace
}  // namespace velnor::jet
