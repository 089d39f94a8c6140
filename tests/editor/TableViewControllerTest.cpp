#include "editor/MyTableView.h"
#include "tests/editor/PropertyPage.h"

#include <QScrollBar>
#include <QTest>
#include <QTextDocument>

#include <fstream>

namespace vornadel::test
{

namespace
{

using TableController = PropertyPage;

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

TEST_F(TableController, HasTwoColumnsAndTakesTheRoomOfAScrollBarFromTheNames)
{
    EXPECT_EQ(m_table.model()->columnCount(), 2);
    EXPECT_EQ(m_table.model()->headerData(0, Qt::Horizontal).toString(), "property");
    EXPECT_EQ(m_table.model()->headerData(1, Qt::Horizontal).toString(), "curValue");
    m_table.resize(440, 180);
    m_table.show();
    QApplication::processEvents();
    EXPECT_EQ(m_table.columnWidth(0), 266);
    EXPECT_EQ(m_table.columnWidth(1), 170);
    for (std::uint8_t key = 1; key <= 40; ++key) {
        add(key, key, 1);
    }
    it().reloadTable();
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_table.verticalScrollBar()->isVisible(); }));
    EXPECT_FALSE(m_table.horizontalScrollBar()->isVisible());
    EXPECT_EQ(m_table.columnWidth(1), 170);
    EXPECT_LT(m_table.columnWidth(0), 266);
    EXPECT_EQ(m_table.columnWidth(0), m_table.viewport()->width() - 170);
}

TEST_F(TableController, ShowsNameAndMatchingOption)
{
    PropItem& item = add(1, 20, 3);
    item.curValue = "2";
    EXPECT_EQ(it().tableView_objectValueForTableColumn_row(kName, 0), "Property 1");
    EXPECT_EQ(cell(0), "2 : Auto");
    EXPECT_EQ(it().valueCell(0).entries, (QStringList{"0 : Off", "1 : On", "2 : Auto"}));
    EXPECT_EQ(it().valueCell(0).chosen, 2);
    EXPECT_EQ(it().tableView_objectValueForTableColumn_row("group", 0), "Empty Value");
    EXPECT_EQ(cell(7), "Empty Value");
    EXPECT_EQ(cell(-1), "Empty Value");
    item.dataList = {"1", "2", "2"};
    EXPECT_EQ(cell(0), "2 : On") << "the first of two with this value";
    item.propList.clear();
    item.dataList.clear();
    item.curValue = "Const Value";
    EXPECT_EQ(cell(0), "Empty Value");
    EXPECT_TRUE(it().valueCell(0).entries.isEmpty());
    EXPECT_EQ(it().valueCell(0).chosen, -1);
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
    m_table.selectRow(1);
    choose(1, 1);
    ASSERT_EQ(m_table.selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(m_table.selectionModel()->selectedRows().front().row(), 1);
    it().propItemList.erase(it().propItemList.begin());
    it().reloadTable();
    EXPECT_FALSE(m_table.selectionModel()->hasSelection());
    EXPECT_EQ(m_table.model()->rowCount(), 1);
}

TEST_F(TableController, DescribesTheSelectedRow)
{
    PropItem& first = add(5, 0x112, 0x06);
    first.pageName = "a page";
    first.groupName = "a group";
    PropItem& unbound = add(0, 20, 0x01);
    it().reloadTable();
    m_description.setPlainText("before");
    m_table.selectRow(0);
    EXPECT_EQ(m_description.toPlainText(),
              "(addr:0x12  mask:0x06)\nWhat it does : \n0 : Off\n1 : On\n2 : Auto\n");
    m_table.selectRow(1);
    EXPECT_EQ(m_description.toPlainText(), "0 : Off\n1 : On\n2 : Auto\n")
        << "key 0: its options alone";
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
    m_table.selectRow(1);
    const QString line =
        "key:5\nbaseOnAddr:12\nbaseOnMask:16\npageName:System\ngroupName:Ports\nPropName:Gain\n"
        "PropDesc:What it does\naddr:274\nmask:6\n";
    EXPECT_EQ(m_log, QStringList{line});
    m_table.clearSelection();
    EXPECT_EQ(m_log, QStringList{line}) << "no row, no line";
}

TEST_F(TableController, RefreshesBoundItemsAlone)
{
    add(1, 20, 0x30);
    it().RefreshCurValues();
    EXPECT_EQ(it().allItemList[0]->curValue, "0") << "without an image";
    load();
    byte(20) = 0xA5;
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
    std::ofstream(path)
        << "[HubFF_USB_05]\nPropName = Gain\nPropAddr = 20\nPropMask = 3\nPageName = SSC\n";
    it().LoadIni();
    EXPECT_TRUE(it().allItemList.empty()) << "nothing is selected";
    EXPECT_TRUE(m_log.isEmpty());

    m_icTypes.addItem("A.INI", QByteArray("A.INI"));
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
    EXPECT_EQ(m_icTypes.toolTip(),
              QString("%1\nwas not read: iniparser: syntax error in %1 (1)").arg(path.c_str()));
    std::ofstream(path, std::ios::trunc) << "[x]\n";
    it().LoadIni();
    EXPECT_EQ(m_icTypes.toolTip(), "A.INI");
}

TEST(MyTableView, HasThreeRowsAndChangesNothing)
{
    QStringList log;
    MyTableView view([&log](const QString& line) { log.append(line); });
    EXPECT_EQ(view.tableView, nullptr);
    EXPECT_EQ(view.numberOfRowsInTableView(), 3);
    EXPECT_EQ(MyTableView::tableView_objectValueForTableColumn_row("property", 0), "Empty Value");
    view.tableView_setObjectValue_forTableColumn_row(1, "curValue", 2);
    view.tableViewSelectionDidChange();
    EXPECT_EQ(MyTableView::tableView_objectValueForTableColumn_row("curValue", 2), "Empty Value");
    EXPECT_EQ(log, (QStringList{"Enter numberOfRowsInTableView", "setObjectValue",
                                "selectionDidChange"}));
}

} // namespace

} // namespace vornadel::test
