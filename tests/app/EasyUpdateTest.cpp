#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

const std::string kSteps =
    "Erase Flash...\nWrite Flash...\nRead Flash...\nVerify Flash...\nReset to Flash Code...\n";

class EasyUpdate : public ToolUnderTest
{
protected:
    void SetUp() override { launchAndSettle(); }

    QStringList shown()
    {
        QStringList texts;
        for (const QLineEdit* field :
             {tool().txtFw_EasyUpdate, tool().txtVID_EasyUpdate, tool().txtSSPID_EasyUpdate,
              tool().txtHSPID_EasyUpdate, tool().txtVer_EasyUpdate, tool().txtManu_EasyUpdate,
              tool().txtPro_EasyUpdate, tool().txtSN_EasyUpdate}) {
            texts.append(field->text());
        }
        return texts;
    }

    void choose(const std::string& path)
    {
        chooseByTyping(tool().btnSelect_EasyUpdate, QString::fromStdString(path));
    }

    /// Chooses a file that is refused: the dialog's end opens the alert.
    void chooseRefused(const std::string& path)
    {
        expectAlert("Firmware format error\n", [&] { choose(path); });
    }

    /// The whole update by mouse, to its end.
    void update()
    {
        QTest::mouseClick(tool().btnUpdate_EasyUpdate, Qt::LeftButton);
        EXPECT_TRUE(allSwitched(false)) << "at once";
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
    }

    /// Expects the path field to say what "Update" would write instead of the file that it names.
    void expectWarning(const std::string& warning)
    {
        const QLineEdit& field = *tool().txtFw_EasyUpdate;
        const QString more = QString::fromStdString(warning.empty() ? "" : "\n" + warning);
        EXPECT_EQ(field.toolTip(), field.text() + more);
        EXPECT_EQ(field.accessibleDescription().toStdString(),
                  warning.empty() ? tool().boxEasyUpdate->title().toStdString() : warning);
        EXPECT_EQ(field.actions().size(), warning.empty() ? 0 : 1) << "the sign";
    }

    static std::string header(const std::string& path, std::size_t size)
    {
        return "FW:" + path + "(size=" + std::to_string(size) + ")\n\n";
    }

    void expectSuccess(const std::string& path, const std::vector<std::uint8_t>& image)
    {
        EXPECT_EQ(progressText(), header(path, image.size()) + kSteps + "Update FW Success\n");
        EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), kBlueHue);
        EXPECT_DOUBLE_EQ(tool().slider->doubleValue(), 100);
        EXPECT_TRUE(allSwitched(true));
        EXPECT_FALSE(Hub_IsOpen());
        const std::vector<std::uint8_t> flash = hub().flash();
        EXPECT_TRUE(std::equal(image.begin(), image.end(), flash.begin()));
        EXPECT_EQ(hub().runningCode(), HubCode::Flash);
    }
};

QStringList demoIdentity(const std::string& path, const char* version)
{
    QStringList texts{"1209", "0001", "0002", version, "Vornadel", "Demo Hub", "SN0001"};
    texts.prepend(QString::fromStdString(path));
    return texts;
}

/// The smallest image, 256 bytes: its block is at offset 0, without room for a version before it.
std::vector<std::uint8_t> smallestImage()
{
    std::vector<std::uint8_t> image(256, 0);
    const std::array<std::uint8_t, 8> head = {0x55, 0xAA, 0xAB, 0xCD, 0x0E, 0xF0, 0x12, 0x34};
    std::copy(head.begin(), head.end(), image.begin());
    return image;
}

TEST_F(EasyUpdate, WritesAnImageWithAnyPathThoughTheDialogIsCancelledLater)
{
    const std::string path = writeFile(
        "M\xC3\xBCller & S\xC3\xB6hne; 100% \xE2\x80\x94 a  b/f&w.bin", demoImage(kDemoVersion101));
    choose(path);
    clickAndUse(tool().btnSelect_EasyUpdate, [](QDialog& dialog) {
        QTest::keyClicks(dialog.findChild<QLineEdit*>("fileNameEdit"), "other");
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(shown(), demoIdentity(path, "0101"));
    update();
    expectSuccess(path, demoImage(kDemoVersion101));
}

TEST_F(EasyUpdate, RefusesAFileWithoutADescriptorBlock)
{
    const std::string good = writeFile("good.bin", demoImage(kDemoVersion101));
    const std::string bad = writeFile("bad.bin", std::vector<std::uint8_t>(1000, 0x11));
    choose(good);
    chooseRefused(bad);
    EXPECT_EQ(shown(), demoIdentity(bad, "0101")) << "the path changes, the fields stay";
    expectWarning("No firmware was found in this file. \"Update\" writes nothing.");
    update();
    EXPECT_EQ(progressText(), header(bad, 1000) + "Wrong firmware file\nUpdate FW Fail\n");
}

TEST_F(EasyUpdate, KeepsTheImageBeforeAFileThatCannotBeRead)
{
    const std::vector<std::uint8_t> image = demoImage(kDemoVersion101);
    const std::string good = writeFile("good.bin", image);
    const std::string empty = writeFile("empty.bin", {});
    choose(good);
    tool().txtVID_EasyUpdate->clear();
    choose(empty);
    EXPECT_EQ(shown(), demoIdentity(empty, "0101")) << "shown again, beside the new path";
    expectWarning("This file could not be read. \"Update\" writes the image chosen before: " +
                  good);
    update();
    expectSuccess(empty, image);
    choose(good);
    expectWarning("");
}

TEST_F(EasyUpdate, ShowsNoVersionWhereThereIsNoRoomForOne)
{
    choose(writeFile("good.bin", demoImage(kDemoVersion101)));
    const std::string path = writeFile("low.bin", smallestImage());
    choose(path);
    EXPECT_EQ(shown(), (QStringList{QString::fromStdString(path), "ABCD", "0EF0", "1234", "",
                                    "Vornadel", "Demo Hub", "SN0001"}))
        << "texts that an image lacks stay those of the image before";
}

} // namespace

} // namespace vornadel::test
