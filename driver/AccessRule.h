#pragma once

#include "platform/UsbPlace.h"

#include <optional>
#include <string>
#include <vector>

namespace vornadel
{

/// The rule that the script `load` installs on Linux. It says which devices users may open.
inline constexpr const char* kAccessRule = "/etc/udev/rules.d/65-vornadel-hub.rules";

/// Whether the scripts of the resource directory work by such a rule. False on macOS.
bool hasAccessRule(const std::string& resourcePath);

/// The devices that a rule names. Nothing if the file is missing or cannot be read.
std::optional<std::vector<UsbIds>> idsOfAccessRule(const std::string& path);

/// The devices of the supported hubs that a rule does not name, each once.
std::vector<UsbIds> idsMissingIn(const std::vector<UsbIds>& rule);

} // namespace vornadel
