#include "tests/app/FlashPageUnderTest.h"

#include <QRegularExpression>
#include <QWheelEvent>
#include <gmock/gmock.h>

namespace vornadel::test
{

namespace
{

using PageSelection = FlashPageUnderTest;

QStringList textsOf(const QComboBox* combo)
{
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i) {
        texts.append(combo->itemText(i));
    }
    return texts;
}

TEST_F(PageSelection, OffersSixPagesAndSelectsTheFirst)
{
    EXPECT_EQ(textsOf(tool().cbPages),
              (QStringList{"SSC", "DSP OCP/U1/U2", "System", "USP PHY", "DSP Setting", "DSP PHY"}));
    EXPECT_EQ(tool().cbPages->currentIndex(), 0);
    EXPECT_FALSE(tool().cbPages->isEditable());
    EXPECT_FALSE(tool().cbICType->isEditable());
}

TEST_F(PageSelection, ShowsTenTypesAtOnce)
{
    end();
    for (char c = 'A'; c <= 'L'; ++c) {
        writeDefinitions(std::string("more/") + c + ".INI", "");
    }
    launchAndSettle();
    QComboBox& types = *tool().cbICType;
    ASSERT_EQ(types.count(), 13);
    click(&types);
    settleEvents();
    const QAbstractItemView& open = *types.view();
    ASSERT_TRUE(open.isVisible());
    const QRect first = open.visualRect(open.model()->index(0, 0));
    EXPECT_EQ(open.viewport()->height() / first.height(), 10);
    QTest::keyClick(types.view(), Qt::Key_Escape);
}

TEST_F(PageSelection, LetsTheWheelPass)
{
    for (QComboBox* combo : {tool().cbPages, tool().cbICType}) {
        combo->setFocus();
        const QPointF middle = combo->rect().center();
        QWheelEvent turn(middle, combo->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(combo, &turn);
        EXPECT_FALSE(turn.isAccepted()) << combo->objectName().toStdString();
        EXPECT_EQ(combo->currentIndex(), 0);
    }
}

TEST_F(PageSelection, TellsTheConsoleWhichDefinitionFilesItFinds)
{
    end();
    writeDefinitions("b.ini", "");
    writeDefinitions("sub/C.INI", "");
    const QStringList lines = QString::fromStdString(consoleOfLaunch()).split('\n');
    const QStringList found =
        lines.filter(QRegularExpression("ini$", QRegularExpression::CaseInsensitiveOption));
    EXPECT_EQ(found, textsOf(tool().cbICType))
        << "one line each, in their order, and none for b.ini";
    EXPECT_EQ(found.size(), 2);
    EXPECT_TRUE(found.contains("sub/C.INI") && found.contains("demo.INI"));
    EXPECT_EQ(tool().cbICType->currentIndex(), 0);
}

TEST_F(PageSelection, ListsThePageThatIsSelected)
{
    read();
    testing::internal::CaptureStderr();
    select(tool().cbPages, 2);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("selected value:System\n"));
    EXPECT_EQ(names(), QStringList{"Rate"});
    EXPECT_EQ(value(0), "0 : Slow");
    select(tool().cbPages, 1);
    EXPECT_EQ(rows(), 0);
    for (int page = 0; page < 6; ++page) {
        select(tool().cbPages, page);
        EXPECT_FALSE(names().contains("Never Shown"));
        EXPECT_FALSE(names().contains("Never Shown Either"));
    }
}

TEST_F(PageSelection, DiscardsUnsavedTypingOnAChangeOfThePage)
{
    read();
    tool().txtVID_FwFlash->setText("ABC");
    retype(tool().txtContainerID_FwFlash, "ABC");
    openCell(1);
    EXPECT_TRUE(waitFor([this] { return openList() != nullptr; }));
    QTest::keyClick(openList()->view(), Qt::Key_Escape);
    EXPECT_TRUE(waitFor([this] { return openList() == nullptr; }));
    const QString described = tool().txtViewDesc_Detail->toPlainText();
    EXPECT_FALSE(described.isEmpty());
    EXPECT_FALSE(redText().isEmpty());
    select(tool().cbPages, 2);
    EXPECT_EQ(tool().txtVID_FwFlash->text(), "1209");
    EXPECT_EQ(tool().txtContainerID_FwFlash->text(), "{abc00000-0000-0000-0000-000000000000}");
    EXPECT_EQ(redText(), "");
    EXPECT_EQ(tool().txtViewDesc_Detail->toPlainText(), described) << "it is not cleared";
}

TEST_F(PageSelection, ShowsDefaultsAfterAChangeOfTheType)
{
    end();
    writeDefinitions("a.INI", kDefinitions);
    launchAndSettle();
    ASSERT_EQ(tool().cbICType->count(), 2);
    read();
    EXPECT_EQ(value(2), "2 : Middle");
    select(tool().cbPages, 2);
    tool().txtSN_FwFlash->setText("unsaved");
    select(tool().cbICType, 1);
    EXPECT_EQ(tool().cbPages->currentIndex(), 0);
    EXPECT_EQ(names(), (QStringList{"Unbound", "Spread Spectrum", "Depth", "Fixed"}));
    EXPECT_EQ(value(2), "0 : None") << "whatever the image holds";
    EXPECT_EQ(value(3), "Empty Value");
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN0001");
    read();
    EXPECT_EQ(value(2), "2 : Middle");
}

TEST_F(PageSelection, KeepsTheRowsOfTheEarlierTypeWhileThereIsNoImage)
{
    end();
    writeDefinitions("a.INI", kDefinitions);
    launchAndSettle();
    // The order of the two depends on the folder.
    writeDefinitions(tool().cbICType->itemText(1).toStdString(),
                     "[HubFF_USB_01]\nPageName = System\nPropName = Other\n");
    read();
    ASSERT_TRUE(hub().setFlash(std::vector<std::uint8_t>(32768, 0xFF)));
    read();
    ASSERT_EQ(tool().txtVID_FwFlash->text(), "Err");
    select(tool().cbICType, 1);
    EXPECT_EQ(names(), (QStringList{"Unbound", "Spread Spectrum", "Depth", "Fixed"}));
    select(tool().cbPages, 2);
    EXPECT_EQ(names(), QStringList{"Rate"});
    ASSERT_TRUE(hub().setFlash(demoImage()));
    read();
    select(tool().cbPages, 2);
    EXPECT_EQ(names(), QStringList{"Other"}) << "the next read takes the new type";
}

TEST_F(PageSelection, KeepsTheReasonWhyAFileIsNotReadInTheTip)
{
    end();
    writeDefinitions("bad.INI", "no [ini");
    launchAndSettle();
    read();
    const int bad = tool().cbICType->findText("bad.INI");
    select(tool().cbICType, bad);
    EXPECT_EQ(rows(), 0);
    EXPECT_TRUE(tool().cbICType->toolTip().contains("/bad.INI\nwas not read: "));
    select(tool().cbICType, 1 - bad);
    EXPECT_EQ(tool().cbICType->toolTip(), "demo.INI");
}

TEST_F(PageSelection, IsEmptyWithoutADefinitionFile)
{
    end();
    QFile::remove(QString::fromStdString(directory() + "/demo.INI"));
    launchAndSettle();
    EXPECT_EQ(tool().cbICType->count(), 0);
    EXPECT_EQ(tool().cbICType->currentIndex(), -1);
    read();
    EXPECT_EQ(rows(), 0);
    EXPECT_EQ(fields(), demoFields());
}

} // namespace

} // namespace vornadel::test
