#include "props/PropertyFile.h"
#include "tests/props/DefinitionFolder.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<int> keysOf(const PropItemList& items)
{
    std::vector<int> keys;
    for (const std::shared_ptr<PropItem>& item : items) {
        keys.push_back(item->key);
    }
    return keys;
}

class PropertyFile : public DefinitionFolder
{
protected:
    /// Property 05 with these lines in its section.
    PropItem property(const std::string& lines)
    {
        const PropItemList items = read("[HubFF_USB_05]\nPropName = Five\n" + lines);
        EXPECT_EQ(problem, "");
        EXPECT_THAT(keysOf(items), ElementsAre(5));
        return items.empty() ? PropItem() : *items.front();
    }

    std::uint32_t address(const std::string& text)
    {
        return property("PropAddr = " + text + "\n").addr;
    }
    std::uint8_t mask(const std::string& text)
    {
        return property("PropMask = " + text + "\n").mask;
    }
};

TEST_F(PropertyFile, FillsEveryField)
{
    const PropItem item =
        property("PageName = DSP OCP/U1/U2\nGroupName = Over-current\nPropDesp = \"Watch; react\"\n"
                 "PropAddr = 14\nPropMask = 6\nBaseOnAddr = 12\nBaseOnMask = 16\n"
                 "PropOption_00 = Off\nDataOption_00 = 3\nPropOption_0F = On\n");
    EXPECT_EQ(item.property, "Five");
    EXPECT_EQ(item.propName, "Five");
    EXPECT_EQ(item.pageName, "DSP OCP/U1/U2");
    EXPECT_EQ(item.groupName, "Over-current");
    EXPECT_EQ(item.propDesc, "Watch; react");
    EXPECT_EQ(item.addr, 14U);
    EXPECT_EQ(item.mask, 6);
    EXPECT_EQ(item.baseOnAddr, 12U);
    EXPECT_EQ(item.baseOnMask, 16);
    EXPECT_THAT(item.propList, ElementsAre("Off", "On"));
    EXPECT_THAT(item.dataList, ElementsAre("3", "15"));
    EXPECT_EQ(item.curValue, "3");
    EXPECT_EQ(item.curDataValue, "");
    EXPECT_EQ(item.curPropValue, "");
}

TEST_F(PropertyFile, IsReadInTheOrderOfNumbersWithGaps)
{
    EXPECT_THAT(keysOf(read("[HubFF_USB_FE]\nPropName = z\n[HubFF_USB_10]\nPropName = b\n"
                            "[HubFF_USB_00]\nPropName = a\n[Other]\nPropName = x\n")),
                ElementsAre(0x00, 0x10, 0xFE));
}

TEST_F(PropertyFile, IgnoresSectionFfEvenWhenItIsTheOnlyOne)
{
    EXPECT_THAT(read("[HubFF_USB_FF]\nPropName = Last\n"), IsEmpty());
    EXPECT_EQ(problem, "");
}

TEST_F(PropertyFile, FindsNamesInAnyCase)
{
    const PropItemList items = read("[hubff_usb_0a]\nPROPNAME = Ten\npropoption_0b = On\n");
    ASSERT_THAT(keysOf(items), ElementsAre(0x0A));
    EXPECT_EQ(items[0]->propName, "Ten");
    EXPECT_THAT(items[0]->dataList, ElementsAre("11"));
}

TEST_F(PropertyFile, WithoutANameYieldsNoProperty)
{
    EXPECT_THAT(read("[HubFF_USB_05]\nPropAddr = 5\n[HubFF_USB_06]\nPropName "
                     "=\n[HubFF_USB_07]\nPropName = \"\"\n"),
                IsEmpty());
    EXPECT_EQ(problem, "");
}

TEST_F(PropertyFile, TakesDecimalNumbersAlone)
{
    EXPECT_EQ(address("0x20"), 0U);
    EXPECT_EQ(address("1F"), 1U);
    EXPECT_EQ(address("010"), 10U);
    EXPECT_EQ(address("12 34"), 12U);
    EXPECT_EQ(address("7/8"), 7U);
    EXPECT_EQ(address("7:8"), 7U);
    EXPECT_EQ(address("twelve"), 0U);
    EXPECT_EQ(address("~12"), 0U);
    EXPECT_EQ(address(""), 0U);
    EXPECT_EQ(mask("48"), 0x30);
}

TEST_F(PropertyFile, TakesBlanksAndASignBeforeANumber)
{
    EXPECT_EQ(address("\" \t 12\""), 12U);
    EXPECT_EQ(address("+12"), 12U);
    EXPECT_EQ(address("-1"), 0xFFFFFFFF);
    EXPECT_EQ(address("+-1"), 0U);
    EXPECT_EQ(address("- 1"), 0U);
    EXPECT_EQ(mask("-1"), 0xFF);
}

TEST_F(PropertyFile, CutsNumbersToTheirWidth)
{
    EXPECT_EQ(mask("300"), 44);
    EXPECT_EQ(mask("256"), 0);
    EXPECT_EQ(mask("4294967297"), 1);
    EXPECT_EQ(property("BaseOnMask = 257\n").baseOnMask, 1);
    EXPECT_EQ(address("4294967295"), 0xFFFFFFFF);
    EXPECT_EQ(address("4294967298"), 2U);
    EXPECT_EQ(property("BaseOnAddr = 4294967298\n").baseOnAddr, 2U);
    EXPECT_EQ(address("18446744073709551619"), 3U);                    // 2^64 + 3
    EXPECT_EQ(address("340282366920938463463374607431768211460"), 4U); // 2^128 + 4
    EXPECT_EQ(address("1" + std::string(500, '0')), 0U);               // divisible by 2^32
    EXPECT_EQ(address("-4294967297"), std::numeric_limits<std::uint32_t>::max());
}

TEST_F(PropertyFile, SkipsASlotWithoutALabelAndReadsTheLaterOnes)
{
    const PropItem item = property("PropOption_00 = Off\nDataOption_01 = 7\nPropOption_02 = On\n");
    EXPECT_THAT(item.propList, ElementsAre("Off", "On"));
    EXPECT_THAT(item.dataList, ElementsAre("0", "2"));
    EXPECT_EQ(item.curValue, "0");
}

TEST_F(PropertyFile, KeepsADataTextAsText)
{
    EXPECT_THAT(property("PropOption_00 = Odd\nDataOption_00 = 0x07 or so\n").dataList,
                ElementsAre("0x07 or so"));
    EXPECT_THAT(property("PropOption_09 = None\nDataOption_09 = \"\"\n").dataList,
                ElementsAre("9"));
}

TEST_F(PropertyFile, ReadsSixteenOptionsAndNoMore)
{
    std::string lines;
    for (int slot = 0; slot < 0x12; ++slot) {
        char line[64];
        std::snprintf(line, sizeof line, "PropOption_%02X = Label %d\n", slot, slot);
        lines += line;
    }
    const PropItem item = property(lines);
    ASSERT_EQ(item.propList.size(), 16U);
    ASSERT_EQ(item.dataList.size(), 16U);
    EXPECT_EQ(item.propList.back(), "Label 15");
    EXPECT_EQ(item.dataList.back(), "15");
}

TEST_F(PropertyFile, WithoutOptionsHoldsAConstant)
{
    const PropItem item = property("DataOption_00 = 1\n");
    EXPECT_EQ(item.curValue, "Const Value");
    EXPECT_THAT(item.propList, IsEmpty());
    EXPECT_THAT(item.dataList, IsEmpty());
}

} // namespace
} // namespace vornadel::test
