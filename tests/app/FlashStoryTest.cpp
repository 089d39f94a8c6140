#include "tests/app/FlashPageUnderTest.h"

namespace vornadel::test
{

namespace
{

using FlashStory = FlashPageUnderTest;

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
    std::vector<std::uint8_t> expected = before;
    expected[kDemoBlock + 9] = 0x01;
    expected[kDemoBlock + 20] = 0xB5;
    expected[kDemoBlock + 42] = 0x02;
    constexpr std::size_t kSerial = kDemoBlock + 43 + 22; // behind two strings of ten and a header
    expected[kSerial + 4] = '4';
    expected[kSerial + 5] = '2';
    EXPECT_TRUE(hub().flash() == expected);
    EXPECT_TRUE(bytesOf(path) == expected);
}

} // namespace

} // namespace vornadel::test
