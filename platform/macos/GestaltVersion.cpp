#include "platform/macos/GestaltVersion.h"

#include <CoreServices/CoreServices.h>

namespace vornadel
{

namespace
{

// Binary-coded decimal: two digits of the major version, one of the minor, one of the bugfix.
constexpr SInt32 kLastPacked = 0x103F;

OSErr ask(OSType selector, SInt32& answer)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // its successor is not C
    return Gestalt(selector, &answer);
#pragma GCC diagnostic pop
}

unsigned digit(SInt32 packed, unsigned place)
{
    return static_cast<unsigned>(packed) >> 4 * place & 0xF;
}

} // namespace

SystemVersionNumbers GestaltVersion::read()
{
    SInt32 packed = 0;
    if (const OSErr error = ask(gestaltSystemVersion, packed); error != noErr) {
        return {.error = error};
    }
    if (packed <= kLastPacked) {
        return {.major = digit(packed, 3) * 10 + digit(packed, 2),
                .minor = digit(packed, 1),
                .bugfix = digit(packed, 0)};
    }
    SInt32 numbers[3] = {};
    constexpr OSType kSelectors[] = {gestaltSystemVersionMajor, gestaltSystemVersionMinor,
                                     gestaltSystemVersionBugFix};
    for (int i = 0; i < 3; ++i) {
        if (const OSErr error = ask(kSelectors[i], numbers[i]); error != noErr) {
            return {.error = error};
        }
    }
    return {.major = static_cast<unsigned>(numbers[0]),
            .minor = static_cast<unsigned>(numbers[1]),
            .bugfix = static_cast<unsigned>(numbers[2])};
}

} // namespace vornadel
