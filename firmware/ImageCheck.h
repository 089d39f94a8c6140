#pragma once

#include "firmware/FwImage.h"

namespace vornadel
{

/// Why a hub could not run an image.
enum class ImageFlaw {
    None,
    NoVersion,  ///< no room for the version before the block
    NoIds,      ///< the vendor id or a product id is 0000 or FFFF
    BadStrings, ///< a string descriptor does not fit into the string area
};

/// The first flaw in the descriptor block of a loaded image.
ImageFlaw FwImage_FindFlaw(const FwImage& image);

} // namespace vornadel
