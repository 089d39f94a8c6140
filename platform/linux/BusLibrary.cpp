#include "platform/linux/BusLibrary.h"

#include <dlfcn.h>

namespace vornadel
{

namespace
{

BusLibrary loadBusLibrary()
{
    BusLibrary bus;
    void* const library = dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return bus;
    }
    bus.found = true;
    const auto find = [&]<typename Function>(const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        bus.found = bus.found && function != nullptr;
    };
    find("sd_bus_open_system", bus.openSystem);
    find("sd_bus_open_user", bus.openUser);
    find("sd_bus_is_ready", bus.isReady);
    find("sd_bus_close_unref", bus.closeUnref);
    find("sd_bus_message_new_method_call", bus.newMethodCall);
    find("sd_bus_message_append", bus.append);
    find("sd_bus_message_unref", bus.unrefMessage);
    find("sd_bus_message_get_error", bus.errorOf);
    find("sd_bus_message_read", bus.read);
    find("sd_bus_call_async", bus.callAsync);
    find("sd_bus_emit_signal", bus.emitSignal);
    find("sd_bus_process", bus.process);
    find("sd_bus_wait", bus.wait);
    return bus;
}

} // namespace

const BusLibrary& busLibrary()
{
    static const BusLibrary library = loadBusLibrary();
    return library;
}

} // namespace vornadel
