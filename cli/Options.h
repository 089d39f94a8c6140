#pragma once

#include "cli/CommandLine.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
} // namespace CLI

namespace vornadel
{

// How a verb adds its options and operands. Each stores its value in a member of CommandLine. The
// help wraps the texts.

/// "-x,--example"
void addFlag(CLI::App& verb, const char* names, bool& value, const char* text);

/// An option with a text, which may not be empty. `valueName` stands for it in the help.
void addText(CLI::App& verb, const char* names, const char* valueName, std::string& value,
             const char* text);

/// "--example{alone}": a flag whose value is "alone", or TEXT of --example=TEXT; empty if it is not
/// given.
void addFlagWithText(CLI::App& verb, const char* names, std::string& value, const char* text);

/// An option with a whole number of at least 0.
void addNumber(CLI::App& verb, const char* names, const char* valueName, std::optional<int>& value,
               const char* text);

enum class Operand { Required, Optional };

/// An operand, which may not be empty: with an empty variable in a script, "info $IMAGE" would ask
/// the hub.
void addOperand(CLI::App& verb, const char* name, std::string& value, Operand kind,
                const char* text);

/// All operands that follow.
void addOperands(CLI::App& verb, const char* name, std::vector<std::string>& values, Operand kind,
                 const char* text);

// Options that several verbs share:

void addRefuseInUse(CLI::App& verb, CommandLine& line);

/// --backup-dir
void addBackupFolder(CLI::App& verb, CommandLine& line);

/// Those of every verb that changes the flash.
void addChangeOptions(CLI::App& verb, CommandLine& line);

/// The same, for a verb that writes an image.
void addWriteOptions(CLI::App& verb, CommandLine& line);

} // namespace vornadel
