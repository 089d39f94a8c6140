#include "cli/CommandReporter.h"
#include "cli/Definitions.h"
#include "cli/FlowTarget.h"
#include "cli/ImageDifferences.h"
#include "cli/ImageSource.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "flows/FlashVerify.h"
#include "hub/FlashGeometry.h"

#include <cstdint>
#include <vector>

namespace vornadel
{

namespace
{

/// `flash` has at least as many bytes as the image.
void tellDifferences(const Command& command, const FwImage& image,
                     const std::vector<std::uint8_t>& flash, const PropItemList& items)
{
    FwImage read;
    FwImage_Parse(read, flash.data(), image.size);
    command.out << "in the image -> in the flash:\n"
                << tell(command, findDifferences(image, read, items)) << std::flush;
}

int verifyVerb(const Command& command)
{
    const std::string& name = command.line.image;
    Definitions definitions;
    int status = readDefinitions(command, definitions);
    FwImage image;
    if (status == kExitSuccess) {
        status = readSource(command, name, image);
    }
    if (status != kExitSuccess) {
        return status;
    }
    if (static_cast<std::uint32_t>(image.size) > kFlashSize) {
        return fail(command, FailureId::ImageRefused,
                    shownSource(name) + " has " + std::to_string(image.size) +
                        " bytes, more than the hub's flash (" + std::to_string(kFlashSize) + ')');
    }
    const std::optional<FlowTarget> target = chooseTarget(command, status);
    if (!target) {
        return status;
    }
    std::vector<std::uint8_t> flash;
    CommandReporter reporter(command);
    verifyFlash(bytesOf(image), shownSource(name), flash, reporter, target->options);
    if (reporter.result().cause == Cause::Different) {
        tellDifferences(command, image, flash, definitions.items);
    }
    return explainResult(command, FlowKind::Verify, reporter.result(), *target);
}

const char* whyVerifyIsUnfit(const CommandLine& line)
{
    return isHubSource(line.image)
               ? "a hub cannot be compared with itself; a file called hub is ./hub"
               : nullptr;
}

void addVerifyOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required,
               "What the flash should hold: a firmware image or a backup; -: standard input");
    addDefinitionOptions(verb, line);
    addRefuseInUse(verb, line);
}

} // namespace

const Verb kVerifyVerb = {
    .name = "verify",
    .summary = "Read the hub's flash, compare it with an image, say in what they differ, and "
               "restart the hub. Nothing is changed",
    .run = verifyVerb,
    .addOptions = addVerifyOptions,
    .whyUnfit = whyVerifyIsUnfit,
    .isFlow = true,
    .examples = "vornadelctl verify new.bin\n",
};

} // namespace vornadel
