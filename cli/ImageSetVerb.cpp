#include "cli/Definitions.h"
#include "cli/ImageDifferences.h"
#include "cli/ImageEdit.h"
#include "cli/ImageSource.h"
#include "cli/Options.h"
#include "cli/OutputFile.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "props/PropertyEdit.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace vornadel
{

namespace
{

using Edits = std::vector<ImageEdit>;

/// In one line.
std::string inOneLine(const std::string& text)
{
    std::string line;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\n';
        if (!blank) {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    return printable(line);
}

/// Returns the exit status, as all of these do.
int readEdits(const Command& command, const Definitions& definitions, Edits& edits)
{
    for (const std::string& word : command.line.words) {
        ImageEdit edit;
        if (const std::string why = parseEdit(word, definitions.items, edit); !why.empty()) {
            return fail(command, FailureId::Usage, why);
        }
        for (const ImageEdit& other : edits) {
            if (edit.sameTarget(other)) {
                return fail(command, FailureId::Usage,
                            '"' + printable(word.substr(0, word.find('='))) + "\" is set twice");
            }
        }
        edits.push_back(std::move(edit));
    }
    return kExitSuccess;
}

int setFields(const Command& command, FwImage& image, const Edits& edits)
{
    std::vector<FieldEdit> fields;
    for (const ImageEdit& edit : edits) {
        if (edit.property == nullptr) {
            fields.push_back(edit.field);
        }
    }
    std::size_t culprit = 0;
    const FieldFlaw flaw = FwImage_FindEditFlaw(image, fields, culprit);
    if (flaw == FieldFlaw::NoVersion) {
        return fail(command, FailureId::ImageRefused, wordsOf(flaw, {}));
    }
    if (flaw != FieldFlaw::None) {
        return fail(command, FailureId::Usage,
                    wordsOf(flaw, culprit < fields.size() ? fields[culprit] : FieldEdit{}));
    }
    FwImage_EditFields(image, fields);
    return kExitSuccess;
}

int setProperties(const Command& command, FwImage& image, const Definitions& definitions,
                  const Edits& edits)
{
    const std::span<std::uint8_t> block = FwImage_Block(image);
    for (const ImageEdit& edit : edits) {
        if (edit.property == nullptr) {
            continue;
        }
        PropItem& item = *edit.property;
        if (item.addr >= block.size()) {
            return fail(command, FailureId::ImageRefused,
                        '"' + printable(item.propName) + "\" lies behind the end of the image");
        }
        if (isLocked(item, block)) {
            return fail(command, FailureId::Locked,
                        '"' + printable(item.propName) +
                            "\" is locked: " + inOneLine(whyLocked(item, definitions.items)));
        }
        chooseOption(item, static_cast<int>(edit.position), block);
    }
    return kExitSuccess;
}

int saveImage(const Command& command, const FwImage& image)
{
    std::string problem;
    return writeOutput(command, command.line.output, bytesOf(image), problem)
               ? kExitSuccess
               : fail(command, FailureId::FileNotSaved, printable(problem));
}

void tellChanges(const Command& command, const FwImage& image, const Definitions& definitions,
                 const ImageDifferences& differences)
{
    const std::string& path = command.line.output;
    if (command.json()) {
        printObject(command, {{"file", path},
                              {"bytes", image.size},
                              {"definitions", definitions.file},
                              {"changed", jsonOf(differences)}});
        return;
    }
    command.out << (differences.none() ? "nothing changed\n" : linesOf(differences));
    if (!isStandardOutput(path)) {
        command.out << "Saved " << image.size << " bytes to " << printable(path) << '\n';
    }
}

int imageSetVerb(const Command& command)
{
    Definitions definitions;
    Edits edits;
    FwImage before;
    FwImage image;
    // All that needs no hub comes before a hub is read, because that restarts it.
    int status = checkOutput(command, command.line.output);
    if (status == kExitSuccess &&
        !std::all_of(command.line.words.begin(), command.line.words.end(), namesAField)) {
        status = readDefinitions(command, definitions);
    }
    if (status == kExitSuccess) {
        status = readEdits(command, definitions, edits);
    }
    if (status == kExitSuccess) {
        status = loadSource(command, command.line.image, image);
    }
    if (status != kExitSuccess) {
        return status;
    }
    FwImage_Parse(before, image.data.get(), image.size);
    status = setFields(command, image, edits);
    if (status == kExitSuccess) {
        status = setProperties(command, image, definitions, edits);
    }
    if (status == kExitSuccess) {
        FwImage_RebuildStrings(image);
        status = saveImage(command, image);
    }
    if (status == kExitSuccess) {
        tellChanges(command, image, definitions, findDifferences(before, image, definitions.items));
    }
    return status;
}

const char* whyImageSetIsUnfit(const CommandLine& line)
{
    if (line.output.empty()) {
        return "-o FILE is missing: where to save the image";
    }
    return whySelectorsAreUnfit(line.hub.isGiven(), {line.image});
}

void addImageSetOptions(CLI::App& verb, CommandLine& line)
{
    addOperand(verb, "IMAGE", line.image, Operand::Required, kSourceHelp);
    addOperands(verb, "EDITS", line.words, Operand::Required,
                "NAME=VALUE: a field (vid, sspid, hspid, manufacturer, product, serial, "
                "container-id, which may be \"new\") or a property, by its name or PAGE/NAME, and "
                "one of its options");
    addText(verb, "-o,--output", "FILE", line.output,
            "Where to save the image; -: standard output");
    addFlag(verb, "--force", line.force, "Replace the file if it exists");
    addDefinitionOptions(verb, line);
}

} // namespace

const Verb kImageSetVerb = {
    .name = "image set",
    .summary = "Change fields and properties of an image, as the window does, and save it",
    .run = imageSetVerb,
    .addOptions = addImageSetOptions,
    .whyUnfit = whyImageSetIsUnfit,
    .output = &CommandLine::output,
    .examples = "vornadelctl image set old.bin serial=SN0002 container-id=new -o new.bin\n"
                "vornadelctl image set old.bin \"SSC Enable\"=Disable -o new.bin\n",
};

} // namespace vornadel
