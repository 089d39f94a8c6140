#pragma once

#include <atomic>

namespace vornadel
{

/// Why the last failed operation of the hub and image layers failed. Each failure sets it; it is
/// never cleared and never shown. For debugging only. Process-wide; the main thread and the flow
/// threads write it.
///
/// | value | set when |
/// |---|---|
/// | 2 | the list of USB devices could not be obtained |
/// | 3 | a device offered no plug-in; the search went on |
/// | 4 | a plug-in offered no device interface; the search went on |
/// | 5 | no supported hub attached, or the supported hub could not be opened |
/// | 6 | an image file was empty, unreadable or short, or an image of no bytes was parsed |
/// | 7 | an image was shorter than 256 bytes |
/// | 12 | the opened hub did not report ROM code even after a restart into it |
extern std::atomic<int> LastError;

} // namespace vornadel
