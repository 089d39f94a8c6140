#include "cli/ImageSource.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "firmware/ImageDiff.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace vornadel
{

namespace
{

constexpr struct {
    std::string_view field;
    const char* title;
} kTitles[] = {
    {"block", "block at:"},  {"version", "version:"},      {"vid", "VID:"},
    {"sspid", "SSPID:"},     {"hspid", "HSPID:"},          {"manufacturer", "manufacturer:"},
    {"product", "product:"}, {"serial", "serial number:"}, {"container-id", "container ID:"},
    {"changed", "changed:"},
};

std::string titleOf(std::string_view field)
{
    for (const auto& each : kTitles) {
        if (each.field == field) {
            return each.title;
        }
    }
    return std::string(field) + ':';
}

int imageInfoVerb(const Command& command)
{
    FwImage image;
    if (const int status = loadSource(command, command.line.image, image); status != kExitSuccess) {
        return status;
    }
    if (command.json()) {
        Json object = {{"file", command.line.image}, {"size", image.size}};
        for (const NamedText& field : FwImage_Fields(image)) {
            object[std::string(field.name)] = field.text;
        }
        printObject(command, object);
        return kExitSuccess;
    }
    const std::vector<NamedText> fields = FwImage_Fields(image);
    std::vector<std::vector<std::string>> rows = {{"file:", shownSource(command.line.image)},
                                                  {"size:", std::to_string(image.size) + " bytes"}};
    rows.reserve(rows.size() + fields.size());
    for (const NamedText& field : fields) {
        const bool absent = field.name == "version" && field.text.empty();
        rows.push_back({titleOf(field.name), absent ? "-" : printable(field.text)});
    }
    command.out << alignedLines(rows);
    return kExitSuccess;
}

const char* whyImageInfoIsUnfit(const CommandLine& line)
{
    return whySelectorsAreUnfit(line.hub.isGiven(), {line.image});
}

void addImageInfoOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required, kSourceHelp);
}

} // namespace

const Verb kImageInfoVerb = {
    .name = "image info",
    .summary = "Show what a firmware image holds",
    .run = imageInfoVerb,
    .addOptions = addImageInfoOptions,
    .whyUnfit = whyImageInfoIsUnfit,
    .examples = "vornadelctl image info new.bin\n"
                "vornadelctl --path 2-3 image info hub\n",
};

} // namespace vornadel
