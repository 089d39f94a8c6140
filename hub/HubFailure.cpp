#include "hub/HubFailure.h"

namespace vornadel
{

namespace
{

thread_local HubFailure lastFailure = HubFailure::None;

} // namespace

HubFailure Hub_LastFailure() { return lastFailure; }

void setLastFailure(HubFailure failure) { lastFailure = failure; }

HubFailure failureOfOpen(UsbOpenStatus status)
{
    switch (status) {
    case UsbOpenStatus::Opened:
        return HubFailure::None;
    case UsbOpenStatus::NoAccess:
        return HubFailure::NoAccess;
    case UsbOpenStatus::Busy:
        return HubFailure::Busy;
    case UsbOpenStatus::Gone:
        return HubFailure::Unplugged;
    case UsbOpenStatus::Other:
        break;
    }
    return HubFailure::NotOpened;
}

} // namespace vornadel
