#include "hub/SupportedIds.h"
#include "tests/app/FlashPageUnderTest.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <gmock/gmock.h>

#include <utility>

namespace vornadel::test
{

namespace
{

class IdentityEditing : public FlashPageUnderTest
{
protected:
    void SetUp() override
    {
        FlashPageUnderTest::SetUp();
        read();
    }

    static void paste(QLineEdit* field, const QString& text)
    {
        QGuiApplication::clipboard()->setText(text);
        field->setFocus();
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_V, Qt::ControlModifier);
    }

    /// The demo image with some bytes of its block changed.
    static std::vector<std::uint8_t>
    demoWith(const std::vector<std::pair<std::size_t, std::uint8_t>>& changes)
    {
        std::vector<std::uint8_t> image = demoImage();
        for (const auto& [offset, value] : changes) {
            image[kDemoBlock + offset] = value;
        }
        return image;
    }

    static std::string consoleOf(const std::function<void()>& action)
    {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }
    QString dumped(qsizetype offset)
    {
        const qsizetype at = offset / 16 * 57 + 6 + 3 * (offset % 16) + (offset % 16 >= 8 ? 2 : 0);
        return hexText().mid(at, 2);
    }
};

TEST_F(IdentityEditing, CutsAFifthCharacterAndSaysSo)
{
    tool().txtHSPID_FwFlash->setText("00025");
    expectAlert("VID length should be 4.", [this] { type(tool().txtVID_FwFlash, "5"); });
    EXPECT_EQ(tool().txtVID_FwFlash->text(), "1209");
    EXPECT_EQ(tool().txtHSPID_FwFlash->text(), "00025") << "one field at a time";
    tool().txtHSPID_FwFlash->setText("0002");
    EXPECT_EQ(saved(), demoImage()) << "the same value sets no flag";
    expectAlert("SSPID length should be 4.", [this] { type(tool().txtSSPID_FwFlash, "5"); });
    EXPECT_EQ(tool().txtSSPID_FwFlash->text(), "0001");
    expectAlert("HSPID length should be 4.", [this] { paste(tool().txtHSPID_FwFlash, "abcdef"); });
    EXPECT_EQ(tool().txtHSPID_FwFlash->text(), "abcd");
    EXPECT_EQ(saved(), demoWith({{6, 0xAB}, {7, 0xCD}, {10, 0x01}}));
}

TEST_F(IdentityEditing, WritesEveryKeystroke)
{
    retype(tool().txtVID_FwFlash, "");
    EXPECT_EQ(dumped(2), "00");
    EXPECT_EQ(dumped(10), "01");
    for (const auto& [key, first, second] :
         {std::tuple{"a", "A0", "00"}, {"b", "AB", "00"}, {"c", "AB", "C0"}, {"d", "AB", "CD"}}) {
        type(tool().txtVID_FwFlash, key);
        EXPECT_EQ(dumped(2), first);
        EXPECT_EQ(dumped(3), second);
        EXPECT_EQ(redText().size(), 20) << "bytes 2 to 7";
    }
    EXPECT_EQ(saved(), demoWith({{2, 0xAB}, {3, 0xCD}, {10, 0x01}}));
}

TEST_F(IdentityEditing, TellsTheConsoleOldAndNewIds)
{
    const std::string console = consoleOf([this] { paste(tool().txtVID_FwFlash, "ab"); });
    EXPECT_EQ(console, "ab\nOld VID : 1209\nOld SSPID : 0001\nOld HSPID : 0002\n"
                       "VID: ab    SSPID1: 0001    HSPID1: 0002\nNot Same\n"
                       "offsetBegin :2   ;   noffsetEnd :8\nEnter numberOfRowsInTableView\n");
}

TEST_F(IdentityEditing, TellsTheConsoleWhichTextChanged)
{
    const std::string console = consoleOf([this] { paste(tool().txtSN_FwFlash, "7"); });
    EXPECT_EQ(console,
              "7\nVornadel\nDemo Hub\n7\n{5d0fc271-3a94-4e6b-9c18-27b0e463d108}\nChange-SN\n"
              "offsetBegin :43   ;   noffsetEnd :94\nEnter numberOfRowsInTableView\n");
}

TEST_F(IdentityEditing, SetsTheFlagOfEachText)
{
    type(tool().txtManu_FwFlash, "!");
    EXPECT_EQ(dumped(42), "08");
    type(tool().txtPro_FwFlash, "!");
    EXPECT_EQ(dumped(42), "0C");
    type(tool().txtSN_FwFlash, "!");
    EXPECT_EQ(dumped(42), "0E");
    type(tool().txtContainerID_FwFlash, "!");
    EXPECT_EQ(dumped(42), "0F");
    EXPECT_TRUE(redText().startsWith("0B 03 56 6F 72 \n7E30h:"));
}

TEST_F(IdentityEditing, TakesTheThirtiethCharacterAway)
{
    type(tool().txtSN_FwFlash, "2345678"); // 8 + 8 + 13
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN00012345678");
    type(tool().txtSN_FwFlash, "9");
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN00012345678");
    type(tool().txtManu_FwFlash, "x");
    EXPECT_EQ(tool().txtManu_FwFlash->text(), "Vornadel");
    EXPECT_EQ(dumped(43), "0A");
    EXPECT_EQ(dumped(42), "02") << "the manufacturer never changed";
    QTest::keyClick(tool().txtSN_FwFlash, Qt::Key_Home);
    QTest::keyClicks(tool().txtSN_FwFlash, "ab");
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "abSN000123456");
    EXPECT_EQ(tool().txtSN_FwFlash->cursorPosition(), 2);
}

