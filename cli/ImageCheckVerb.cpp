#include "cli/Definitions.h"
#include "cli/ImageFile.h"
#include "cli/ImageSource.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "firmware/FieldEdit.h"
#include "hub/FlashGeometry.h"
#include "hub/SupportedIds.h"
#include "props/PropertyChoice.h"
#include "props/PropertyEdit.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

struct Finding {
    bool refused; ///< otherwise it is only worth knowing
    std::string text;
};
using Findings = std::vector<Finding>;

bool isBlankContainerId(const FwImage& image)
{
    const std::span<const std::uint8_t> id(image.containerId, image.containerIdLength);
    return std::all_of(id.begin(), id.end(), [](std::uint8_t byte) { return byte == 0x00; }) ||
           std::all_of(id.begin(), id.end(), [](std::uint8_t byte) { return byte == 0xFF; });
}

bool canBeEdited(const FwImage& image)
{
    std::size_t ignored = 0;
    return FwImage_FindEditFlaw(image, {}, ignored) == FieldFlaw::None;
}

void findOddValues(const PropItemList& items, std::span<const std::uint8_t> block,
                   Findings& findings)
{
    refreshValues(items, block);
    for (const auto& item : items) {
        if (item->key != 0 && flawOf(*item) == PropertyFlaw::None &&
            valueText(*item) == kEmptyValue) {
            findings.push_back({false, distinctName(*item, items) + " has the value " +
                                           item->curValue + ", which is none of its options"});
        }
    }
}

Findings findingsIn(const FwImage& image, const PropItemList& items)
{
    if (!image.loaded) {
        return {{true, "it is no firmware image: it has no descriptor block"}};
    }
    Findings findings;
    if (const std::string why = whyRefused(image); !why.empty()) {
        findings.push_back({true, why});
    }
    if (static_cast<std::uint32_t>(image.size) < kFlashSize) {
        findings.push_back({false, "it has " + std::to_string(image.size) +
                                       " bytes; the rest of the hub's flash (" +
                                       std::to_string(kFlashSize) + ") stays blank"});
    }
    if (!FindSupportedTriple(storedNumber(image.vid), storedNumber(image.sspid),
                             storedNumber(image.hspid))) {
        findings.push_back({false, "the configuration does not name its ids"});
    }
    if (isBlankContainerId(image)) {
        findings.push_back({false, "it has no Container ID"});
    }
    if (!canBeEdited(image)) {
        findings.push_back({false, "it cannot be edited: its strings are too long together, or it "
                                   "has no firmware version"});
    }
    findOddValues(items, FwImage_Block(image), findings);
    return findings;
}

int imageCheckVerb(const Command& command)
{
    const bool checksValues = !command.line.definitions.empty() || !command.line.controller.empty();
    Definitions definitions;
    FwImage image;
    int status = checksValues ? readDefinitions(command, definitions) : kExitSuccess;
    if (status == kExitSuccess) {
        status = readSource(command, command.line.image, image);
    }
    if (status != kExitSuccess) {
        return status;
    }
    const Findings findings = findingsIn(image, definitions.items);
    const auto refused = std::find_if(findings.begin(), findings.end(),
                                      [](const Finding& each) { return each.refused; });
    const bool ok = refused == findings.end();
    if (command.json()) {
        Json list = Json::array();
        for (const Finding& each : findings) {
            list.push_back({{"refused", each.refused}, {"text", each.text}});
        }
        printObject(command, {{"file", command.line.image}, {"ok", ok}, {"findings", list}});
    } else {
        for (const Finding& each : findings) {
            if (!each.refused) {
                command.out << "warn  " << printable(each.text) << '\n';
            }
        }
        command.out << (ok ? "ok    a hub can run this image\n" : "");
    }
    return ok ? kExitSuccess
              : fail(command, FailureId::ImageRefused,
                     shownSource(command.line.image) + " is refused: " + printable(refused->text));
}

const char* whyImageCheckIsUnfit(const CommandLine& line)
{
    return whySelectorsAreUnfit(line.hub.isGiven(), {line.image});
}

void addImageCheckOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required, kSourceHelp);
    addDefinitionOptions(verb, line);
}

} // namespace

const Verb kImageCheckVerb = {
    .name = "image check",
    .summary = "Say whether a hub could run an image, and what is unusual in it; with --ic or "
               "--definitions also in its properties",
    .run = imageCheckVerb,
    .addOptions = addImageCheckOptions,
    .whyUnfit = whyImageCheckIsUnfit,
    .examples = "vornadelctl image check new.bin\n"
                "vornadelctl image check new.bin --ic SimHub-A\n",
};

} // namespace vornadel
