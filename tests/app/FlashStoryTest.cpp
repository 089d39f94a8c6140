#include "tests/app/FlashPageUnderTest.h"

#include <map>

namespace vornadel::test
{

namespace
{

using FlashStory = FlashPageUnderTest;

/// The differences by offset.
std::map<std::size_t, std::uint8_t> difference(const std::vector<std::uint8_t>& before,
                                               const std::vector<std::uint8_t>& after)
{
    std::map<std::size_t, std::uint8_t> changed;
    EXPECT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (before[i] != after[i]) {
            changed[i] = after[i];
        }
    }
    return changed;
}

TEST_F(FlashStory, ChangesInTheHubWhatWasChangedInTheWindowAndNothingElse)
{
    const std::vector<std::uint8_t> before = hub().flash();
    ASSERT_EQ(before.size(), 32768U);
    read();
    retype(tool().txtSN_FwFlash, "SN0042");
    choose(1, 1); // Spread Spectrum
    EXPECT_EQ(value(1), "1 : Enable");
    choose(2, 3); // Depth
    EXPECT_EQ(value(2), "3 : High");
    EXPECT_EQ(redText(), "B5 ");
    const std::string path = directory() + "/changed.bin";
    saveAs(path);

    chooseByTyping(tool().btnSelect_EasyUpdate, QString::fromStdString(path));
    EXPECT_EQ(tool().txtSN_EasyUpdate->text(), "SN0042");
    click(tool().btnUpdate_EasyUpdate);
    EXPECT_TRUE(waitUntilEnabled());
    EXPECT_TRUE(progressText().ends_with("Update FW Success\n")) << progressText();

    read();
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN0042");
    EXPECT_EQ(value(1), "1 : Enable");
    EXPECT_EQ(value(2), "3 : High");
    // 43 and on: 2 + 8, 2 + 8, and the serial number's six characters from 43 + 22.
    const std::map<std::size_t, std::uint8_t> expected = {{kDemoBlock + 9, 0x01},
                                                          {kDemoBlock + 20, 0xB5},
                                                          {kDemoBlock + 42, 0x02},
                                                          {kDemoBlock + 43 + 22 + 4, '4'},
                                                          {kDemoBlock + 43 + 22 + 5, '2'}};
    EXPECT_EQ(difference(before, hub().flash()), expected);
    EXPECT_EQ(difference(before, bytesOf(path)), expected);
}

} // namespace

} // namespace vornadel::test
