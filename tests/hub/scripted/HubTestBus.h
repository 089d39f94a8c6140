#pragma once

#include "tests/support/ScriptedBus.h"

namespace vornadel::test
{

/// The bus that the hub's tests work on.
using HubTestBus = ScriptedBus;

} // namespace vornadel::test
