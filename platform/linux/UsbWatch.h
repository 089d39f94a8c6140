#pragma once

namespace vornadel
{

/// A running watch on the bus. The destructor ends it: afterwards the listener is neither running
/// nor called again.
class UsbWatch
{
public:
    UsbWatch() = default;
    UsbWatch(const UsbWatch&) = delete;
    UsbWatch& operator=(const UsbWatch&) = delete;
    virtual ~UsbWatch() = default;
};

} // namespace vornadel
