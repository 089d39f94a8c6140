#include "editor/RowNotes.h"

#include "firmware/ImageState.h"
#include "props/PropertyEdit.h"

namespace vornadel
{

RowNotes rowNotes(const PropItem& item, const PropItemList& allItems, const FwImage& image,
                  const ImageState* original)
{
    RowNotes notes;
    if (!image.loaded) {
        return notes;
    }
    const auto block = FwImage_Block(image);
    notes.edited = original != nullptr && differs(item, original->fromBlock(), block);
    if (notes.edited) {
        const std::uint8_t before = storedValue(item, original->fromBlock());
        notes.lines.append("Read or loaded: " + QString::fromStdString(textOfValue(item, before)));
    }
    notes.locked = isLocked(item, block);
    if (notes.locked) {
        notes.lines.append(QString::fromStdString(whyLocked(item, allItems)));
    }
    return notes;
}

} // namespace vornadel
