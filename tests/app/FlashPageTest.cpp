#include "hub/HubTransport.h"
#include "tests/app/FlashPageUnderTest.h"
#include "tests/support/FullDisk.h"

#include <QDialog>
#include <QFileDialog>
#include <gmock/gmock.h>

#include <filesystem>

namespace vornadel::test
{

namespace
{

const std::string kReadLines =
    "Open Device...\nReading Flash...\nReset to Flash Code...\nRead Fw Success\n";

using FlashPage = FlashPageUnderTest;

TEST_F(FlashPage, ReadsTheFlashAndFillsThePage)
{
    read();
    EXPECT_EQ(progressText(), kReadLines);
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kBlueHue);
    EXPECT_EQ(tool().slider->doubleValue(), 0);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_EQ(fields(), demoFields());
    EXPECT_EQ(names(), (QStringList{"Unbound", "Spread Spectrum", "Depth", "Fixed"}));
    EXPECT_EQ(value(0), "0 : Only") << "key 0 keeps its default";
    EXPECT_EQ(value(1), "0 : Disable");
    EXPECT_EQ(value(2), "2 : Middle");
    EXPECT_EQ(value(3), "Empty Value");
    EXPECT_TRUE(hexText().startsWith("7E00h:AA 55 12 09 00 01 00 02 - 01 00 "));
    EXPECT_EQ(redText(), "");
    EXPECT_EQ(hub().runningCode(), HubCode::Flash);
}

TEST_F(FlashPage, KeepsTheImageWhenAReadFails)
{
    read();
    retype(tool().txtSN_FwFlash, "X");
    hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Read, .position = 8 + 3});
    read();
    EXPECT_EQ(progressText(),
              "Open Device...\nReading Flash...\nFail to Read Flash\nRead Fw Fail\n");
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kRedHue);
    EXPECT_EQ(tool().slider->doubleValue(), 0);
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_TRUE(allSwitched(true));
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "X");
    EXPECT_EQ(saved().at(kDemoBlock + 42), 0x02) << "the edited image is still there";
}

TEST_F(FlashPage, ResetsThePageWhenTheLoadPanelIsCancelled)
{
    read();
    select(tool().cbPages, 2);
    tool().txtManu_FwFlash->setText("unsaved");
    clickAndUse(tool().btnLoad_FwFlash, [](QDialog& panel) {
        auto* open = qobject_cast<QFileDialog*>(&panel);
        EXPECT_NE(open, nullptr);
        EXPECT_EQ(open->fileMode(), QFileDialog::ExistingFile);
        QTest::keyClick(&panel, Qt::Key_Escape);
    });
    EXPECT_EQ(tool().cbPages->currentIndex(), 0);
    EXPECT_EQ(rows(), 4);
    EXPECT_EQ(fields(), demoFields());
}

TEST_F(FlashPage, EmptiesThePropertiesWhenAFileIsNoImage)
{
    read();
    const std::string bad = writeFile("bad.bin", std::vector<std::uint8_t>(1000, 0x11));
    loadRefused(bad);
    EXPECT_EQ(rows(), 0);
    EXPECT_EQ(hexText(), "Binary Data\n");
    EXPECT_EQ(fields(), demoFields()) << "they stay";
    expectAlert("No Flash Data", [this] { click(tool().btnSave_FwFlash); });
}

TEST_F(FlashPage, ErasesTheFlashAndLeavesTheImageAlone)
{
    read();
    click(tool().btnErase_FwFlash);
    EXPECT_TRUE(allSwitched(false)) << "at once";
    EXPECT_TRUE(waitUntilEnabled());
    EXPECT_EQ(progressText(),
              "Open Rom Device...\nErase Flash...\nReseting...\nErase FW Success\n");
    EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kBlueHue);
    EXPECT_EQ(tool().slider->doubleValue(), 0);
    EXPECT_EQ(hub().flash(), std::vector<std::uint8_t>(32768, 0xFF));
    EXPECT_FALSE(Hub_IsOpen());
    EXPECT_EQ(fields(), demoFields());
    EXPECT_EQ(saved(), demoImage());
}

TEST_F(FlashPage, SavesWhatWasReadByteForByte)
{
    read();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::string path = directory() + "/out.bin";
    saveAs(path);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::AllOf(testing::HasSubstr("Length in textfield : 4-4-4-4-8-8-6\n"),
                               testing::EndsWith(path + "\n")));
    std::fflush(stdout);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::StrEq("0a 03 56 6f 72 6e 61 64 \n65 6c 0a 03 44 65 6d 6f \n"
                               "20 48 75 62 08 03 53 4e \n30 30 30 31 00 00 00 00 \n"
                               "00 00 00 \n"));
    EXPECT_EQ(bytesOf(path), demoImage());
}

TEST_F(FlashPage, AsksInASheetWhereToSave)
{
    read();
    clickAndUse(tool().btnSave_FwFlash, [this](QDialog& panel) {
        auto* save = qobject_cast<QFileDialog*>(&panel);
        ASSERT_NE(save, nullptr);
        EXPECT_EQ(save->acceptMode(), QFileDialog::AcceptSave);
        EXPECT_TRUE(save->testOption(QFileDialog::DontUseNativeDialog));
        EXPECT_EQ(save->windowModality(), Qt::WindowModal);
        EXPECT_EQ(save->parentWidget(), tool().window());
        EXPECT_EQ(save->labelText(QFileDialog::FileName), "save as");
        EXPECT_EQ(save->windowTitle(), "Choose the path to save the *.Bin file");
        EXPECT_EQ(save->nameFilters().size(), 1);
        EXPECT_EQ(save->defaultSuffix(), "BIN");
        QTest::keyClick(&panel, Qt::Key_Escape);
    });
}

