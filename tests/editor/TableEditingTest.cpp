// The effect of an edit in the property table on the image, on the hex view and on the edited row.

#include "tests/editor/PropertyPage.h"

#include <QSignalSpy>

namespace vornadel::test
{

namespace
{

using TableEditing = PropertyPage;

TEST_F(TableEditing, TellsTheTableOfChangedCells)
{
    load();
    add(1, 20, 3);
    it().reloadTable();
    QSignalSpy changed(m_table.model(), &QAbstractItemModel::dataChanged);
    choose(0, 1);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(m_table.model()->index(0, 1).data().toString(), "1 : On");
}

TEST_F(TableEditing, WritesThePositionWhateverTheDataTextsAre)
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

TEST_F(TableEditing, ChangesTheFieldAloneAndMarksItsByte)
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

TEST_F(TableEditing, TellsTheConsoleWhatItWrites)
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

TEST_F(TableEditing, CutsTheValueToTheFieldButShowsItWhole)
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

TEST_F(TableEditing, RefusesALockedPropertyUntilItsBitIsSet)
{
    load();
    PropItem& locked = add(1, 20, 0x03);
    locked.baseOnAddr = 12;
    locked.baseOnMask = 16;
    add(2, 12, 0x10).propName = "U1 Enable";
    it().propItemList.pop_back(); // like a property on another page
    m_heard.clear();
    choose(0, 1);
    EXPECT_EQ(
        m_heard,
        (QStringList{"log: baseOnMask=16;baseOnAddr=12;baseOnValue=0",
                     "alert: This Item is Not Editable.  To Change this Item,you should set\n\n"
                     " U1 Enable\n(Addr 0x0C[4:4])\n\nfrom 0 to 1",
                     "log: Enter numberOfRowsInTableView"}));
    EXPECT_EQ(allBytes(), imageWithBlock(kLength, kBlock));
    EXPECT_EQ(locked.curValue, "0");

    it().propItemList.push_back(it().allItemList.back());
    choose(1, 1);
    EXPECT_EQ(byte(12), 0x10);
    choose(0, 1);
    EXPECT_EQ(byte(20), 0x01);
    EXPECT_EQ(m_alerts.size(), 1);
}

TEST_F(TableEditing, NamesTheFirstControllingItemAndNullForNone)
{
    load();
    PropItem& locked = add(1, 20, 0x03);
    locked.baseOnAddr = 0x112;
    locked.baseOnMask = 0x06;
    choose(0, 1);
    EXPECT_EQ(m_alerts.value(0),
              "This Item is Not Editable.  To Change this Item,you should set\n\n (null)\n"
              "(Addr 0x112[2:1])\n\nfrom 0 to 1");
    add(4, 0x112, 0x08).propName = "Another bit of the byte";
    add(2, 0x112, 0x06).propName = "First";
    add(3, 0x112, 0x06).propName = "Second";
    choose(0, 1);
    EXPECT_TRUE(m_alerts.value(1).contains("\n\n First\n"));
}

TEST_F(TableEditing, NeverLocksWithoutAnEnablingAddressOrMask)
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

TEST_F(TableEditing, StaysInsideTheImage)
{
    load();
    const std::uint32_t room = kLength - kBlock;
    const ByteList before = allBytes();
    for (const std::uint32_t addr : {room, room + 1, 0x7FFFFFFFU, 0xFFFFFF00U}) {
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

TEST_F(TableEditing, CountsTheEndOfTheRedRangeIn32Bits)
{
    load();
    add(1, 0xFFFFFFFF, 0xFF);
    choose(0, 1);
    EXPECT_EQ(m_log.last(), "offsetBegin :-1   ;   noffsetEnd :0\n");
    EXPECT_TRUE(redText().startsWith("55 AA 12 ")) << "from byte 0 on";
    EXPECT_EQ(redText().size(), 16 * 57 - 6);
}

TEST_F(TableEditing, IgnoresEditsWithoutAnImage)
{
    PropItem& item = add(1, 20, 0x03);
    m_log.clear();
    choose(0, 2);
    EXPECT_EQ(item.curValue, "0");
    EXPECT_EQ(cell(0), "0 : Off");
    EXPECT_TRUE(m_alerts.isEmpty());
    EXPECT_TRUE(m_log.isEmpty());
}

TEST_F(TableEditing, IgnoresEditsOfRowsAndColumnsThatAreNone)
{
    load();
    add(1, 20, 0xFF);
    choose(1, 2);
    choose(-1, 2);
    it().tableView_setObjectValue_forTableColumn_row(2, kName, 0);
    EXPECT_EQ(allBytes(), imageWithBlock(kLength, kBlock));
}

} // namespace

} // namespace vornadel::test
