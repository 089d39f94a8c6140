#include "cli/Definitions.h"

#include "cli/Options.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "props/PropertyFile.h"
#include "props/PropertyFiles.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace vornadel
{

namespace
{

namespace fs = std::filesystem;

/// The folder that contains the bundle; outside a bundle, that of the resources.
std::string toolDirectory(const std::string& resourcePath)
{
    const fs::path resources = resourcePath;
    const fs::path contents = resources.parent_path();
    const bool bundled = resources.filename() == "Resources" && contents.filename() == "Contents";
    return bundled ? contents.parent_path().parent_path().string() : resourcePath;
}

/// "SimHub-A" of "more/SimHub-A.INI".
std::string controllerOf(const std::string& file) { return fs::path(file).stem().string(); }

/// What --ic calls a file: its controller, or its path if several files are for that one.
std::string nameOf(const std::string& file, const std::vector<std::string>& files)
{
    const std::string controller = controllerOf(file);
    const auto same = std::count_if(files.begin(), files.end(), [&](const std::string& each) {
        return controllerOf(each) == controller;
    });
    return printable(same > 1 ? file : controller);
}

std::string namesOf(const std::vector<std::string>& files)
{
    std::string names;
    for (const std::string& file : files) {
        names += (names.empty() ? "" : ", ") + nameOf(file, files);
    }
    return names;
}

/// The file to read, empty if there is none.
int chooseFile(const Command& command, std::string& chosen)
{
    const std::string folder = toolDirectory(command.resourcePath);
    const std::vector<std::string> files = findPropertyFiles(folder);
    const std::string& wanted = command.line.controller;
    if (wanted.empty()) {
        if (files.size() > 1) {
            command.err << "taking the properties of " << nameOf(files.front(), files)
                        << "; --ic NAME chooses: " << namesOf(files) << '\n';
        }
        chosen = files.empty() ? "" : folder + '/' + files.front();
        return kExitSuccess;
    }
    const auto found = std::find_if(files.begin(), files.end(), [&](const std::string& file) {
        return file == wanted || controllerOf(file) == wanted;
    });
    if (found == files.end()) {
        return fail(command, FailureId::DefinitionsUnusable,
                    "there is no property file for " + printable(wanted) +
                        (files.empty() ? "" : "; there are: " + namesOf(files)));
    }
    chosen = folder + '/' + *found;
    return kExitSuccess;
}

} // namespace

void addDefinitionOptions(CLI::App& verb, CommandLine& line)
{
    addText(verb, "--definitions", "FILE", line.definitions,
            "The property file of the controller (*.INI)");
    addText(verb, "--ic", "NAME", line.controller,
            "The controller, if there are property files for several, such as SimHub-A");
}

int readDefinitions(const Command& command, Definitions& definitions)
{
    definitions.file = command.line.definitions;
    if (!definitions.file.empty() && !command.line.controller.empty()) {
        return fail(command, FailureId::Usage,
                    "--definitions names the file already, so --ic cannot choose one");
    }
    if (definitions.file.empty()) {
        const int status = chooseFile(command, definitions.file);
        if (status != kExitSuccess || definitions.file.empty()) {
            return status;
        }
    }
    std::string problem;
    definitions.items = readPropertyFile(definitions.file, problem);
    return problem.empty() ? kExitSuccess
                           : fail(command, FailureId::DefinitionsUnusable, printable(problem));
}

} // namespace vornadel
