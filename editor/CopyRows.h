#pragma once

class QTableView;

namespace vornadel
{

/// Lets Ctrl+C copy the selected rows of a table as text: a row is a line, a tab separates its
/// cells.
void copyRowsByKey(QTableView& table);

} // namespace vornadel
