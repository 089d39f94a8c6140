#pragma once

#include <array>
#include <string_view>

namespace vornadel
{

/// The pages of the property editor in their order; the first is selected at start. A property is
/// listed on the page whose text its `pageName` equals exactly, case and blanks included, and
/// nowhere when there is none.
inline constexpr std::array<std::string_view, 6> kPropertyPages = {
    "SSC", "DSP OCP/U1/U2", "System", "USP PHY", "DSP Setting", "DSP PHY",
};

} // namespace vornadel
