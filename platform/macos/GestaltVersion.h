#pragma once

#include "platform/SystemVersion.h"

namespace vornadel
{

/// The version of macOS as `Gestalt` tells it: in one packed number up to 10.3, in three selectors
/// since.
class GestaltVersion final : public SystemVersion
{
public:
    /// Errors: that of the first selector which is refused.
    SystemVersionNumbers read() override;
};

} // namespace vornadel
