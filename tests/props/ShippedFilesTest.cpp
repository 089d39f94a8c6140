#include "base/GenFun.h"
#include "props/Pages.h"
#include "props/PropertyFile.h"
#include "props/PropertyFiles.h"
#include "standins/sim/DemoImage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vornadel::test
{
namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

constexpr std::size_t kBlock = 0x7E00; // of the demo image

/// The parts of the block with the configuration; ids, strings and the Container ID lie between
/// them.
bool isConfiguration(std::uint32_t offset)
{
    return (offset >= 11 && offset <= 41) || (offset >= 94 && offset <= 255);
}

using Field = std::pair<std::uint32_t, std::uint8_t>;

/// One included file. Items that are not bound to the image have no field in it.
class ShippedFile : public ::testing::TestWithParam<const char*>
{
protected:
    ShippedFile()
    {
        std::string problem;
        items = readPropertyFile(std::string(VORNADEL_DEFINITIONS "/") + GetParam(), problem);
        EXPECT_EQ(problem, "");
        std::copy_if(items.begin(), items.end(), std::back_inserter(bound),
                     [](const auto& item) { return item->key != 0; });
    }

    PropItemList items;
    PropItemList bound;
};

TEST_P(ShippedFile, HasSixtyPropertiesOrMoreAndAllPages)
{
    EXPECT_THAT(items, SizeIs(Ge(60U)));
    std::map<std::string, int> perPage;
    std::set<std::string> names;
    for (const auto& item : items) {
        ++perPage[item->pageName];
        EXPECT_TRUE(names.insert(item->propName).second) << item->propName;
        EXPECT_NE(item->groupName, "") << item->propName;
        EXPECT_TRUE(item->key == 0 || !item->propDesc.empty()) << item->propName;
    }
    EXPECT_THAT(perPage, SizeIs(kPropertyPages.size()));
    for (const std::string_view page : kPropertyPages) {
        EXPECT_THAT(perPage[std::string(page)], Ge(10)) << page;
    }
}

TEST_P(ShippedFile, HasMasksOfOneRunOfBitsInTheConfiguration)
{
    for (const auto& item : bound) {
        ASSERT_NE(item->mask, 0) << item->propName;
        const unsigned field = unsigned{item->mask} >> GF_Mask2Shift(item->mask);
        EXPECT_EQ(field & (field + 1), 0U) << item->propName << " has gaps in its mask";
        EXPECT_TRUE(isConfiguration(item->addr)) << item->propName << " lies at " << item->addr;
    }
}

TEST_P(ShippedFile, HasNoBitInTwoProperties)
{
    std::map<std::uint32_t, unsigned> taken;
    for (const auto& item : bound) {
        EXPECT_EQ(taken[item->addr] & item->mask, 0U) << item->propName;
        taken[item->addr] |= item->mask;
    }
}

TEST_P(ShippedFile, ListsTheEnablingBitOfEveryPropertyThatHasOne)
{
    std::set<Field> listed;
    for (const auto& item : bound) {
        if (item->dataList == std::vector<std::string>{"0", "1"}) {
            listed.insert({item->addr, item->mask});
        }
    }
    int dependent = 0;
    for (const auto& item : items) {
        EXPECT_EQ(item->baseOnAddr == 0, item->baseOnMask == 0) << item->propName;
        if (item->baseOnAddr != 0) {
            ++dependent;
            EXPECT_EQ(item->baseOnMask & (item->baseOnMask - 1), 0) << item->propName;
            EXPECT_TRUE(listed.contains({item->baseOnAddr, item->baseOnMask})) << item->propName;
        }
    }
    EXPECT_GE(dependent, 10);
}

TEST_P(ShippedFile, OffersOptionsThatReadBackAsTheyWereChosen)
{
    // A choice is written as the position of its entry, but shown by searching the value among the
    // data texts.
    for (const auto& item : bound) {
        for (std::size_t position = 0; position < item->dataList.size(); ++position) {
            std::uint8_t byte = 0;
            GF_SetMaskValue(&byte, item->mask, static_cast<std::uint8_t>(position));
            EXPECT_EQ(std::to_string(GF_GetMaskValue(&byte, item->mask)), item->dataList[position])
                << item->propName << ", " << item->propList[position];
        }
    }
}

TEST_P(ShippedFile, KnowsEveryValueOfTheDemoImage)
{
    for (const std::uint16_t version : {kDemoVersion100, kDemoVersion101}) {
        const std::vector<std::uint8_t> image = demoImage(version);
        for (const auto& item : bound) {
            const std::string value =
                std::to_string(GF_GetMaskValue(&image.at(kBlock + item->addr), item->mask));
            if (!item->dataList.empty()) {
                EXPECT_THAT(item->dataList, Contains(value)) << item->propName;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, ShippedFile, ::testing::Values("SimHub-A.INI", "SimHub-B.INI"),
                         [](const auto& file) { return std::string(1, file.param[7]); });

TEST(PropertyPages, AreInTheirOrder)
{
    EXPECT_THAT(kPropertyPages,
                ElementsAre("SSC", "DSP OCP/U1/U2", "System", "USP PHY", "DSP Setting", "DSP PHY"));
}

TEST(ShippedFiles, AreTwo)
{
    EXPECT_THAT(findPropertyFiles(VORNADEL_DEFINITIONS),
                UnorderedElementsAre("SimHub-A.INI", "SimHub-B.INI"));
}

} // namespace
} // namespace vornadel::test
