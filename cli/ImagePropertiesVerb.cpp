#include "cli/Definitions.h"
#include "cli/ImageSource.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "props/Pages.h"
#include "props/PropertyChoice.h"
#include "props/PropertyEdit.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace vornadel
{

namespace
{

using Block = std::span<const std::uint8_t>; // empty without an image

Json jsonOf(const PropItem& item, const PropItemList& items, Block block)
{
    Json options = Json::array();
    for (std::size_t i = 0; i < item.dataList.size(); ++i) {
        options.push_back({{"value", item.dataList[i]}, {"label", item.propList[i]}});
    }
    Json object = {{"name", distinctName(item, items)},
                   {"page", item.pageName},
                   {"group", item.groupName},
                   {"description", item.propDesc},
                   {"address", item.addr},
                   {"mask", item.mask},
                   {"options", std::move(options)},
                   {"settable", flawOf(item) == PropertyFlaw::None}};
    if (!block.empty()) {
        object["value"] = valueOrNumber(item);
        object["locked"] = isLocked(item, block);
    }
    return object;
}

std::string optionsOf(const PropItem& item)
{
    std::string options;
    for (std::size_t i = 0; i < item.dataList.size(); ++i) {
        options += (i == 0 ? "" : ", ") + printable(optionText(item, i));
    }
    return options;
}

/// The properties of each page under its name. What is on none cannot be set, and is left out.
std::string textOf(const PropItemList& items, Block block)
{
    std::string text;
    for (const std::string_view page : kPropertyPages) {
        std::vector<std::vector<std::string>> rows;
        for (const auto& item : items) {
            if (item->pageName != page) {
                continue;
            }
            rows.push_back({"  " + printable(item->propName)});
            if (!block.empty()) {
                rows.back().push_back(printable(valueOrNumber(*item)) +
                                      (isLocked(*item, block) ? " (locked)" : ""));
            }
            rows.back().push_back('[' + optionsOf(*item) + ']');
        }
        text += rows.empty() ? "" : std::string(page) + '\n' + alignedLines(rows);
    }
    return text;
}

int imagePropertiesVerb(const Command& command)
{
    Definitions definitions;
    FwImage image;
    int status = readDefinitions(command, definitions);
    if (status == kExitSuccess && definitions.file.empty()) {
        status = fail(command, FailureId::DefinitionsUnusable,
                      "there is no property file; --definitions FILE names one");
    }
    const bool withImage = !command.line.image.empty();
    if (status == kExitSuccess && withImage) {
        status = loadSource(command, command.line.image, image);
    }
    if (status != kExitSuccess) {
        return status;
    }
    const Block block = withImage ? Block(FwImage_Block(image)) : Block();
    if (withImage) {
        refreshValues(definitions.items, block);
    }
    if (!command.json()) {
        command.out << textOf(definitions.items, block);
        return kExitSuccess;
    }
    Json properties = Json::array();
    for (const auto& item : definitions.items) {
        properties.push_back(jsonOf(*item, definitions.items, block));
    }
    printObject(command,
                {{"definitions", definitions.file}, {"properties", std::move(properties)}});
    return kExitSuccess;
}

const char* whyImagePropertiesIsUnfit(const CommandLine& line)
{
    return whySelectorsAreUnfit(line.hub.isGiven(), {line.image});
}

void addImagePropertiesOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Optional, kSourceHelp);
    addDefinitionOptions(verb, line);
}

} // namespace

const Verb kImagePropertiesVerb = {
    .name = "image properties",
    .summary = "List the properties of a controller and their options; with an image, their "
               "values, and which of them are locked",
    .run = imagePropertiesVerb,
    .addOptions = addImagePropertiesOptions,
    .whyUnfit = whyImagePropertiesIsUnfit,
    .examples = "vornadelctl image properties\n"
                "vornadelctl image properties new.bin --ic SimHub-B\n",
};

} // namespace vornadel
