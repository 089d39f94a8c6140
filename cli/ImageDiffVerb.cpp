#include "cli/Definitions.h"
#include "cli/ImageDifferences.h"
#include "cli/ImageSource.h"
#include "cli/Options.h"
#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

namespace vornadel
{

namespace
{

int imageDiffVerb(const Command& command)
{
    Definitions definitions;
    FwImage before;
    FwImage after;
    int status = readDefinitions(command, definitions);
    // The hub comes last, because reading it restarts it.
    const bool hubFirst = isHubSource(command.line.image);
    if (status == kExitSuccess) {
        status = hubFirst ? readSource(command, command.line.otherImage, after)
                          : readSource(command, command.line.image, before);
    }
    if (status == kExitSuccess) {
        status = hubFirst ? readSource(command, command.line.image, before)
                          : readSource(command, command.line.otherImage, after);
    }
    if (status != kExitSuccess) {
        return status;
    }
    const ImageDifferences differences = findDifferences(before, after, definitions.items);
    if (command.json()) {
        printObject(command, {{"before", command.line.image},
                              {"after", command.line.otherImage},
                              {"definitions", definitions.file},
                              {"equal", differences.none()},
                              {"differences", jsonOf(differences)}});
    } else {
        command.out << (differences.none() ? "the images are equal\n" : linesOf(differences));
    }
    return differences.none() ? kExitSuccess : kExitDiffers;
}

const char* whyImageDiffIsUnfit(const CommandLine& line)
{
    return whySelectorsAreUnfit(line.hub.isGiven(), {line.image, line.otherImage});
}

void addImageDiffOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "BEFORE", line.image, Operand::Required, kSourceHelp);
    addOperand(verb, "AFTER", line.otherImage, Operand::Required, "The other one, as BEFORE");
    addDefinitionOptions(verb, line);
}

} // namespace

const Verb kImageDiffVerb = {
    .name = "image diff",
    .summary = "Say in what two images differ: in fields and properties by name, and in anything "
               "else by address",
    .run = imageDiffVerb,
    .addOptions = addImageDiffOptions,
    .whyUnfit = whyImageDiffIsUnfit,
    .examples = "vornadelctl image diff old.bin new.bin\n"
                "vornadelctl image diff hub new.bin\n",
};

} // namespace vornadel
