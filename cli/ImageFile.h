#pragma once

#include "firmware/FwImage.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace vornadel
{

/// Why an image file could not be read.
std::string whyUnread(const std::string& path);

/// Loads an image into a fresh record. Reports why a file could not be read, because the flows
/// would only call it a wrong firmware file.
bool loadImage(FwImage& image, const std::string& path, std::ostream& err);

/// Two bytes of an image, high byte first; 0 for a null position.
std::uint16_t storedNumber(const std::uint8_t* position);

/// Why a hub could not run a loaded image, in a sentence; empty if it could.
std::string whyRefused(const FwImage& image);

} // namespace vornadel
