#pragma once

#include "hub/HubTransport.h"

#include <gtest/gtest.h>

namespace vornadel::test
{

/// For the end of a test, before its bus goes: fails the test when the hub is still open, and
/// closes it. False when another thread opened it, so that it cannot be closed here: then the bus
/// and the clock must stay, or the next test would use what is gone.
inline bool hubIsClosed()
{
    if (!Hub_IsOpen()) {
        return true;
    }
    ADD_FAILURE() << "the hub was left open";
    Hub_CloseDevice();
    return !Hub_IsOpen();
}

} // namespace vornadel::test
