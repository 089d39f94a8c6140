// The plug-in of a device and its device interface, as programs see them: pointers to function
// tables.

#include "tests/fake_macos/FakeUserClient.h"

#include "tests/fake_macos/FakeCoreFoundation.h"

#include <IOKit/usb/IOUSBLib.h>

#include <cstdio>
#include <string>

namespace vornadel::test
{

namespace
{

struct UserClient {
    void* table; // first, so that a pointer to this points to the table pointer
    std::shared_ptr<MacState> state;
    DevicePointer device;
    std::string name;
};

UserClient& of(void* self) { return *static_cast<UserClient*>(self); }

void destroy(void* self) { delete &of(self); }

/// The mutex must be held.
UserClient* makeClient(void* table, const std::shared_ptr<MacState>& state,
                       const DevicePointer& device, const std::string& name)
{
    auto* const client = new UserClient{table, state, device, name};
    state->clients[client] = destroy;
    state->made(name);
    return client;
}

/// The duration of a call on a user client, with the machine's mutex held.
class Call
{
public:
    Call(void* self, const std::string& what) : m_lock(of(self).state->mutex)
    {
        of(self).state->call(of(self).name + ' ' + what);
    }

    void let() { m_lock.unlock(); }
    void takeBack() { m_lock.lock(); }

private:
    std::unique_lock<std::mutex> m_lock;
};

ULONG release(void* self)
{
    UserClient& client = of(self);
    const std::shared_ptr<MacState> state = client.state; // which may go with the client
    Call call(self, "Release");
    if (client.device->holder == self) {
        state->wrong(client.name + " released while it was open");
        client.device->holder = nullptr;
    }
    state->gone(client.name, "release");
    state->clients.erase(self);
    destroy(self);
    return 0;
}

/// Whether a request reaches the device.
IOReturn reach(const UserClient& client)
{
    if (!client.device->present) {
        return kIOReturnNoDevice;
    }
    return client.device->holder == &client ? kIOReturnSuccess : kIOReturnNotOpen;
}

IOReturn openDevice(void* self)
{
    UserClient& client = of(self);
    AttachedDevice& device = *client.device;
    const Call call(self, "USBDeviceOpen");
    if (device.holder == self) {
        client.state->wrong(client.name + " opened twice");
    }
    IOReturn result = device.behaviour.openResult;
    if (!device.present) {
        result = kIOReturnNoDevice;
    } else if (device.holder != nullptr) {
        result = kIOReturnExclusiveAccess;
    }
    if (result == kIOReturnSuccess) {
        device.holder = self;
    }
    return result;
}

IOReturn closeDevice(void* self)
{
    AttachedDevice& device = *of(self).device;
    const Call call(self, "USBDeviceClose");
    if (device.holder != self) {
        of(self).state->wrong(of(self).name + " closed while it was not open");
        return kIOReturnNotOpen;
    }
    device.holder = nullptr;
    return device.present ? kIOReturnSuccess : kIOReturnNoDevice;
}

/// A call that reads a value which the device has without being asked.
template <typename Value>
IOReturn readValue(void* self, const std::string& call, Value* value, Value MacDevice::*member,
                   IOReturn MacDevice::*result)
{
    const Call logged(self, call);
    const MacDevice& device = of(self).device->behaviour;
    if (device.*result == kIOReturnSuccess) {
        *value = device.*member;
    }
    return device.*result;
}

IOReturn getVendor(void* self, UInt16* value)
{
    return readValue(self, "GetDeviceVendor", value, &MacDevice::vendorId,
                     &MacDevice::vendorResult);
}

IOReturn getProduct(void* self, UInt16* value)
{
    return readValue(self, "GetDeviceProduct", value, &MacDevice::productId,
                     &MacDevice::productResult);
}

IOReturn getAddress(void* self, UInt16* value)
{
    return readValue(self, "GetDeviceAddress", value, &MacDevice::address,
                     &MacDevice::addressResult);
}

IOReturn getLocation(void* self, UInt32* value)
{
    return readValue(self, "GetLocationID", value, &MacDevice::locationId,
                     &MacDevice::locationResult);
}

IOReturn request(void* self, IOUSBDevRequest* transfer)
{
    const UserClient& client = of(self);
    char text[64];
    std::snprintf(text, sizeof text, "DeviceRequest(%02X %02X %04X %04X %04X)",
                  transfer->bmRequestType, transfer->bRequest, transfer->wValue, transfer->wIndex,
                  transfer->wLength);
    Call call(self, text);
    transfer->wLenDone = 0;
    if (const IOReturn wrong = reach(client); wrong != kIOReturnSuccess) {
        if (wrong == kIOReturnNotOpen) {
            client.state->wrong("a request on " + client.name + ", which is not open");
        }
        return wrong;
    }
    if (!client.device->behaviour.onRequest) {
        transfer->wLenDone = transfer->wLength;
        return kIOReturnSuccess;
    }
    call.let();
    const IOReturn result = client.device->behaviour.onRequest(*transfer);
    call.takeBack();
    const IOReturn after = client.device->present ? kIOReturnSuccess : kIOReturnNoDevice;
    return result != kIOReturnSuccess ? result : after;
}

// Only the functions that the back end may use; a call through any other slot ends the program.
IOUSBDeviceInterface deviceTable()
{
    IOUSBDeviceInterface table{};
    table.Release = release;
    table.USBDeviceOpen = openDevice;
    table.USBDeviceClose = closeDevice;
    table.GetDeviceVendor = getVendor;
    table.GetDeviceProduct = getProduct;
    table.GetDeviceAddress = getAddress;
    table.GetLocationID = getLocation;
    table.DeviceRequest = request;
    return table;
}

HRESULT queryInterface(void* self, REFIID iid, LPVOID* interface)
{
    static IOUSBDeviceInterface table = deviceTable();
    const UserClient& plugIn = of(self);
    const std::string place = plugIn.name.substr(plugIn.name.find_last_of(' ') + 1);
    const bool given = plugIn.device->behaviour.givesInterface && nameOf(iid) == "device interface";
    const std::string name = "interface " + place;
    const HRESULT result = plugIn.device->behaviour.queryResult;
    const Call call(self, "QueryInterface(" + nameOf(iid) + ')' + (given ? " = " + name : "") +
                              statusText(result));
    if (given) {
        *interface = makeClient(&table, plugIn.state, plugIn.device, name);
    }
    return result;
}

IOCFPlugInInterface plugInTable()
{
    IOCFPlugInInterface table{};
    table.QueryInterface = queryInterface;
    table.Release = release;
    return table;
}

} // namespace

IOCFPlugInInterface** makePlugIn(const std::shared_ptr<MacState>& state,
                                 const DevicePointer& device)
{
    static IOCFPlugInInterface table = plugInTable();
    auto* const plugIn =
        makeClient(&table, state, device, "plug-in " + std::to_string(device->place));
    return reinterpret_cast<IOCFPlugInInterface**>(&plugIn->table);
}

} // namespace vornadel::test
