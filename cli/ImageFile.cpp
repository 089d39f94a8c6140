#include "cli/ImageFile.h"

#include "cli/NextCommand.h"
#include "cli/Verbs.h"
#include "firmware/ImageCheck.h"
#include "hub/FlashGeometry.h"

#include <cerrno>
#include <cstdint>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

std::string whyUnread(const std::string& path)
{
    struct stat info = {};
    if (::stat(path.c_str(), &info) != 0) {
        return std::generic_category().message(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return S_ISDIR(info.st_mode) ? "it is a folder" : "it is not a regular file";
    }
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) {
        return std::generic_category().message(errno);
    }
    return info.st_size == 0 ? "it is empty" : "it cannot be read, or is too large";
}

int failToLoad(const Command& command, const FwImage& image, const std::string& path)
{
    if (image.data == nullptr) {
        return fail(command, FailureId::ImageUnreadable, path + ": " + whyUnread(path),
                    "ls -ld " + shellWord(path));
    }
    return refuseImage(command, path, "Firmware format error");
}

int refuseImage(const Command& command, const std::string& path, const std::string& why)
{
    return fail(command, FailureId::ImageRefused, path + ": " + why,
                "vornadelctl info " + shellWord(path));
}

std::uint16_t storedNumber(const std::uint8_t* position)
{
    return position == nullptr ? std::uint16_t{0}
                               : static_cast<std::uint16_t>(position[0] << 8 | position[1]);
}

std::string whyRefused(const FwImage& image)
{
    if (static_cast<std::uint32_t>(image.size) > kFlashSize) {
        return "it has " + std::to_string(image.size) + " bytes, more than the hub's flash (" +
               std::to_string(kFlashSize) + ')';
    }
    switch (FwImage_FindFlaw(image)) {
    case ImageFlaw::None:
        return {};
    case ImageFlaw::NoVersion:
        return "it has no firmware version";
    case ImageFlaw::NoIds:
        return "its vendor id or one of its product ids is missing";
    case ImageFlaw::BadStrings:
        return "the strings in its descriptor block are damaged";
    }
    return {};
}

} // namespace vornadel