TEST_F(IdentityEditing, TakesAWideCharacterAwayWhole)
{
    type(tool().txtSN_FwFlash, "234567"); // one is free
    paste(tool().txtSN_FwFlash, QString("SN0001234567") + QString::fromUtf8("\xF0\x9F\x98\x80"));
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN0001234567");
    EXPECT_EQ(dumped(43), "0A") << "and the strings are not wiped";
}

TEST_F(IdentityEditing, WipesTheStringsAfterAPasteOfFortyCharacters)
{
    paste(tool().txtManu_FwFlash, QString(40, 'm'));
    EXPECT_EQ(tool().txtManu_FwFlash->text(), QString(39, 'm'))
        << "one character is taken away, no more";
    for (qsizetype offset = 43; offset < 78; ++offset) {
        EXPECT_EQ(dumped(offset), "00") << offset;
    }
    const QString before = tool().txtContainerID_FwFlash->text();
    type(tool().txtContainerID_FwFlash, "7");
    EXPECT_EQ(tool().txtContainerID_FwFlash->text(), before) << "there is no room left";
}

TEST_F(IdentityEditing, KeepsTheBytesOfAStringThatIsNotUtf8)
{
    // "Caf\xE9" with 29 bytes above 0x7F in the area's other strings, so that no byte may grow.
    std::vector<std::uint8_t> image = demoImage();
    const std::string area = "\x06\x03"
                             "Caf\xE9"
                             "\x1A\x03" +
                             std::string(24, '\xFC') +
                             "\x03\x03"
                             "1";
    std::copy(area.begin(), area.end(), image.begin() + kDemoBlock + 43);
    loadFile(writeFile("latin.bin", image));
    EXPECT_EQ(tool().txtManu_FwFlash->text(), QString::fromLatin1("Caf\xE9"));
    EXPECT_EQ(tool().txtPro_FwFlash->text(), QString(24, QChar(0xFC)));
    EXPECT_EQ(saved(), image);

    tool().txtPro_FwFlash->setFocus();
    QTest::keyClick(tool().txtPro_FwFlash, Qt::Key_Backspace);
    EXPECT_EQ(dumped(43 + 6), "19");
    EXPECT_EQ(dumped(43 + 5), "E9");
    EXPECT_EQ(dumped(42), "04") << "the other strings have not changed";
    paste(tool().txtManu_FwFlash, QString::fromUtf8("Caf\xC3\xA9\xE2\x82\xAC"));
    EXPECT_EQ(tool().txtManu_FwFlash->text(), QString::fromLatin1("Caf\xE9"))
        << "a character that Latin-1 lacks would take more bytes than are free";
    EXPECT_EQ(dumped(43) + dumped(43 + 5), "06E9");
}

TEST_F(IdentityEditing, WritesUtf8IntoAStringThatIsUtf8)
{
    paste(tool().txtManu_FwFlash, QString::fromUtf8("M\xC3\xBC"));
    EXPECT_EQ(dumped(43), "05");
    EXPECT_EQ(dumped(46) + dumped(47), "C3BC");
    loadFile(writeFile("utf8.bin", saved()));
    EXPECT_EQ(tool().txtManu_FwFlash->text(), QString::fromUtf8("M\xC3\xBC"));
}

TEST_F(IdentityEditing, CountsTheDigitsOfAnIdInCharacters)
{
    paste(tool().txtVID_FwFlash, QString::fromUtf8("\xC3\xBC") + "123");
    EXPECT_EQ(dumped(2) + dumped(3), "0123") << "what is no digit counts as 0";
    EXPECT_EQ(saved(), demoWith({{2, 0x01}, {3, 0x23}, {10, 0x01}}));
    paste(tool().txtVID_FwFlash, QString::fromUtf8("\xF0\x9F\x98\x80") + "209");
    EXPECT_EQ(dumped(2) + dumped(3), "0209") << "four characters, and no alert";
}

