#pragma once

#include "hub/HubTransport.h"

#include <gtest/gtest.h>

namespace vornadel::test
{

/// Call this at the end of a test, before its bus is destroyed: fails the test if the hub is still
/// open, and closes it. False if another thread opened the hub, so that it cannot be closed here.
/// Then the bus and the clock must stay alive, or the next test would use destroyed objects.
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
