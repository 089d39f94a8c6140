// The flash page during a read: typing, open dialogs, closing the window.

#include "hub/HubTransport.h"
#include "tests/app/FlashPageUnderTest.h"

#include <QMessageBox>

namespace vornadel::test
{

namespace
{

constexpr unsigned kPieces = 8; // per read of the flash

constexpr const char* kLocked =
    "This Item is Not Editable.  To Change this Item,you should set\n\n Spread Spectrum\n"
    "(Addr 0x09[0:0])\n\nfrom 0 to 1";

/// An image has been read and edited. Meanwhile the hub's flash has another one for the next read.
class BusyFlashPage : public FlashPageUnderTest
{
protected:
    void SetUp() override
    {
        *config += "VID_01 = 0x120A\nSSPID_01 = 0x0001\nHSPID_01 = 0x0002\n";
        FlashPageUnderTest::SetUp();
        read();
        retype(tool().txtSN_FwFlash, "edited");
        otherFlash[kDemoBlock + 3] = 0x0A;
        otherFlash[kDemoBlock + 22] = 0x7D; // "Rate"
        ASSERT_TRUE(hub().setFlash(otherFlash));
    }

    void holdRead()
    {
        readGate.shut();
        click(tool().btnRead_FwFlash);
        ASSERT_TRUE(waitFor([this] { return readGate.isReached(); }));
    }
    void letReadFinish()
    {
        readGate.open();
        EXPECT_TRUE(waitUntilEnabled());
        EXPECT_TRUE(progressText().ends_with("Read Fw Success\n")) << progressText();
    }

    /// Does something that opens this alert, and closes it only after the stopped read has finished
    /// behind it.
    void finishReadUnder(const QString& text, const std::function<void()>& action)
    {
        runAndUse(action, [this, &text](QDialog& dialog) {
            letReadFinish();
            auto* alert = qobject_cast<QMessageBox*>(&dialog);
            if (alert == nullptr) {
                ADD_FAILURE() << "no alert: " << dialog.windowTitle().toStdString();
                dialog.reject();
                return;
            }
            EXPECT_EQ(QApplication::activeModalWidget(), alert) << "the read does not close it";
            EXPECT_EQ(alert->text(), text);
            QTest::keyClick(alert, Qt::Key_Return);
        });
        settleEvents();
    }

    void blankTheFlash() { ASSERT_TRUE(hub().setFlash(std::vector<std::uint8_t>(32768, 0xFF))); }

    void expectTheOtherImage()
    {
        QStringList expected = demoFields();
        expected[0] = "120A";
        EXPECT_EQ(fields(), expected);
        EXPECT_EQ(tool().cbPages->currentIndex(), 0);
        EXPECT_EQ(names(), (QStringList{"Unbound", "Spread Spectrum", "Depth", "Fixed"}));
        EXPECT_TRUE(hexText().startsWith("7E00h:AA 55 12 0A "));
        select(tool().cbPages, 2);
        EXPECT_EQ(value(0), "1 : Fast");
        EXPECT_EQ(saved(), otherFlash) << "nothing was written into it";
    }

    void expectNoImage()
    {
        EXPECT_EQ(tool().txtVID_FwFlash->text(), "Err");
        expectAlert("No Flash Data", [this] { type(tool().txtSN_FwFlash, "1"); });
        EXPECT_EQ(tool().txtSN_FwFlash->text(), "");
        expectAlert("No Flash Data", [this] { click(tool().btnSave_FwFlash); });
    }

    std::vector<std::uint8_t> otherFlash = demoImage();
};

TEST_F(BusyFlashPage, EndsInTheMiddleOfAReadWhenTheWindowCloses)
{
    holdRead();
    const unsigned requests = hub().requestCount();
    EXPECT_TRUE(tool().window()->close());
    readGate.open();
    EXPECT_TRUE(tool().shutDown());
    // The worker may still read the other pieces, which needs no main thread.
    EXPECT_LT(hub().requestCount(), requests + kPieces)
        << "the hub is not told to restart any more";
    end();
    launchAndSettle();
    read();
    EXPECT_EQ(fields(), demoFields());
}

TEST_F(BusyFlashPage, ParsesWhatItHasReadOnTheMainThreadAlone)
{
    // The main thread stops taking work when the success is on display: what comes after that line
    // has no thread but the worker.
    TextView& progress = *tool().nstfUpdateInfo_UpdateFW;
    QObject::connect(&progress, &QPlainTextEdit::textChanged, &progress, [this] {
        if (progressText().ends_with("Read Fw Success\n")) {
            tool().mainThread().stopWaiting();
        }
    });
    holdRead();
    readGate.open();
    EXPECT_TRUE(
        waitFor([this] { return progressText().ends_with("Read Fw Success\n") && !Hub_IsOpen(); }));
    EXPECT_TRUE(tool().shutDown()) << "the worker has ended";
    tool().readFinished_FwFlash();
    EXPECT_EQ(tool().txtVID_FwFlash->text(), "1209") << "of the image before";
}

TEST_F(BusyFlashPage, TakesTheNewImageUnderTheAlertOfALongId)
{
    holdRead();
    finishReadUnder("VID length should be 4.", [this] { type(tool().txtVID_FwFlash, "5"); });
    expectTheOtherImage();
}

TEST_F(BusyFlashPage, LosesItsImageUnderTheAlertOfALockedRow)
{
    blankTheFlash();
    select(tool().cbPages, 2);
    holdRead();
    finishReadUnder(kLocked, [this] { choose(0, 1); });
    EXPECT_EQ(names(), QStringList{"Rate"}) << "a read without an image changes no row";
    EXPECT_EQ(value(0), "0 : Slow");
    expectNoImage();
}

TEST_F(BusyFlashPage, IgnoresWhatIsChosenInAListThatOutlivesTheImage)
{
    blankTheFlash();
    holdRead();
    openCell(1);
    ASSERT_NE(openList(), nullptr);
    letReadFinish();
    ASSERT_NE(openList(), nullptr) << "a read without an image changes no row";
    QTest::keyClick(openList()->view(), Qt::Key_Down);
    QTest::keyClick(openList()->view(), Qt::Key_Return);
    EXPECT_TRUE(waitFor([this] { return openList() == nullptr; }));
    settleEvents();
    EXPECT_EQ(value(1), "0 : Disable");
    expectNoImage();
}

} // namespace

} // namespace vornadel::test
