#include "platform/native/NativePlatform.h"

#if defined(__APPLE__)
#include "platform/macos/CoreBundle.h"
#else
#include "platform/linux/ExecutableBundle.h"
#endif

namespace vornadel
{

MainBundle mainBundle(const char* argv0)
{
#if defined(__APPLE__)
    return coreBundle(argv0);
#else
    return executableBundle(argv0);
#endif
}

} // namespace vornadel
