// Undo and redo on the flash page, and the mark of unsaved edits.

#include "tests/app/FlashPageUnderTest.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>

namespace vornadel::test
{

namespace
{

class FlashHistory : public FlashPageUnderTest
{
protected:
    /// What the window shows of the image.
    struct Shown {
        QStringList fields, values;
        QString hex;
        bool operator==(const Shown&) const = default;
    };

    Shown shown()
    {
        QStringList values;
        for (int row = 0; row < rows(); ++row) {
            values.append(value(row));
        }
        return {fields(), values, hexText()};
    }
    void press(Qt::Key key, Qt::KeyboardModifiers more = Qt::NoModifier)
    {
        if (QApplication::focusWidget() == nullptr) { // after a panel
            tool().window()->activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(tool().window()));
            tool().tbProperties_Detail->setFocus();
        }
        QTest::keyClick(QApplication::focusWidget(), key, Qt::ControlModifier | more);
    }
    void undo() { press(Qt::Key_Z); }
    void redo() { press(Qt::Key_Z, Qt::ShiftModifier); }
    bool isMarked() { return tool().lblUnsaved_FwFlash->isVisible(); }
    QString markTip() { return tool().lblUnsaved_FwFlash->toolTip(); }
};

TEST_F(FlashHistory, TakesEachEditBackAndRepeatsIt)
{
    read();
    std::vector<Shown> seen{shown()};
    retype(tool().txtVID_FwFlash, "ABCD");
    seen.push_back(shown());
    retype(tool().txtSN_FwFlash, "SN42");
    seen.push_back(shown());
    type(tool().txtContainerID_FwFlash, "!");
    undo();
    EXPECT_EQ(shown(), seen[2]) << "with the change flag";
    type(tool().txtContainerID_FwFlash, "!");
    tool().PageNameCombBox_SelectedChanged(); // shows the bytes of the Container ID
    choose(1, 1);
    seen.push_back(shown());
    choose(2, 3);
    seen.push_back(shown());

    for (const std::size_t step : {3U, 99U, 2U, 1U, 0U}) {
        undo();
        if (step == 99U) {
            EXPECT_EQ(value(1), "0 : Disable") << "the Container ID is another step";
        } else {
            EXPECT_EQ(shown(), seen[step]) << step << ": each field is one step";
        }
    }
    undo(); // nothing is left
    EXPECT_EQ(shown(), seen[0]);
    EXPECT_FALSE(isMarked());
    for (const std::size_t step : {1U, 2U, 99U, 3U, 4U}) {
        step % 2 == 1 ? redo() : press(Qt::Key_Y);
        if (step != 99U) {
            EXPECT_EQ(shown(), seen[step]) << step;
        }
    }
    EXPECT_EQ(redText(), "B5 ") << "what the last one changed";
    EXPECT_TRUE(isMarked());
}

TEST_F(FlashHistory, BringsAnEditedImageBackAfterAReadOrALoad)
{
    read();
    retype(tool().txtSN_FwFlash, "SN42");
    choose(2, 3);
    const Shown edited = shown();
    const std::vector<std::uint8_t> image = saved();
    retype(tool().txtPro_FwFlash, "Other");
    const Shown unsaved = shown();
    const std::string file = writeFile("new.bin", demoImage(kDemoVersion101));

    loadFile(file);
    EXPECT_FALSE(isMarked());
    read();
    loadRefused(writeFile("bad.bin", std::vector<std::uint8_t>(1000, 0x11)));
    undo();
    EXPECT_EQ(fields(), demoFields());
    EXPECT_EQ(rows(), 4);
    undo();
    EXPECT_EQ(tool().txtVer_FwFlash->text(), "0101");
    EXPECT_FALSE(isMarked());
    undo();
    EXPECT_EQ(shown(), unsaved);
    EXPECT_TRUE(isMarked());
    undo();
    EXPECT_EQ(shown(), edited);
    EXPECT_FALSE(isMarked()) << "it was saved like this";
    EXPECT_EQ(saved(), image);
    redo();
    redo();
    redo();
    redo();
    EXPECT_EQ(rows(), 0) << "the file that was no image";
    EXPECT_EQ(hexText(), "Binary Data\n");
}

TEST_F(FlashHistory, ShowsThePropertyThatItChanges)
{
    read();
    choose(1, 1);
    select(tool().cbPages, 2);
    choose(0, 1);                  // Rate
    tool().readFinished_FwFlash(); // reads the property file again
    undo();
    EXPECT_EQ(names(), QStringList{"Rate"});
    EXPECT_EQ(value(0), "0 : Slow");
    EXPECT_TRUE(tool().tbProperties_Detail->selectionModel()->isRowSelected(0));
    undo();
    EXPECT_EQ(names().value(1), "Spread Spectrum");
    EXPECT_EQ(value(1), "0 : Disable");
    EXPECT_TRUE(tool().tbProperties_Detail->selectionModel()->isRowSelected(1));
}

TEST_F(FlashHistory, IsReachedByTheMenuOfAField)
{
    read();
    retype(tool().txtSN_FwFlash, "SN42");
    const auto trigger = [this](const char* text) {
        QContextMenuEvent ask(QContextMenuEvent::Keyboard, {3, 3}, QPoint(3, 3));
        QApplication::sendEvent(tool().txtSN_FwFlash, &ask);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        const auto entries = menu->actions();
        const auto entry = std::find_if(entries.begin(), entries.end(), [text](const QAction* it) {
            return it->text().startsWith(text);
        });
        ASSERT_NE(entry, entries.end());
        EXPECT_TRUE((*entry)->isEnabled());
        (*entry)->trigger();
        menu->close();
        settleEvents();
    };
    trigger("&Undo");
    EXPECT_EQ(fields(), demoFields());
    trigger("&Redo");
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN42");
}

TEST_F(FlashHistory, MarksWhatIsNotSaved)
{
    EXPECT_FALSE(isMarked());
    read();
    EXPECT_FALSE(isMarked());
    retype(tool().txtVID_FwFlash, "ABCD");
    EXPECT_TRUE(isMarked());
    EXPECT_EQ(markTip(), "1 unsaved edit\nVID");
    choose(2, 3);
    EXPECT_EQ(markTip(), "2 unsaved edits\nVID\nDepth");
    EXPECT_EQ(tool().lblUnsaved_FwFlash->accessibleName(), "2 unsaved edits");
    saveAs(directory() + "/no such folder/x.bin");
    EXPECT_TRUE(isMarked()) << "nothing was written";
    saved();
    EXPECT_FALSE(isMarked());
    undo();
    EXPECT_EQ(markTip(), "1 unsaved edit\nDepth");
    undo();
    EXPECT_EQ(markTip(), "2 unsaved edits\nVID\nDepth");
    retype(tool().txtVID_FwFlash, "ABCD");
    choose(2, 3);
    EXPECT_FALSE(isMarked()) << "as in the file, however it came to be";
}

TEST_F(FlashHistory, GoesBackNoFurtherThanToTheSavedText)
{
    read();
    type(tool().txtSN_FwFlash, "1");
    saved();
    type(tool().txtSN_FwFlash, "2");
    QTest::keyClick(tool().txtSN_FwFlash, Qt::Key_Backspace);
    type(tool().txtSN_FwFlash, "3");
    undo();
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN00011");
    EXPECT_FALSE(isMarked());
}

TEST_F(FlashHistory, IsClosedWithoutAQuestion)
{
    read();
    retype(tool().txtVID_FwFlash, "ABCD");
    EXPECT_TRUE(tool().window()->close());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(FlashHistory, KeepsNoCopiesOfAnImageThatIsNoFlash)
{
    std::vector<std::uint8_t> large(EditHistory::kLargestImage + 256, 0xFF);
    const std::vector<std::uint8_t> demo = demoImage();
    std::copy(demo.end() - 512, demo.end(), large.end() - 512);
    loadFile(writeFile("large.bin", large));
    retype(tool().txtSN_FwFlash, "SN42");
    EXPECT_EQ(markTip(), "1 unsaved edit");
    EXPECT_TRUE(isMarked());
    undo();
    EXPECT_EQ(tool().txtSN_FwFlash->text(), "SN42");
    saved();
    EXPECT_FALSE(isMarked());
}

} // namespace

} // namespace vornadel::test
