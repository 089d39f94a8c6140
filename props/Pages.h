#pragma once

#include <array>
#include <string_view>

namespace vornadel
{

/// The pages of the property editor, in order; the first is selected at start. A property is listed
/// on the page whose text equals its `pageName` exactly, including case and blanks. If there is no
/// such page, it is not listed. A test wants each page filled by both shipped property files.
inline constexpr std::array<std::string_view, 6> kPropertyPages = {
    "SSC", "DSP OCP/U1/U2", "System", "USP PHY", "DSP Setting", "DSP PHY",
};

} // namespace vornadel
