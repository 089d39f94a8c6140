#pragma once

#include <systemd/sd-bus.h>

namespace vornadel
{

/// The D-Bus library, loaded at run time, so the tool also runs on a system without one. It stays
/// loaded. Its functions return a negative error number.
struct BusLibrary {
    bool found = false; ///< with all functions
    decltype(&sd_bus_open_system) openSystem{};
    decltype(&sd_bus_open_user) openUser{};
    decltype(&sd_bus_is_ready) isReady{};
    decltype(&sd_bus_close_unref) closeUnref{};
    decltype(&sd_bus_message_new_method_call) newMethodCall{};
    decltype(&sd_bus_message_append) append{};
    decltype(&sd_bus_message_unref) unrefMessage{};
    decltype(&sd_bus_message_get_error) errorOf{};
    decltype(&sd_bus_message_read) read{};
    decltype(&sd_bus_call_async) callAsync{};
    decltype(&sd_bus_emit_signal) emitSignal{};
    decltype(&sd_bus_process) process{};
    decltype(&sd_bus_wait) wait{};
};

/// Loads the library at the first call. Any thread.
const BusLibrary& busLibrary();

/// Why there is no D-Bus if the library was not found.
inline constexpr const char* kNoBusLibrary = "the D-Bus library libsystemd.so.0 is missing";

} // namespace vornadel
