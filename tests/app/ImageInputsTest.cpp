#include "app/RawNameMenu.h"
#include "app/RecentFiles.h"
#include "tests/app/FlashPageUnderTest.h"

#include <QDialog>
#include <QDropEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QStyleHints>
#include <QTimer>
#include <QUrl>
#include <gmock/gmock.h>

#include <filesystem>

namespace vornadel::test
{

namespace
{

QByteArray urlOf(const std::string& path)
{
    return "file://" + QByteArray::fromStdString(path).toPercentEncoding("/");
}

class ImageInputs : public FlashPageUnderTest
{
protected:
    /// Drags over a widget and drops there. True if the drop was taken.
    bool drop(QWidget* widget, const QList<QByteArray>& urls)
    {
        QMimeData data;
        QList<QUrl> list;
        for (const QByteArray& url : urls) {
            list.append(QUrl::fromEncoded(url));
        }
        data.setUrls(list);
        data.setText("a text field would take this");
        const QPoint middle = widget->rect().center();
        QDragEnterEvent enter(middle, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QDropEvent dropped(middle, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(widget, &enter);
        if (enter.isAccepted()) {
            EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
            const QString before = tool().txtFw_EasyUpdate->text();
            QApplication::sendEvent(widget, &dropped);
            EXPECT_EQ(tool().txtFw_EasyUpdate->text(), before) << "the drop ends first";
        }
        settleEvents();
        return enter.isAccepted() && dropped.isAccepted();
    }

    std::string image(const std::string& name) const
    {
        return writeFile(name, demoImage(kDemoVersion101));
    }
    QString version() { return tool().txtVer_EasyUpdate->text(); }

    static QMenu* openMenu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    static QStringList entries(const QMenu& menu)
    {
        QStringList texts;
        for (const QAction* entry : menu.actions()) {
            texts.append((entry->isEnabled() ? "" : "off: ") + entry->text());
        }
        return texts;
    }
};

TEST_F(ImageInputs, TakeADroppedFileAsTheirPanelDoes)
{
    const std::string odd = image("f\xFCr.bin");
    EXPECT_TRUE(drop(tool().boxEasyUpdate, {urlOf(odd)}));
    EXPECT_EQ(version(), "0101");
    EXPECT_EQ(tool().txtFw_EasyUpdate->text().toStdString(), directory() + "/f\\xFCr.bin");

    EXPECT_TRUE(drop(tool().txtManu_FwFlash, {urlOf(odd)})) << "a field belongs to its box";
    EXPECT_EQ(tool().txtVer_FwFlash->text(), "0101");
    EXPECT_EQ(tool().txtManu_FwFlash->text(), "Vornadel");
    EXPECT_EQ(rows(), 4);

    const std::string bad = writeFile("bad.bin", std::vector<std::uint8_t>(1000, 0x11));
    expectAlert("Firmware format error\n",
                [&] { EXPECT_TRUE(drop(tool().boxFwFlash, {urlOf(bad)})); });
    EXPECT_EQ(rows(), 0);

    EXPECT_TRUE(drop(tool().boxScalar, {urlOf(odd)}));
    EXPECT_EQ(tool().nstextfd_Scalar->text(), tool().txtFw_EasyUpdate->text());
}

TEST_F(ImageInputs, RefuseEveryOtherDrop)
{
    const QByteArray one = urlOf(image("one.bin"));
    EXPECT_FALSE(drop(tool().boxEasyUpdate, {}));
    EXPECT_FALSE(drop(tool().boxEasyUpdate, {one, one}));
    EXPECT_FALSE(drop(tool().boxEasyUpdate, {urlOf(directory())}));
    EXPECT_FALSE(drop(tool().boxEasyUpdate, {"https://example.org/one.bin"}));
    EXPECT_FALSE(drop(tool().boxEasyUpdate, {one + "%00"}));
    EXPECT_FALSE(drop(tool().boxHelp, {one}));
    tool().SetButtonStatus(false);
    EXPECT_FALSE(drop(tool().boxEasyUpdate, {one}));
    EXPECT_EQ(version(), "");
}

TEST_F(ImageInputs, ShowWhereADropIsTaken)
{
    QMimeData data;
    data.setUrls({QUrl::fromEncoded(urlOf(image("one.bin")))});
    const auto title = [this] {
        return tool().boxEasyUpdate->grab().toImage().pixelColor(3, TitledBox::kTitleHeight / 2);
    };
    const QColor before = title();
    QDragEnterEvent enter({9, 9}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(tool().boxEasyUpdate, &enter);
    EXPECT_EQ(title(), tool().boxEasyUpdate->palette().color(QPalette::Highlight));
    QDragLeaveEvent leave;
    QApplication::sendEvent(tool().boxEasyUpdate, &leave);
    EXPECT_EQ(title(), before);
}

TEST_F(ImageInputs, OfferTheImagesUsedLast)
{
    QPushButton* const button = tool().btnSelect_EasyUpdate;
    QTest::keyClick(button, Qt::Key_Down);
    ASSERT_NE(openMenu(), nullptr);
    EXPECT_EQ(entries(*openMenu()), QStringList{"off: No images yet"});
    QTest::keyClick(openMenu(), Qt::Key_Escape);

    const std::string first = image("first.bin");
    const std::string second = image("2 & last.bin");
    loadFile(first);
    loadFile(second);
    std::filesystem::remove(first);
    QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(button, &menuKey);
    ASSERT_NE(openMenu(), nullptr);
    EXPECT_THAT(entries(*openMenu()).at(0).toStdString(),
                testing::AllOf(testing::StartsWith("&1  "), testing::EndsWith("2 && last.bin")));
    EXPECT_THAT(entries(*openMenu()).at(1).toStdString(),
                testing::AllOf(testing::StartsWith("off: &2  "),
                               testing::HasSubstr("first.bin (No such file")));
    QTest::keyClick(openMenu(), Qt::Key_Return); // the newest is chosen already
    settleEvents();
    EXPECT_EQ(tool().txtFw_EasyUpdate->text().toStdString(), second);
    EXPECT_EQ(version(), "0101");

    std::filesystem::rename(second, first);
    QApplication::sendEvent(button, &menuKey);
    ASSERT_NE(openMenu(), nullptr);
    QTest::keyClick(openMenu(), Qt::Key_Return); // the newest that is there
    settleEvents();
    EXPECT_EQ(tool().txtFw_EasyUpdate->text().toStdString(), first);
}

TEST_F(ImageInputs, OfferTheImagesWhenTheButtonIsHeld)
{
    QStyleHints& hints = *QGuiApplication::styleHints();
    const int usual = hints.mousePressAndHoldInterval();
    hints.setMousePressAndHoldInterval(1);
    QTest::mousePress(tool().btnLoad_FwFlash, Qt::LeftButton);
    EXPECT_TRUE(waitFor([] { return openMenu() != nullptr; }));
    hints.setMousePressAndHoldInterval(usual);
    QMouseEvent release(QEvent::MouseButtonRelease, {5, 5}, {5, 5}, Qt::LeftButton, {}, {});
    QApplication::sendEvent(tool().btnLoad_FwFlash, &release);
    settleEvents();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "no click";
    ASSERT_NE(openMenu(), nullptr);
    QTest::keyClick(openMenu(), Qt::Key_Escape);

    tool().SetButtonStatus(false);
    QContextMenuEvent rightClick(QContextMenuEvent::Mouse, {}, {});
    QApplication::sendEvent(tool().btnLoad_FwFlash, &rightClick);
    EXPECT_EQ(openMenu(), nullptr);
}

TEST_F(ImageInputs, OpenTheirPanelsWhereTheyWere)
{
    loadFile(image("images/one.bin"));
    const auto folder = [](QPushButton* button) {
        std::string shown;
        clickAndUse(button, [&shown](QDialog& panel) {
            shown = qobject_cast<QFileDialog*>(&panel)->directory().path().toStdString();
            QTest::keyClick(&panel, Qt::Key_Escape);
        });
        return shown;
    };
    EXPECT_EQ(folder(tool().btnLoad_FwFlash), directory() + "/images");
    const std::string other = image("other/\xFC/two.bin");
    EXPECT_TRUE(drop(tool().boxEasyUpdate, {urlOf(other)}));
    EXPECT_EQ(folder(tool().btnLoad_FwFlash), directory() + "/images");
    EXPECT_EQ(folder(tool().btnSelect_EasyUpdate), directory() + "/other") << "as near as it can";
    std::filesystem::remove_all(directory() + "/images");
    EXPECT_EQ(folder(tool().btnLoad_FwFlash), directory());
}

TEST_F(ImageInputs, ListWhatThePanelCannotShow)
{
    tool().recentFiles.add(RecentFiles::Panel::Update, directory() + "/x", false);
    image("d\xE4/inner.bin");
    image("f\xFCr.bin");
    clickAndUse(tool().btnSelect_EasyUpdate, [](QDialog& panel) {
        const auto* const others = panel.findChild<QPushButton*>("rawNames");
        ASSERT_TRUE(others->isVisible());
        EXPECT_EQ(entries(*others->menu()), (QStringList{"d\\xE4/", "f\\xFCr.bin"}));
        QMenu* const inner = others->menu()->actions().front()->menu();
        emit inner->aboutToShow();
        EXPECT_EQ(entries(*inner), QStringList{"inner.bin"});
        inner->actions().front()->trigger();
    });
    EXPECT_EQ(version(), "0101");
    clickAndUse(tool().btnSelect_EasyUpdate, [this](QDialog& panel) {
        EXPECT_TRUE(panel.findChild<QPushButton*>("rawNames")->isVisible());
        emit qobject_cast<QFileDialog*>(&panel)->directoryEntered(
            QString::fromStdString(resources()));
        EXPECT_FALSE(panel.findChild<QPushButton*>("rawNames")->isVisible());
        QTest::keyClick(&panel, Qt::Key_Escape);
    });
}

TEST(RawNameMenu, SaysThatItIsCut)
{
    const TemporaryFolder folder;
    for (int i = 0; i < 201; ++i) {
        folder.write("\xFC" + std::to_string(i), "");
    }
    QMenu menu;
    fillRawNameMenu(menu, folder.path(), {});
    EXPECT_EQ(menu.actions().size(), 201);
    EXPECT_FALSE(menu.actions().back()->isEnabled());
}

TEST_F(ImageInputs, SuggestANameThatIsNeverReplacedUnasked)
{
    read();
    retype(tool().txtPro_FwFlash, "../Hub 1.5");
    tool().recentFiles.add(RecentFiles::Panel::Save, directory() + "/x", false);
    const std::string path = directory() + "/_._Hub_1.5_0100.BIN";
    const auto saveSuggested = [&](bool asked) {
        clickAndUse(tool().btnSave_FwFlash, [&](QDialog& panel) {
            auto* const name = panel.findChild<QLineEdit*>("fileNameEdit");
            EXPECT_EQ(directory() + '/' + name->text().toStdString(), path);
            EXPECT_TRUE(name->hasSelectedText());
            if (asked) {
                QTimer::singleShot(0, &panel, [] {
                    auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                    ASSERT_NE(question, nullptr);
                    QTest::mouseClick(question->button(QMessageBox::No), Qt::LeftButton);
                });
            }
            QTest::keyClick(name, Qt::Key_Return);
            EXPECT_EQ(panel.isVisible(), asked);
            panel.reject();
        });
    };
    saveSuggested(false);
    EXPECT_EQ(bytesOf(path).size(), demoImage().size());
    const std::vector<std::uint8_t> earlier = {1, 2, 3};
    writeFile("_._Hub_1.5_0100.BIN", earlier);
    saveSuggested(true);
    EXPECT_EQ(bytesOf(path), earlier);
}

} // namespace

} // namespace vornadel::test
