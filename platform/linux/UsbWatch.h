#pragma once

namespace vornadel
{

/// A running watch over the bus. Its end ends the watch: after the destructor the listener is
/// neither running nor called again.
class UsbWatch
{
public:
    UsbWatch() = default;
    UsbWatch(const UsbWatch&) = delete;
    UsbWatch& operator=(const UsbWatch&) = delete;
    virtual ~UsbWatch() = default;
};

} // namespace vornadel
