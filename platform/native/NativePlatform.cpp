#include "platform/native/NativePlatform.h"

#if defined(__APPLE__)
#include "platform/macos/MacToolPlace.h"
#else
#include "platform/linux/LinuxToolPlace.h"
#endif

namespace vornadel
{

ToolPlace thisToolsPlace(const char* argv0)
{
#if defined(__APPLE__)
    return macToolPlace(argv0);
#else
    return linuxToolPlace(argv0);
#endif
}

} // namespace vornadel
