#include "editor/MyTableView.h"

#include <gtest/gtest.h>

namespace vornadel::test
{

namespace
{

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
