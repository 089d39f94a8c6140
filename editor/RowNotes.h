#pragma once

#include "props/PropItem.h"

#include <QStringList>

namespace vornadel
{

struct FwImage;
struct ImageState;

/// What the table shows of a property beside its name and its value.
struct RowNotes {
    bool edited = false; ///< its value is not what was read or loaded
    bool locked = false; ///< the field that enables it is 0
    QStringList lines;   ///< the old value and what unlocks it, for the tool tip
};

/// `original` is the image as it was read or loaded; null if it is not known.
RowNotes rowNotes(const PropItem& item, const PropItemList& allItems, const FwImage& image,
                  const ImageState* original);

} // namespace vornadel
