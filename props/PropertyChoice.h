#pragma once

#include "props/PropItem.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

// Properties and their options by name, for edits without a table.

/// "PAGE/NAME".
std::string fullName(const PropItem& item);

/// The name of a property, or its full name if another one of `items` has the same name.
std::string distinctName(const PropItem& item, const PropItemList& items);

/// The properties with this name; if there are none, those with this full name.
PropItemList propertiesNamed(const PropItemList& items, std::string_view name);

/// The positions of the options that a text stands for: a value, a label, or both as optionText()
/// joins them.
std::vector<std::size_t> optionsNamed(const PropItem& item, std::string_view text);

/// Whether the editor lists a property on one of its pages.
bool isOnAPage(const PropItem& item);

/// Why the editor lets nobody set a property.
enum class PropertyFlaw {
    None,
    NotOnAPage, ///< its page is none of the editor's
    NoOptions,  ///< it is a constant
    NoBits,     ///< its mask is 0
};

PropertyFlaw flawOf(const PropItem& item);

/// The text of the current value's option, or else the value itself.
std::string valueOrNumber(const PropItem& item);

/// A property that differs.
struct PropertyDifference {
    std::string name; ///< distinctName()
    std::string before;
    std::string after;
};

/// The properties that differ in two blocks. Sets the current values to those in `after`.
std::vector<PropertyDifference> propertyDifferences(const PropItemList& items,
                                                    std::span<const std::uint8_t> before,
                                                    std::span<const std::uint8_t> after);

/// Takes those bits out of a comparison that propertyDifferences() tells of. `compared` begins at
/// the block.
void omitProperties(const PropItemList& items, std::span<std::uint8_t> compared);

} // namespace vornadel
