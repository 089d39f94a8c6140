#include "tests/props_ui/PropertyPage.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QTextDocument>

#include <fstream>
#include <limits>

namespace vornadel::test
{

namespace
{

class TableController : public PropertyPage
{
protected:
    void select(int row) { m_table.selectRow(row); }
    qsizetype rowsAsked() const { return m_log.count("Enter numberOfRowsInTableView"); }
};

TEST_F(TableController, StartsWithTwoEmptyListsAndIsTheOne)
{
    EXPECT_EQ(TableControllerRef, &it());
    EXPECT_TRUE(it().allItemList.empty());
    EXPECT_TRUE(it().propItemList.empty());
    add(1, 20, 1);
    EXPECT_EQ(it().init(), &it());
    EXPECT_TRUE(it().allItemList.empty());
    EXPECT_TRUE(it().propItemList.empty());
    m_controller.reset();
    EXPECT_EQ(TableControllerRef, nullptr);
}

TEST_F(TableController, HasTwoColumnsOfTheirWidths)
{
    EXPECT_EQ(m_table.model()->columnCount(), 2);
    EXPECT_EQ(m_table.model()->headerData(0, Qt::Horizontal).toString(), "property");
    EXPECT_EQ(m_table.model()->headerData(1, Qt::Horizontal).toString(), "curValue");
    m_table.resize(440, 180);
    m_table.show();
    QApplication::processEvents();
    EXPECT_EQ(m_table.columnWidth(0), 266);
    EXPECT_EQ(m_table.columnWidth(1), 170);
}

TEST_F(TableController, TakesTheRoomOfAScrollBarFromTheNames)
{
    for (std::uint8_t key = 1; key <= 40; ++key) {
        add(key, key, 1);
    }
    it().reloadTable();
    m_table.resize(440, 180);
    m_table.show();
    QApplication::processEvents();
    ASSERT_TRUE(m_table.verticalScrollBar()->isVisible());
    EXPECT_FALSE(m_table.horizontalScrollBar()->isVisible());
    EXPECT_EQ(m_table.columnWidth(1), 170);
    EXPECT_LT(m_table.columnWidth(0), 266);
    EXPECT_EQ(m_table.columnWidth(0), m_table.viewport()->width() - 170);
}

TEST_F(TableController, ShowsNameAndMatchingOption)
{
    add(1, 20, 3).curValue = "2";
    EXPECT_EQ(it().tableView_objectValueForTableColumn_row(kName, 0), "Property 1");
    EXPECT_EQ(cell(0), "2 : Auto");
    EXPECT_EQ(it().valueCell(0).entries, (QStringList{"0 : Off", "1 : On", "2 : Auto"}));
    EXPECT_EQ(it().valueCell(0).chosen, 2);
    EXPECT_EQ(it().tableView_objectValueForTableColumn_row("group", 0), "Empty Value");
    EXPECT_EQ(cell(7), "Empty Value");
    EXPECT_EQ(cell(-1), "Empty Value");
}

TEST_F(TableController, ShowsMarkupToTheLetterInToolTips)
{
    add(1, 20, 0x03).property = "<b>Bold</b> &amp; plain";
    add(2, 21, 0x03).property = "Less < more & more";
    it().reloadTable();
    QTextDocument shown;
    shown.setHtml(m_table.model()->index(0, 0).data(Qt::ToolTipRole).toString());
    EXPECT_EQ(shown.toPlainText(), "<b>Bold</b> &amp; plain");
    EXPECT_EQ(m_table.model()->index(1, 0).data(Qt::ToolTipRole).toString(), "Less < more & more");
}

TEST_F(TableController, ShowsTheFirstOfTwoOptionsWithOneValue)
{
    PropItem& item = add(1, 20, 3);
    item.dataList = {"1", "1", "1"};
    item.curValue = "1";
    EXPECT_EQ(cell(0), "1 : Off");
}

TEST_F(TableController, ShowsAnEmptyValueForAConstantWithNothingToChoose)
{
    PropItem& item = add(1, 20, 3);
    item.propList.clear();
    item.dataList.clear();
    item.curValue = "Const Value";
    EXPECT_EQ(cell(0), "Empty Value");
    EXPECT_TRUE(it().valueCell(0).entries.isEmpty());
    EXPECT_EQ(it().valueCell(0).chosen, -1);
}

struct ChosenCase {
    std::vector<std::string> data;
    const char* value;
    int chosen;
};

TEST_F(TableController, MarksTheEntryAtThePositionOfTheLeadingNumber)
{
    PropItem& item = add(1, 20, 3);
    const ChosenCase kCases[] = {
        {{"0", "1", "2"}, "1", 1},
        {{"2", "1", "0"}, "2", 2},  // the matching option is the first
        {{"a", "b", "c"}, "c", 0},  // no number: the first
        {{"a", "b", "c"}, "9", 0},  // no match: "Empty Value"
        {{"3", "b", "c"}, "3", -1}, // past the last entry: none
        {{"1x", "b", "c"}, "1x", 1},
        {{"-1", "b", "c"}, "-1", -1},
        {{"99999999999999999999", "b", "c"}, "99999999999999999999", -1},
    };
    for (const ChosenCase& each : kCases) {
        item.dataList = each.data;
        item.curValue = each.value;
        EXPECT_EQ(it().valueCell(0).chosen, each.chosen) << each.value;
    }
}

TEST_F(TableController, AsksForTheRowsOncePerReload)
{
    for (std::uint8_t key = 1; key <= 40; ++key) {
        add(key, key, 1);
    }
    m_table.show();
    m_log.clear();
    it().reloadTable();
    QApplication::processEvents();
    m_table.scrollToBottom();
    m_table.grab();
    EXPECT_EQ(rowsAsked(), 1);
    it().reloadTable();
    EXPECT_EQ(rowsAsked(), 2);
    EXPECT_EQ(m_table.model()->rowCount(), 40);
}

TEST_F(TableController, KeepsTheSelectionOverAReloadOfTheSameItems)
{
    load();
    add(1, 20, 1);
    add(2, 21, 1);
    it().reloadTable();
    select(1);
    choose(1, 1);
    ASSERT_EQ(m_table.selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(m_table.selectionModel()->selectedRows().front().row(), 1);
    it().propItemList.erase(it().propItemList.begin());
    it().reloadTable();
    EXPECT_FALSE(m_table.selectionModel()->hasSelection());
    EXPECT_EQ(m_table.model()->rowCount(), 1);
}

TEST_F(TableController, TellsTheTableOfChangedCells)
{
    load();
    add(1, 20, 3);
    it().reloadTable();
    QSignalSpy changed(m_table.model(), &QAbstractItemModel::dataChanged);
    choose(0, 1);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(m_table.model()->index(0, 1).data().toString(), "1 : On");
}

TEST_F(TableController, WritesThePositionThatWasChosen)
{
    load();
    PropItem& item = add(1, 20, 0x06);
    choose(0, 2);
    EXPECT_EQ(byte(20), 0x04) << "the third entry writes 2";
    EXPECT_EQ(item.curValue, "2");
    EXPECT_EQ(redText(), "04 ");
}

TEST_F(TableController, WritesThePositionWhateverTheDataTextsAre)
{
    load();
    PropItem& item = add(1, 20, 0x03);
    item.propList = {"Off", "On"};
    item.dataList = {"0", "2"};
    choose(0, 1);
    EXPECT_EQ(byte(20), 0x01);
    EXPECT_EQ(item.curValue, "1");
    EXPECT_EQ(cell(0), "Empty Value");
}

TEST_F(TableController, ChangesTheFieldAloneAndMarksItsByte)
{
    load();
    add(1, 20, 0x30);
    m_log.clear();
    choose(0, 3);
    EXPECT_EQ(byte(20), 0x30);
    EXPECT_EQ(redText(), "30 ");
    EXPECT_EQ(rowsAsked(), 1);
    ByteList expected = imageWithBlock(kLength, kBlock);
    expected[kBlock + 20] = 0x30;
    EXPECT_EQ(allBytes(), expected);
    byte(20) = 0xFF;
    choose(0, 0);
    EXPECT_EQ(byte(20), 0xCF);
}

TEST_F(TableController, TellsTheConsoleWhatItWrites)
{
    load();
    PropItem& item = add(1, 20, 0x30);
    item.pageName = "SSC";
    m_log.clear();
    choose(0, 3);
    EXPECT_EQ(m_log.value(0), "baseOnMask=0;baseOnAddr=0;baseOnValue=0");
    EXPECT_EQ(m_log.value(1), "value = 3");
    EXPECT_EQ(m_log.value(2),
              "baseOnAddr:0\nbaseOnMask:0\npageName:SSC\nPropName:Property 1\naddr:20\nmask:48\n");
    EXPECT_EQ(m_log.value(3), "Enter numberOfRowsInTableView");
    EXPECT_EQ(m_log.value(4), "offsetBegin :20   ;   noffsetEnd :21\n");
    EXPECT_EQ(m_log.size(), 5);
}

TEST_F(TableController, CutsTheValueToTheFieldButShowsItWhole)
{
    load();
    PropItem& item = add(1, 20, 0x01);
    choose(0, 2);
    EXPECT_EQ(byte(20), 0x00) << "2 does not fit into one bit";
    EXPECT_EQ(item.curValue, "2");
    item.mask = 0;
    byte(20) = 0xA5;
    choose(0, 1);
    EXPECT_EQ(byte(20), 0xA5);
}

TEST_F(TableController, RefusesALockedPropertyUntilItsBitIsSet)
{
    load();
    PropItem& locked = add(1, 20, 0x03);
    locked.baseOnAddr = 12;
    locked.baseOnMask = 16;
    add(2, 12, 0x10).propName = "U1 Enable";
    it().propItemList.pop_back(); // it is on another page
    m_log.clear();
    choose(0, 1);
    EXPECT_EQ(m_alerts, QStringList{"This Item is Not Editable.  To Change this Item,you should set\n\n"
                                    " U1 Enable\n(Addr 0x0C[4:4])\n\nfrom 0 to 1"});
    EXPECT_EQ(allBytes(), imageWithBlock(kLength, kBlock));
    EXPECT_EQ(locked.curValue, "0");
    EXPECT_EQ(m_log,
              (QStringList{"baseOnMask=16;baseOnAddr=12;baseOnValue=0", "Enter numberOfRowsInTableView"}));

    it().propItemList.push_back(it().allItemList.back());
    choose(1, 1);
    EXPECT_EQ(byte(12), 0x10);
    choose(0, 1);
    EXPECT_EQ(byte(20), 0x01);
    EXPECT_EQ(m_alerts.size(), 1);
}

TEST_F(TableController, ReloadsALockedRowOnlyAfterItsAlert)
{
    load();
    PropItem& locked = add(1, 20, 0x03);
    locked.baseOnAddr = 12;
    locked.baseOnMask = 16;
    it().reloadTable();
    m_heard.clear();
    choose(0, 1);
    EXPECT_EQ(m_heard,
              (QStringList{"log: baseOnMask=16;baseOnAddr=12;baseOnValue=0",
                           "alert: This Item is Not Editable.  To Change this Item,you should set\n\n"
                           " (null)\n(Addr 0x0C[4:4])\n\nfrom 0 to 1",
                           "log: Enter numberOfRowsInTableView"}));
}

TEST_F(TableController, NamesTheFirstControllingItemAndNullForNone)
{
    load();
    PropItem& locked = add(1, 20, 0x03);
    locked.baseOnAddr = 0x112;
    locked.baseOnMask = 0x06;
    choose(0, 1);
    EXPECT_EQ(m_alerts.value(0), "This Item is Not Editable.  To Change this Item,you should set\n\n (null)\n"
                                 "(Addr 0x112[2:1])\n\nfrom 0 to 1");
    add(2, 0x112, 0x06).propName = "First";
    add(3, 0x112, 0x06).propName = "Second";
    choose(0, 1);
    EXPECT_TRUE(m_alerts.value(1).contains("\n\n First\n"));
}

TEST_F(TableController, NeverLocksWithoutAnEnablingAddressOrMask)
{
    load();
    PropItem& item = add(1, 20, 0x03);
    byte(0) = 0xAA; // bit 0 is clear
    item.baseOnMask = 1;
    choose(0, 1);
    EXPECT_EQ(byte(20), 0x01);
    item.baseOnAddr = 30;
    item.baseOnMask = 0;
    choose(0, 2);
    EXPECT_EQ(byte(20), 0x02);
    EXPECT_TRUE(m_alerts.isEmpty());
}

TEST_F(TableController, MarksTheBytesAtTheEndsOfHalfLinesAndOfTheBlock)
{
    load();
    add(1, 7, 0xFF);
    add(2, 15, 0xFF);
    add(3, 255, 0xFF);
    choose(0, 1);
    EXPECT_EQ(redText(), "01 - ");
    choose(1, 2);
    EXPECT_EQ(redText(), "02 \n0110h:");
    choose(2, 2);
    EXPECT_EQ(redText(), "02 \n") << "to the end of the text";
}

TEST_F(TableController, StaysInsideTheImage)
{
    load();
    const std::uint32_t room = kLength - kBlock;
    const ByteList before = allBytes();
    for (const std::uint32_t addr : {room, room + 1, 0x7FFFFFFFU, 0xFFFFFF00U, 0xFFFFFFFFU}) {
        add(1, addr, 0xFF);
        choose(static_cast<int>(it().propItemList.size()) - 1, 1);
        EXPECT_EQ(allBytes(), before) << addr;
        EXPECT_EQ(redText(), "") << addr;
    }
    add(2, room - 1, 0xFF);
    choose(static_cast<int>(it().propItemList.size()) - 1, 1);
    EXPECT_EQ(allBytes().back(), 1) << "behind the block, but in the image";

    PropItem& item = add(3, 20, 0xFF);
    item.baseOnAddr = 0xFFFFFFFF;
    item.baseOnMask = 0xFF;
    choose(static_cast<int>(it().propItemList.size()) - 1, 1);
    EXPECT_EQ(byte(20), 0) << "nothing there to unlock it";
    EXPECT_EQ(m_alerts.size(), 1);
}

TEST_F(TableController, IgnoresEditsWithoutAnImage)
{
    PropItem& item = add(1, 20, 0x03);
    m_log.clear();
    choose(0, 2);
    EXPECT_EQ(item.curValue, "0");
    EXPECT_EQ(cell(0), "0 : Off");
    EXPECT_TRUE(m_alerts.isEmpty());
    EXPECT_TRUE(m_log.isEmpty());
}

TEST_F(TableController, IgnoresEditsOfRowsAndColumnsThatAreNone)
{
    load();
    add(1, 20, 0xFF);
    choose(1, 2);
    choose(-1, 2);
    it().tableView_setObjectValue_forTableColumn_row(2, kName, 0);
    EXPECT_EQ(allBytes(), imageWithBlock(kLength, kBlock));
}

TEST_F(TableController, OffersATableOfOneLevel)
{
    add(1, 20, 3);
    it().reloadTable();
    const QAbstractItemModel& model = *m_table.model();
    const QModelIndex name = model.index(0, 0);
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.rowCount(name), 0);
    EXPECT_EQ(model.columnCount(name), 0);
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
    EXPECT_EQ(model.headerData(0, Qt::Vertical), 1);
}

TEST_F(TableController, TakesEditsOfTheValueAlone)
{
    load();
    add(1, 20, 3);
    it().reloadTable();
    QAbstractItemModel& model = *m_table.model();
    const ByteList before = allBytes();
    EXPECT_FALSE(model.setData(model.index(0, 0), 1, Qt::EditRole));
    EXPECT_FALSE(model.setData(model.index(0, 1), 1, Qt::DisplayRole));
    EXPECT_FALSE(model.setData({}, 1, Qt::EditRole));
    EXPECT_EQ(allBytes(), before);
    EXPECT_TRUE(model.setData(model.index(0, 1), 1, Qt::EditRole));
    EXPECT_EQ(byte(20) & 3, 1);
}

TEST_F(TableController, LeavesTheReferenceToALaterOne)
{
    {
        FwImage image;
        QTableView table;
        PropertyViews views;
        views.table = &table;
        views.hex = &m_hex;
        TableViewController second(views, image, "", {});
        EXPECT_EQ(TableControllerRef, &second);
        m_controller.reset();
        EXPECT_EQ(TableControllerRef, &second);
    }
    EXPECT_EQ(TableControllerRef, nullptr);
}

TEST_F(TableController, DescribesTheSelectedRow)
{
    add(5, 0x112, 0x06);
    PropItem& unbound = add(0, 20, 0x01);
    it().reloadTable();
    m_description.setPlainText("before");
    select(0);
    EXPECT_EQ(m_description.toPlainText(),
              "(addr:0x12  mask:0x06)\nWhat it does : \n0 : Off\n1 : On\n2 : Auto\n");
    select(1);
    EXPECT_EQ(m_description.toPlainText(), "0 : Off\n1 : On\n2 : Auto\n") << "key 0: its options alone";
    unbound.propList.clear();
    m_table.clearSelection();
    EXPECT_EQ(m_description.toPlainText(), "0 : Off\n1 : On\n2 : Auto\n") << "no row, no change";
}

TEST_F(TableController, TellsTheConsoleWhichRowIsSelected)
{
    add(1, 20, 0x01);
    PropItem& item = add(5, 0x112, 0x06);
    item.baseOnAddr = 12;
    item.baseOnMask = 16;
    item.pageName = "System";
    item.groupName = "Ports";
    item.propName = "Gain";
    item.property = "not this one";
    it().reloadTable();
    m_log.clear();
    select(1);
    const QString line =
        "key:5\nbaseOnAddr:12\nbaseOnMask:16\npageName:System\ngroupName:Ports\nPropName:Gain\n"
        "PropDesc:What it does\naddr:274\nmask:6\n";
    EXPECT_EQ(m_log, QStringList{line});
    m_table.clearSelection();
    EXPECT_EQ(m_log, QStringList{line}) << "no row, no line";
}

TEST_F(TableController, RefreshesBoundItemsAlone)
{
    load();
    byte(20) = 0xA5;
    add(1, 20, 0x30);
    add(2, 0x120 + 0x14 - 0x20, 0x0F); // only eight bits of the address count
    add(0, 20, 0xFF).curValue = "7";
    it().RefreshCurValues();
    EXPECT_EQ(it().allItemList[0]->curValue, "2");
    EXPECT_EQ(it().allItemList[1]->curValue, "5");
    EXPECT_EQ(it().allItemList[2]->curValue, "7");
}

TEST_F(TableController, CountsInEightBitsWhenAFileIsLoaded)
{
    load();
    byte(20) = 0x01;
    for (int i = 0; i < 260; ++i) {
        add(1, 20, 0x01);
    }
    it().RefreshCurValues_8Bit();
    EXPECT_EQ(it().allItemList[3]->curValue, "1");
    EXPECT_EQ(it().allItemList[4]->curValue, "0");
    it().RefreshCurValues();
    EXPECT_EQ(it().allItemList[259]->curValue, "1");
}

TEST_F(TableController, RefreshesNothingWithoutAnImage)
{
    add(1, 20, 0x01).curValue = "7";
    it().RefreshCurValues();
    EXPECT_EQ(it().allItemList[0]->curValue, "7");
}

TEST_F(TableController, FillsTheIdentityFields)
{
    m_fields[0].setText("kept");
    it().UpdateTxt_FwFlash();
    EXPECT_EQ(m_fields[0].text(), "kept") << "without an image";
    load();
    m_image.containerIdText = {"typed"};
    it().UpdateTxt_FwFlash();
    QStringList texts;
    for (const QLineEdit& field : m_fields) {
        texts.append(field.text());
    }
    EXPECT_EQ(texts, (QStringList{"1209", "3300", "2201", "0105", "Maker", "Hub", "42",
                                  "{00112233-4455-6677-8899-aabbccddeeff}"}));
    ASSERT_TRUE(parse(m_image, imageWithBlock(256, 0)));
    it().UpdateTxt_FwFlash();
    EXPECT_EQ(m_fields[3].text(), "") << "no room for a version";
}

TEST_F(TableController, LoadsTheSelectedDefinitionFile)
{
    const std::string path = m_directory.path().toStdString() + "/A.INI";
    std::ofstream(path) << "[HubFF_USB_05]\nPropName = Gain\nPropAddr = 20\nPropMask = 3\nPageName = SSC\n";
    it().LoadIni();
    EXPECT_TRUE(it().allItemList.empty()) << "nothing is selected";
    EXPECT_TRUE(m_log.isEmpty());

    m_icTypes.addItem("A.INI");
    add(9, 1, 1);
    it().LoadIni();
    ASSERT_EQ(it().allItemList.size(), 1U);
    EXPECT_EQ(it().allItemList[0]->key, 5);
    EXPECT_EQ(it().allItemList[0]->propName, "Gain");
    EXPECT_TRUE(it().propItemList.empty());
    EXPECT_EQ(m_log, QStringList{"ini is: " + QString::fromStdString(path)});
    it().LoadIni();
    EXPECT_EQ(it().allItemList.size(), 1U) << "emptied first, never merged";

    std::ofstream(path, std::ios::trunc) << "no [ini";
    m_log.clear();
    it().LoadIni();
    EXPECT_TRUE(it().allItemList.empty());
    EXPECT_EQ(m_log.size(), 2) << "and one line that says why";
}

} // namespace

} // namespace vornadel::test
