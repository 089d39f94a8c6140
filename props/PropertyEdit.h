#pragma once

#include "props/PropItem.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vornadel
{

// Properties and the bytes they stand for. A block is everything from the first byte of the
// descriptor block to the end of the image: at least 256 bytes. What lies behind its end is never
// written, and reads as 0.

/// The value text of a property whose value is none of its options.
inline constexpr const char* kEmptyValue = "Empty Value";

/// An option as it is shown: its value and its label, "1 : Enable".
std::string optionText(const PropItem& item, std::size_t at);

/// The current value as it is shown: the text of its option, or kEmptyValue.
std::string valueText(const PropItem& item);

/// Sets the current values of items with a non-zero key from the block. Of an address only the low
/// 8 bits count, so every byte read is in the block.
void refreshValues(std::span<const std::shared_ptr<PropItem>> items,
                   std::span<const std::uint8_t> block);

/// The same for those items alone whose value differs in two blocks. The others may show something
/// else than the image holds.
void refreshDifferentValues(std::span<const std::shared_ptr<PropItem>> items,
                            std::span<const std::uint8_t> before,
                            std::span<const std::uint8_t> after);

/// The value that a property has in a block, at its whole address; 0 if that is not in the block.
std::uint8_t storedValue(const PropItem& item, std::span<const std::uint8_t> block);

/// Whether a property with a non-zero key has different values in two blocks.
bool differs(const PropItem& item, std::span<const std::uint8_t> before,
             std::span<const std::uint8_t> after);

/// A value as it is shown: the text of its option, or else the number.
std::string textOfValue(const PropItem& item, std::uint8_t value);

/// The value of the field that enables a property; 0 if that field is not in the block.
std::uint8_t enablingValue(const PropItem& item, std::span<const std::uint8_t> block);

/// Whether a property may not be changed, because the field that enables it is 0.
bool isLocked(const PropItem& item, std::span<const std::uint8_t> block);

/// Why a locked property cannot be changed, and which of `items` unlocks it.
std::string whyLocked(const PropItem& item, const PropItemList& items);

/// Chooses the option at a position, which need not exist: that number is written, cut to the
/// field, and becomes the current value. It is not checked whether the property is locked.
void chooseOption(PropItem& item, int position, std::span<std::uint8_t> block);

} // namespace vornadel
