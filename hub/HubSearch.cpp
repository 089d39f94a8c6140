#include "hub/HubSearch.h"

#include "base/LastError.h"
#include "hub/SupportedIds.h"

namespace vornadel
{

namespace
{

constexpr int kNoPlugIn = 3;
constexpr int kNoInterface = 4;

} // namespace

std::unique_ptr<UsbDevice> nextSupportedDevice(UsbSearch& search)
{
    for (;;) {
        std::unique_ptr<UsbDevice> device;
        switch (search.next(device)) {
        case UsbSearch::Step::NoPlugIn:
            LastError = kNoPlugIn;
            break;
        case UsbSearch::Step::NoInterface:
            LastError = kNoInterface;
            break;
        case UsbSearch::Step::Device: {
            const std::uint16_t vendorId = device->vendorId();
            const std::uint16_t productId = device->productId();
            if (FindSupportedId(vendorId, productId)) {
                return device;
            }
            break;
        }
        case UsbSearch::Step::End:
            return nullptr;
        }
    }
}

} // namespace vornadel
