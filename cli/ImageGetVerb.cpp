#include "cli/Definitions.h"
#include "cli/ImageEdit.h"
#include "cli/ImageSource.h"
#include "cli/Json.h"
#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "firmware/ImageDiff.h"
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

struct NamedValue {
    std::string name;
    std::string value;
};

/// Everything that an image has, by its shortest name.
std::vector<NamedValue> allValues(const FwImage& image, const PropItemList& items)
{
    std::vector<NamedValue> values;
    for (const NamedText& field : FwImage_Fields(image)) {
        values.push_back({std::string(field.name), field.text});
    }
    for (const auto& item : items) {
        values.push_back({distinctName(*item, items), valueOrNumber(*item)});
    }
    return values;
}

/// Returns the exit status.
int chosenValues(const Command& command, const std::vector<NamedValue>& all,
                 const PropItemList& items, std::vector<NamedValue>& chosen)
{
    for (const std::string& name : command.line.words) {
        const auto named = std::find_if(
            all.begin(), all.end(), [&name](const NamedValue& each) { return each.name == name; });
        if (named != all.end()) {
            chosen.push_back(*named);
            continue;
        }
        const PropItemList properties = propertiesNamed(items, name);
        if (properties.size() != 1) {
            return fail(command, FailureId::Usage,
                        properties.empty()
                            ? "there is no field and no property \"" + printable(name) + '"'
                            : "several properties are called \"" + printable(name) +
                                  "\"; write \"" + printable(fullName(*properties.front())) +
                                  "\" for the first of them");
        }
        chosen.push_back({name, valueOrNumber(*properties.front())});
    }
    return kExitSuccess;
}

void printValues(const Command& command, const std::vector<NamedValue>& values)
{
    if (command.json()) {
        Json object = Json::object();
        for (const NamedValue& each : values) {
            object[each.name] = each.value;
        }
        printObject(command, {{"values", object}});
        return;
    }
    for (const NamedValue& each : values) {
        const bool named = command.line.words.empty();
        command.out << (named ? printable(each.name) + '=' : "") << printable(each.value) << '\n';
    }
}

bool isField(const std::string& name)
{
    return namesAField(name) || name == "block" || name == "version" || name == "changed";
}

int imageGetVerb(const Command& command)
{
    const std::vector<std::string>& names = command.line.words;
    Definitions definitions;
    FwImage image;
    int status = kExitSuccess;
    if (names.empty() || !std::all_of(names.begin(), names.end(), isField)) {
        status = readDefinitions(command, definitions);
    }
    if (status == kExitSuccess) {
        status = loadSource(command, command.line.image, image);
    }
    if (status != kExitSuccess) {
        return status;
    }
    refreshValues(definitions.items, FwImage_Block(image));
    std::vector<NamedValue> values = allValues(image, definitions.items);
    if (!names.empty()) {
        std::vector<NamedValue> chosen;
        status = chosenValues(command, values, definitions.items, chosen);
        values = std::move(chosen);
    }
    if (status == kExitSuccess) {
        printValues(command, values);
    }
    return status;
}

const char* whyImageGetIsUnfit(const CommandLine& line)
{
    return whySelectorsAreUnfit(line.hub.isGiven(), {line.image});
}

void addImageGetOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required, kSourceHelp);
    addOperands(verb, "NAMES", line.words, Operand::Optional,
                "Fields (version, vid, sspid, hspid, manufacturer, product, serial, container-id, "
                "changed, block) and properties; without any, all of them");
    addDefinitionOptions(verb, line);
}

} // namespace

const Verb kImageGetVerb = {
    .name = "image get",
    .summary = "Print values of fields and properties of an image, one a line, as image set takes "
               "them",
    .run = imageGetVerb,
    .addOptions = addImageGetOptions,
    .whyUnfit = whyImageGetIsUnfit,
    .examples = "vornadelctl image get new.bin serial \"SSC Enable\"\n"
                "vornadelctl image get new.bin\n",
};

} // namespace vornadel
