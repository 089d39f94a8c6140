#pragma once

#include "props/PropItem.h"

#include <string>

namespace CLI
{
class App;
} // namespace CLI

namespace vornadel
{

struct Command;
struct CommandLine;

/// --definitions and --ic.
void addDefinitionOptions(CLI::App& verb, CommandLine& line);

/// The properties of a controller type.
struct Definitions {
    std::string file; ///< that they are from; empty if there is none
    PropItemList items;
};

/// Reads the property file: the one that the command line names, or else, as the window does, the
/// first one found below the folder of the tool. If there are several of those, standard error says
/// which one it is. Returns the exit status; a failure has been told. No file is no failure.
int readDefinitions(const Command& command, Definitions& definitions);

} // namespace vornadel