TEST_F(FlashPage, GivesEveryFileItsSuffix)
{
    read();
    saveAs(directory() + "/plain");
    EXPECT_EQ(bytesOf(directory() + "/plain.BIN"), demoImage());
    saveAs(directory() + "/other.txt");
    EXPECT_EQ(bytesOf(directory() + "/other.txt.BIN"), demoImage());
    const std::string wide = directory() + "/Gr\xC3\xBC\xC3\x9F"
                                           "e \xE2\x80\x94 1.bin";
    saveAs(wide);
    EXPECT_EQ(bytesOf(wide), demoImage());
}

TEST_F(FlashPage, SavesNothingUnderANameWithADoubleQuote)
{
    read();
    const std::string path = directory() + "/saves/a\"b\"c";
    std::filesystem::create_directory(directory() + "/saves");
    const auto filesBelow = [this] {
        return std::distance(std::filesystem::recursive_directory_iterator(directory()), {});
    };
    const auto before = filesBelow();
    clickAndUse(tool().btnSave_FwFlash, [&path](QDialog& panel) {
        auto* name = panel.findChild<QLineEdit*>("fileNameEdit");
        panel.activateWindow();
        name->setFocus();
        ASSERT_TRUE(waitFor([name] { return name->hasFocus(); }));
        QTest::keyClicks(name, QString::fromStdString(path));
        expectAlert("A file name cannot contain a double quote.",
                    [name] { QTest::keyClick(name, Qt::Key_Return); });
        EXPECT_TRUE(panel.isVisible()) << "for another name";
        QTest::keyClick(&panel, Qt::Key_Escape);
    });
    EXPECT_EQ(filesBelow(), before);
}

TEST_F(FlashPage, KeepsWhatWasTypedWhenSavingIsCancelled)
{
    read();
    // Set by the program: only the save can put them into the image.
    tool().txtVID_FwFlash->setText("ABCD");
    tool().txtSSPID_FwFlash->setText("0A0B");
    tool().txtHSPID_FwFlash->setText("0C0D");
    tool().txtVer_FwFlash->setText("0123");
    clickAndUse(tool().btnSave_FwFlash,
                [](QDialog& panel) { QTest::keyClick(&panel, Qt::Key_Escape); });
    std::vector<std::uint8_t> expected = demoImage();
    expected[kDemoBlock - 7] = 0x01;
    expected[kDemoBlock - 6] = 0x23;
    const std::vector<std::uint8_t> ids = {0xAB, 0xCD, 0x0A, 0x0B, 0x0C, 0x0D};
    std::copy(ids.begin(), ids.end(), expected.begin() + kDemoBlock + 2);
    select(tool().cbPages, 1); // fills the fields from the image
    EXPECT_EQ(tool().txtVer_FwFlash->text(), "0123");
    EXPECT_EQ(saved(), expected);
}

TEST_F(FlashPage, LeavesAFileThatCannotBeWrittenAlone)
{
    read();
    const std::vector<std::uint8_t> earlier = {1, 2, 3};
    const std::string path = writeFile("saves/out.BIN", earlier);
    const std::string folder = std::filesystem::path(path).parent_path();
    std::string console;
    clickAndUse(tool().btnSave_FwFlash, [&](QDialog& panel) {
        testing::internal::CaptureStderr();
        {
            const FullDisk oneByteShort(32767);
            emit qobject_cast<QFileDialog*>(&panel)->fileSelected(QString::fromStdString(path));
        }
        console = testing::internal::GetCapturedStderr();
        QTest::keyClick(&panel, Qt::Key_Escape);
    });
    EXPECT_EQ(bytesOf(path), earlier);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1)
        << "nothing is left beside it";
    EXPECT_THAT(console, testing::HasSubstr(path + ": File too large"));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "not reported";
}

TEST_F(FlashPage, RefusesToSaveAnIdOfThreeCharacters)
{
    read();
    for (QLineEdit* field : {tool().txtVID_FwFlash, tool().txtSSPID_FwFlash,
                             tool().txtHSPID_FwFlash, tool().txtVer_FwFlash}) {
        const QString before = field->text();
        field->setText("120");
        expectAlert("Data Length Error", [this] { click(tool().btnSave_FwFlash); });
        select(tool().cbPages, 1 - tool().cbPages->currentIndex()); // shows the image again
        EXPECT_EQ(fields(), demoFields()) << "nothing was written into the image";
        EXPECT_EQ(field->text(), before);
    }
    EXPECT_EQ(saved(), demoImage());
}

TEST_F(FlashPage, SavesTwentyNineCharactersAndRefusesThirty)
{
    read();
    tool().txtManu_FwFlash->setText("MMMMMMMMMM");
    tool().txtPro_FwFlash->setText("PPPPPPPPPP");
    tool().txtSN_FwFlash->setText("SSSSSSSSSS");
    expectAlert("Data Length Error", [this] { click(tool().btnSave_FwFlash); });
    tool().txtSN_FwFlash->setText("SSSSSSSSS");
    std::vector<std::uint8_t> expected = demoImage();
    const std::string area = "\x0c\x03MMMMMMMMMM\x0c\x03PPPPPPPPPP\x0b\x03SSSSSSSSS";
    ASSERT_EQ(area.size(), 35U);
    std::copy(area.begin(), area.end(), expected.begin() + kDemoBlock + 43);
    EXPECT_EQ(saved(), expected);
}

} // namespace

} // namespace vornadel::test
