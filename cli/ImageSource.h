#pragma once

#include "firmware/FwImage.h"

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

namespace vornadel
{

struct Command;

// What may stand where an image is asked for: a file, "-" for standard input, or "hub" for the
// flash of the selected hub. A file with such a name is "./hub".

/// For the help of an operand.
inline constexpr const char* kSourceHelp =
    "Firmware image (*.bin); -: standard input; hub: the flash of the hub, which is read for it";

bool isHubSource(const std::string& name);
bool isStandardInput(const std::string& name);

/// Why the selectors do not fit the images of a verb; null if they do.
const char* whySelectorsAreUnfit(bool selectorsGiven, std::initializer_list<std::string> images);

/// Reads an image into a fresh record, and returns the exit status; a failure has been told. A hub
/// is read by a flow, and restarted. Without a descriptor block the image has its bytes and is not
/// `loaded`, which is no failure here.
int readSource(const Command& command, const std::string& name, FwImage& image);

/// The same; an image without a block is refused.
int loadSource(const Command& command, const std::string& name, FwImage& image);

/// The name of an image for the user.
std::string shownSource(const std::string& name);

inline std::span<const std::uint8_t> bytesOf(const FwImage& image)
{
    return {image.data.get(), static_cast<std::size_t>(image.size)};
}

} // namespace vornadel
