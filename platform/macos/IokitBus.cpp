#include "platform/macos/IokitBus.h"

#include "platform/macos/IokitDevice.h"
#include "platform/macos/IokitNames.h"
#include "platform/macos/PlugNotifications.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/usb/IOUSBLib.h>

#include <utility>

namespace vornadel
{

namespace
{

class IokitSearch final : public UsbSearch
{
public:
    explicit IokitSearch(io_iterator_t devices) : m_devices(devices) {}

    Step next(std::unique_ptr<UsbDevice>& device) override
    {
        device.reset();
        const io_service_t service =
            m_devices != IO_OBJECT_NULL ? IOIteratorNext(m_devices) : IO_OBJECT_NULL;
        if (service == IO_OBJECT_NULL) {
            return Step::End;
        }
        IOCFPlugInInterface** const plugIn = plugInOf(service);
        if (plugIn == nullptr) {
            return Step::NoPlugIn;
        }
        IOUSBDeviceInterface** const interface = interfaceOf(plugIn);
        if (interface == nullptr) {
            return Step::NoInterface;
        }
        device = std::make_unique<IokitDevice>(interface);
        return Step::Device;
    }

    void release() override
    {
        if (m_devices != IO_OBJECT_NULL) {
            IOObjectRelease(m_devices);
            m_devices = IO_OBJECT_NULL;
        }
    }

private:
    /// The user-client plug-in, or null; releases the service. Success means that there is a
    /// plug-in and that the service could be released; the status of the creation is ignored.
    static IOCFPlugInInterface** plugInOf(io_service_t service)
    {
        IOCFPlugInInterface** plugIn = nullptr;
        SInt32 score = 0;
        IOCreatePlugInInterfaceForService(service, kIOUSBDeviceUserClientTypeID,
                                          kIOCFPlugInInterfaceID, &plugIn, &score);
        return IOObjectRelease(service) == kIOReturnSuccess ? plugIn : nullptr;
    }

    /// The device interface, or null; releases the plug-in.
    static IOUSBDeviceInterface** interfaceOf(IOCFPlugInInterface** plugIn)
    {
        void* interface = nullptr;
        const HRESULT result = (*plugIn)->QueryInterface(
            plugIn, CFUUIDGetUUIDBytes(kIOUSBDeviceInterfaceID), &interface);
        (*plugIn)->Release(plugIn);
        return result == 0 ? static_cast<IOUSBDeviceInterface**>(interface) : nullptr;
    }

    io_iterator_t m_devices; // null once released
};

} // namespace

IokitBus::IokitBus(const std::vector<std::string>& lockFolders) : m_locks(lockFolders) {}

IokitBus::~IokitBus() = default;

std::unique_ptr<UsbSearch> IokitBus::search()
{
    const CFMutableDictionaryRef everyDevice = IOServiceMatching(kUsbDeviceClass);
    io_iterator_t devices = IO_OBJECT_NULL;
    if (IOServiceGetMatchingServices(masterPort(), everyDevice, &devices) != kIOReturnSuccess) {
        return nullptr;
    }
    return std::make_unique<IokitSearch>(devices);
}

bool IokitBus::watch(Listener listener)
{
    if (!m_notifications) {
        m_notifications = std::make_unique<PlugNotifications>();
    }
    m_notifications->listen(std::move(listener));
    return m_notifications->reporting();
}

void IokitBus::unwatch()
{
    if (m_notifications) {
        m_notifications->listen(nullptr);
    }
}

} // namespace vornadel
