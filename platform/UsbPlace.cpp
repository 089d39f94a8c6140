#include "platform/UsbPlace.h"

#include <cstdlib>

namespace vornadel
{

namespace
{

bool isOneOf(const std::string& path, const UsbPlace& place)
{
    return !path.empty() && (path == place.own.path || path == place.other.path);
}

/// Whether a stay that was seen before is still there.
bool goesOn(const UsbPort& before, const UsbPlace& now)
{
    return before.incarnation != 0 && (before == now.own || before == now.other);
}

/// Whether the first path is written first: the one of the higher bus.
bool comesFirst(const std::string& path, const std::string& other)
{
    const unsigned long bus = std::strtoul(path.c_str(), nullptr, 10);
    const unsigned long otherBus = std::strtoul(other.c_str(), nullptr, 10);
    return bus != otherBus ? bus > otherBus : path > other;
}

} // namespace

bool UsbPlace::isSameConnector(const UsbPlace& place) const
{
    return isOneOf(own.path, place) || isOneOf(other.path, place);
}

bool UsbPlace::hasArrivedSince(const UsbPlace& before) const
{
    return !goesOn(before.own, *this) && !goesOn(before.other, *this);
}

bool UsbPlace::isCalled(const std::string& text) const
{
    return isOneOf(text, *this) || (known() && text == this->text());
}

std::string UsbPlace::text() const
{
    if (other.path.empty() || other.path == own.path) {
        return own.path;
    }
    return comesFirst(own.path, other.path) ? own.path + '/' + other.path
                                            : other.path + '/' + own.path;
}

} // namespace vornadel
