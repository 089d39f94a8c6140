#pragma once

#include "hub/HubCommands.h"
#include "hub/HubFailure.h"
#include "platform/UsbPlace.h"

#include <string>

namespace vornadel
{

/// A hub's status block, or why there is none.
struct AskedHub {
    HubFailure failure = HubFailure::None;
    HubStatusBlock status{};

    std::string version() const; ///< four hex digits
    std::string code() const;    ///< "ROM code" or "flash code"
    std::string whyNot() const;  ///< "no access"; empty if it has answered
};

/// Opens the hub at a place for one question, without locking the place.
AskedHub askHub(const UsbPlace& place);

} // namespace vornadel