TEST_F(IdentityEditing, HearsWhatAssistiveTechnologyPutsIn)
{
    const auto access = [](QLineEdit* field) {
        QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(field);
        return heard == nullptr ? nullptr : heard->editableTextInterface();
    };
    ASSERT_NE(access(tool().txtVID_FwFlash), nullptr);
    access(tool().txtVID_FwFlash)->replaceText(0, 2, "ab");
    EXPECT_EQ(dumped(2) + dumped(3), "AB09");
    access(tool().txtSN_FwFlash)->deleteText(2, 5);
    access(tool().txtSN_FwFlash)->insertText(0, "x");
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "xSN1");
    EXPECT_EQ(dumped(63), "06");
    EXPECT_EQ(dumped(42), "02");
    QAccessible::queryAccessibleInterface(tool().txtSSPID_FwFlash)
        ->setText(QAccessible::Value, "00cd");
    EXPECT_EQ(dumped(4) + dumped(5), "00CD");
}

TEST_F(IdentityEditing, HearsNothingOfWhatTheProgramPutsIn)
{
    const std::string console = consoleOf([this] {
        tool().txtVID_FwFlash->setText("FFFFF");
        tool().txtManu_FwFlash->setText("nobody typed this");
        settleEvents();
    });
    EXPECT_EQ(console, "");
    EXPECT_EQ(dumped(2), "12");
}

class UpdateImageFromTheFields : public FlashPageUnderTest
{
protected:
    void SetUp() override
    {
        FlashPageUnderTest::SetUp();
        chooseByTyping(tool().btnSelect_EasyUpdate,
                       QString::fromStdString(writeFile("demo.bin", demoImage())));
    }

    /// The content of the update image, read back from the hub.
    std::vector<std::uint8_t> updateImage()
    {
        click(tool().btnUpdate_EasyUpdate);
        EXPECT_TRUE(waitUntilEnabled());
        return hub().flash();
    }
};

TEST_F(UpdateImageFromTheFields, TakesIdsVersionAndStrings)
{
    SupportedIdList.at(1) = {1, 0x1209, 0x00AB, 0x00CD};
    tool().txtSSPID_EasyUpdate->setText("00ab");
    tool().txtHSPID_EasyUpdate->setText("00CD");
    tool().txtVer_EasyUpdate->setText("0203");
    tool().txtManu_EasyUpdate->setText("M");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(tool().modifyFwBuffer_from_UI());
    std::fflush(stdout);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::StartsWith("03 03 4d 0a 03 44 65 6d \n6f "));
    const std::vector<std::uint8_t> image = updateImage();
    EXPECT_EQ(image[kDemoBlock + 5], 0xAB);
    EXPECT_EQ(image[kDemoBlock + 7], 0xCD);
    EXPECT_EQ(image[kDemoBlock - 7], 0x02);
    EXPECT_EQ(image[kDemoBlock + 43], 0x03);
    EXPECT_EQ(image[kDemoBlock + 10], 0x00) << "no flag is set here";
    SupportedIdList.at(1) = {};
}

TEST_F(UpdateImageFromTheFields, RefusesIdsThatAreNotSupportedButKeepsThem)
{
    tool().txtVer_EasyUpdate->setText("01000");
    EXPECT_FALSE(tool().modifyFwBuffer_from_UI()) << "a digit too many";
    tool().txtVer_EasyUpdate->setText("0101");
    tool().txtSN_EasyUpdate->setText(QString(14, 's'));
    EXPECT_FALSE(tool().modifyFwBuffer_from_UI()) << "30 characters";
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "without a word";
    EXPECT_EQ(updateImage(), demoImage());

    tool().txtVer_EasyUpdate->setText("0100");
    tool().txtSN_EasyUpdate->setText("SN0001");
    tool().txtHSPID_EasyUpdate->setText("0003");
    tool().txtManu_EasyUpdate->setText("Other");
    EXPECT_FALSE(tool().modifyFwBuffer_from_UI());
    std::vector<std::uint8_t> expected = demoImage();
    expected[kDemoBlock + 7] = 0x03;
    updateImage();
    EXPECT_EQ(hub().flash(), expected);
}

TEST_F(FlashPageUnderTest, RefusesToModifyAnUpdateImageThatIsNotThere)
{
    for (QLineEdit* field : {tool().txtVID_EasyUpdate, tool().txtSSPID_EasyUpdate,
                             tool().txtHSPID_EasyUpdate, tool().txtVer_EasyUpdate}) {
        field->setText("0001");
    }
    EXPECT_FALSE(tool().modifyFwBuffer_from_UI());
}

} // namespace

} // namespace vornadel::test
