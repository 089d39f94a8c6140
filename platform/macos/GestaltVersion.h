#pragma once

#include "platform/SystemVersion.h"

namespace vornadel
{

/// The version of macOS from `Gestalt`: one packed number up to 10.3, three selectors since then.
class GestaltVersion final : public SystemVersion
{
public:
    /// Error: that of the first selector that fails.
    SystemVersionNumbers read() override;
};

} // namespace vornadel
