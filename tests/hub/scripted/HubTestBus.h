#pragma once

#include "tests/support/ScriptedBus.h"

namespace vornadel::test
{

/// The bus for the tests of the hub room.
using HubTestBus = ScriptedBus;

} // namespace vornadel::test
