#pragma once

#include <functional>

class QAbstractItemView;
class QComboBox;
class QModelIndex;

namespace vornadel
{

/// Calls `selected` with an index of the one selected row of the view, when assistive technology
/// has selected it. Only assistive technology selects a row without making it the current one. The
/// view has its model already.
void watchAssistedSelection(QAbstractItemView& view,
                            std::function<void(const QModelIndex&)> selected);

/// Lets assistive technology choose an entry by selecting it in the open list. The toolkit offers
/// it no other way.
void takeAssistedChoices(QComboBox& combo);

} // namespace vornadel
