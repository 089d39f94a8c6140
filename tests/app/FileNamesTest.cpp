#include "app/FileNames.h"
#include "tests/app/FlashPageUnderTest.h"

#include <QDesktopServices>
#include <QTextBrowser>
#include <QUrl>

namespace vornadel::test
{

namespace
{

TEST(FileNames, KeepEveryByte)
{
    struct Row {
        std::string name;
        const char* shown;
    };
    for (const Row& row : {
             Row{"", ""},
             Row{"/R\xC3\xA4ume/\xE2\x80\x94/\xF0\x90\x82\x80.bin",
                 "/R\xC3\xA4ume/\xE2\x80\x94/\xF0\x90\x82\x80.bin"},
             Row{"f\xFCr.bin", "f\\xFCr.bin"},
             Row{"\xE2\x80", "\\xE2\\x80"},          // a character cut short
             Row{"\xED\xB3\xBC", "\\xED\\xB3\\xBC"}, // a surrogate is no character of UTF-8
             Row{"\xC0\xAF\xFF", "\\xC0\\xAF\\xFF"},
             Row{"\xEF\xBF\xBD\xEF\xBB\xBF", "\xEF\xBF\xBD\\xEF\\xBB\\xBF"},
         }) {
        EXPECT_EQ(nameBytes(nameText(row.name)), row.name) << row.shown;
        EXPECT_EQ(shownName(row.name).toStdString(), row.shown);
    }
}

TEST(FileNames, FindTheFileThatAPanelNamesOnlyRoughly)
{
    const TemporaryFolder folder;
    const std::string image = folder.write("M\xFCller/f\xFCr.bin", "");
    const auto chosen = [&folder](const char* name) {
        return chosenPath(QString::fromStdString(folder.path()) + '/' + name);
    };
    EXPECT_EQ(chosen("M\xEF\xBF\xBDller/f\xEF\xBF\xBDr.bin"), image);
    EXPECT_EQ(chosen("M\xEF\xBF\xBDller/none"), folder.path("M\xEF\xBF\xBDller/none"));
    folder.write("M\xFCller/f\xE4r.bin", "");
    EXPECT_EQ(chosen("M\xEF\xBF\xBDller/f\xEF\xBF\xBDr.bin"),
              folder.path("M\xEF\xBF\xBDller/f\xEF\xBF\xBDr.bin"))
        << "two files fit";
}

using OddFolder = FlashPageUnderTest;

TEST_F(OddFolder, HasItsDefinitionFilesRead)
{
    end();
    const std::string bundle = "Ger\xE4t/Vornadel.app";
    place = {directory() + '/' + bundle, true, directory() + '/' + bundle + "/Contents/Resources"};
    writeDefinitions("Ger\xE4t/\xFC\xE4/d\xE9mo.INI", kDefinitions);
    config = configText("FwBin = f\xFC.bin\n");
    launchAndSettle();
    EXPECT_EQ(tool().nstextfd_Scalar->text(), "f\\xFC.bin");
    EXPECT_EQ(tool().cbICType->currentText(), "\\xFC\\xE4/d\\xE9mo.INI");
    read();
    EXPECT_EQ(rows(), 4);
}

/// Takes the place of the desktop, whatever it is to show.
class Desktop final : public QTextBrowser
{
    QVariant loadResource(int /*type*/, const QUrl& /*name*/) override { return "the manual"; }
};

TEST_F(OddFolder, HasItsManualShown)
{
    end();
    const std::string resources = "Ger\xE4t/Resources";
    place = {directory(), true, directory() + '/' + resources};
    writeFile(resources + "/README.md", {'T', 'o'});
    launchAndSettle();
    Desktop desktop;
    QDesktopServices::setUrlHandler("file", &desktop, "setSource");
    QTest::keyClick(tool().window(), Qt::Key_F1);
    QDesktopServices::unsetUrlHandler("file");
    EXPECT_TRUE(desktop.source().toEncoded().endsWith("/Ger%E4t/Resources/README.md"));
}

} // namespace

} // namespace vornadel::test
