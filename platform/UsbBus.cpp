#include "platform/UsbBus.h"

namespace vornadel
{

namespace
{

class NoServices final : public UsbServices
{
public:
    bool next() override { return false; }
};

} // namespace

UsbServices& UsbBus::services(UsbEvent /*event*/)
{
    static NoServices none;
    return none;
}

} // namespace vornadel
