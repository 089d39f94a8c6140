#include "cli/SupportIds.h"

#include "cli/ImageFile.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "hub/SupportedIds.h"

#include <cstdint>
#include <string>

namespace vornadel
{

int supportIds(const Command& command, const FwImage& image)
{
    const std::uint16_t vendor = storedNumber(image.vid);
    const std::uint16_t superSpeed = storedNumber(image.sspid);
    const std::uint16_t highSpeed = storedNumber(image.hspid);
    if (FindSupportedId(vendor, superSpeed) && FindSupportedId(vendor, highSpeed)) {
        return kExitSuccess;
    }
    const std::string ids = hex4(vendor) + ':' + hex4(superSpeed) + '/' + hex4(highSpeed);
    if (!AddSupportedIds(vendor, superSpeed, highSpeed)) {
        return fail(command, FailureId::ConfigFull,
                    command.configFile + " has no room for the ids in the image, " + ids +
                        "; remove a hub from it");
    }
    command.out << "the image gives the hub new ids, " << ids
                << "; they are supported until this command ends\n"
                << std::flush;
    return kExitSuccess;
}

} // namespace vornadel
