#pragma once

#include "firmware/FwImage.h"

#include <cstdint>
#include <string>

namespace vornadel
{

struct Command;

/// Why an image file could not be read.
std::string whyUnread(const std::string& path);

/// Tells why an image was not loaded from a file, and returns the exit status. `image` is what
/// FwImage_LoadFile() has left.
int failToLoad(const Command& command, const FwImage& image, const std::string& path);

/// Tells why an image is not for a hub, and returns the exit status.
int refuseImage(const Command& command, const std::string& path, const std::string& why);

/// Two bytes of an image, high byte first; 0 for a null position.
std::uint16_t storedNumber(const std::uint8_t* position);

/// Why a hub could not run a loaded image, in a sentence; empty if it could.
std::string whyRefused(const FwImage& image);

} // namespace vornadel
