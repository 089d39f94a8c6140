#include "props/PropertyChoice.h"
#include "props/PropertyEdit.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace vornadel::test
{

namespace
{

class PropertyChoice : public testing::Test
{
protected:
    PropItem& add(const char* page, const char* name, std::uint32_t addr = 9, std::uint8_t mask = 3)
    {
        auto item = std::make_shared<PropItem>();
        item->key = static_cast<std::uint8_t>(items.size() + 1);
        item->pageName = page;
        item->propName = name;
        item->addr = addr;
        item->mask = mask;
        item->dataList = {"0", "1", "2"};
        item->propList = {"Off", "On", "1"};
        items.push_back(item);
        return *item;
    }
    std::vector<std::string> named(std::string_view name) const
    {
        std::vector<std::string> names;
        for (const auto& item : propertiesNamed(items, name)) {
            names.push_back(fullName(*item));
        }
        return names;
    }

    PropItemList items;
    std::array<std::uint8_t, 256> block{};
};

using Names = std::vector<std::string>;
using Positions = std::vector<std::size_t>;

TEST_F(PropertyChoice, FindsAPropertyByNameOrByPageAndName)
{
    add("System", "Twice");
    add("DSP OCP/U1/U2", "Twice");
    const PropItem& once = add("System", "Once/Only");
    EXPECT_EQ(named("Once/Only"), Names{"System/Once/Only"});
    EXPECT_EQ(named("System/Once/Only"), Names{"System/Once/Only"});
    EXPECT_EQ(named("Twice"), (Names{"System/Twice", "DSP OCP/U1/U2/Twice"}));
    EXPECT_EQ(named("DSP OCP/U1/U2/Twice"), Names{"DSP OCP/U1/U2/Twice"});
    EXPECT_EQ(named("twice"), Names{});
    EXPECT_EQ(distinctName(once, items), "Once/Only");
    EXPECT_EQ(distinctName(*items[0], items), "System/Twice");
}

TEST_F(PropertyChoice, FindsAnOptionByValueLabelOrBoth)
{
    const PropItem& item = add("System", "Any");
    EXPECT_EQ(optionsNamed(item, "Off"), Positions{0});
    EXPECT_EQ(optionsNamed(item, "2"), Positions{2});
    EXPECT_EQ(optionsNamed(item, "1"), (Positions{1, 2})) << "a value, and a label";
    EXPECT_EQ(optionsNamed(item, "1 : On"), Positions{1});
    EXPECT_EQ(optionsNamed(item, "3"), Positions{});
}

TEST_F(PropertyChoice, SaysWhichPropertiesCannotBeSet)
{
    EXPECT_EQ(flawOf(add("System", "Sound")), PropertyFlaw::None);
    EXPECT_EQ(flawOf(add("system", "Hidden")), PropertyFlaw::NotOnAPage);
    EXPECT_EQ(flawOf(add("System", "No bits", 9, 0)), PropertyFlaw::NoBits);
    PropItem& constant = add("System", "Constant");
    constant.dataList.clear();
    constant.propList.clear();
    EXPECT_EQ(flawOf(constant), PropertyFlaw::NoOptions);
}

TEST_F(PropertyChoice, NamesThePropertiesThatDifferAndOmitsTheirBits)
{
    add("System", "Same", 9, 0x01);
    add("System", "Other", 9, 0x06);
    add("System", "Unlisted", 10, 0xF0);
    std::array<std::uint8_t, 256> after = block;
    after[9] = 0x84;
    after[10] = 0x51;
    const auto differences = propertyDifferences(items, block, after);
    ASSERT_EQ(differences.size(), 2U);
    EXPECT_EQ(differences[0].name, "Other");
    EXPECT_EQ(differences[0].before, "0 : Off");
    EXPECT_EQ(differences[0].after, "2 : 1");
    EXPECT_EQ(differences[1].after, "5") << "no option stands for it";
    std::array<std::uint8_t, 256> compared{};
    compared.fill(0xFF);
    omitProperties(items, compared);
    EXPECT_EQ(compared[9], 0xF8);
    EXPECT_EQ(compared[10], 0x0F);
    EXPECT_EQ(compared[11], 0xFF);
}

} // namespace

} // namespace vornadel::test
