#pragma once

#include "firmware/FwImage.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vornadel
{

// Identity fields by name, for edits without a window. They write what the window writes when a
// user replaces the text of a field by another one, the change flags included.

enum class IdentityField { Vid, Sspid, Hspid, Manufacturer, Product, Serial, ContainerId };

/// The names of the fields, in their order.
inline constexpr std::array<std::string_view, 7> kIdentityFieldNames = {
    "vid", "sspid", "hspid", "manufacturer", "product", "serial", "container-id",
};

/// Empty if no field has this name.
std::optional<IdentityField> identityFieldNamed(std::string_view name);

/// What the window's field shows of a loaded image, in the bytes of the image.
std::string FwImage_FieldText(const FwImage& image, IdentityField field);

/// A new text for a field, in UTF-8.
struct FieldEdit {
    IdentityField field{};
    std::string text;
};

/// Why the fields of an image cannot be edited.
enum class FieldFlaw {
    None,
    NotAnId,         ///< not four hex digits
    NotAContainerId, ///< not 8-4-4-4-12 hex digits, with or without braces
    NotUtf8,
    TooLong,   ///< the strings would have more than kMostCharacters bytes together
    NoVersion, ///< the image has no firmware version, so it cannot be saved
};

/// What is wrong with a text, in any image.
FieldFlaw findFlaw(const FieldEdit& edit);

/// What stands against the edits of a loaded image; `culprit` is then the number of the edit, if
/// it is about one alone. If nothing is wrong, FwImage_EditFields() may follow.
FieldFlaw FwImage_FindEditFlaw(const FwImage& image, std::span<const FieldEdit> edits,
                               std::size_t& culprit);

/// Makes the edits. A string that was not UTF-8 keeps one byte a character, if the new text's
/// characters allow it.
void FwImage_EditFields(FwImage& image, std::span<const FieldEdit> edits);

/// What saving does to an image: the string area is rebuilt from the texts. Call it after all
/// edits.
void FwImage_RebuildStrings(FwImage& image);

/// A random Container ID (RFC 4122, version 4).
std::string newContainerId();

} // namespace vornadel
