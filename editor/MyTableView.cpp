#include "editor/MyTableView.h"

#include <utility>

namespace vornadel
{

MyTableView::MyTableView(std::function<void(const QString&)> log) : m_log(std::move(log)) {}

int MyTableView::numberOfRowsInTableView() const
{
    m_log("Enter numberOfRowsInTableView");
    return static_cast<int>(m_list.size());
}

QString MyTableView::tableView_objectValueForTableColumn_row(const QString& /*column*/, int /*row*/)
{
    return "Empty Value";
}

void MyTableView::tableView_setObjectValue_forTableColumn_row(int /*value*/,
                                                              const QString& /*column*/,
                                                              int /*row*/) const
{
    m_log("setObjectValue");
}

void MyTableView::tableViewSelectionDidChange() const { m_log("selectionDidChange"); }

} // namespace vornadel
