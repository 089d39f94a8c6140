#include "hub/HubFailure.h"

namespace vornadel
{

namespace
{

thread_local HubFailure lastFailure = HubFailure::None;

HubFailure failureOfOpen(UsbOpenStatus status)
{
    switch (status) {
    case UsbOpenStatus::NoAccess:
        return HubFailure::NoAccess;
    case UsbOpenStatus::Busy:
        return HubFailure::Busy;
    case UsbOpenStatus::Gone:
        return HubFailure::Unplugged;
    case UsbOpenStatus::Opened: // is no failure
    case UsbOpenStatus::Other:
        break;
    }
    return HubFailure::NotOpened;
}

} // namespace

HubFailure Hub_LastFailure() { return lastFailure; }

void setLastFailure(HubFailure failure) { lastFailure = failure; }

bool openOrSetFailure(UsbDevice& device)
{
    const UsbOpenStatus status = device.open();
    if (status == UsbOpenStatus::Opened) {
        return true;
    }
    setLastFailure(failureOfOpen(status));
    return false;
}

} // namespace vornadel
