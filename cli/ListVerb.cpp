#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/SupportedIds.h"

#include <cstdint>
#include <memory>

namespace vornadel
{

int listVerb(const Command& command)
{
    const std::unique_ptr<UsbSearch> search = command.platform.usb.search();
    if (!search) {
        command.err << "the USB devices cannot be listed\n";
        return kExitFailure;
    }
    std::unique_ptr<UsbDevice> device;
    for (auto step = search->next(device); step != UsbSearch::Step::End;
         step = search->next(device)) {
        if (step == UsbSearch::Step::Device) {
            const std::uint16_t vendor = device->vendorId();
            const std::uint16_t product = device->productId();
            const char* const mark = FindSupportedId(vendor, product) ? "  supported hub" : "";
            command.out << hex4(vendor) << ':' << hex4(product) << mark << '\n';
        }
    }
    search->release();
    return kExitSuccess;
}

} // namespace vornadel
