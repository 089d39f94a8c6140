#include "cli/Options.h"

#include "cli/DryRun.h"

#include <CLI/CLI.hpp>

namespace vornadel
{

namespace
{

std::string refuseEmpty(const std::string& text) { return text.empty() ? "it is empty" : ""; }

std::string refuseOtherNumbers(const std::string& text)
{
    constexpr std::size_t kMostDigits = 9;
    const bool fits = !text.empty() && text.size() <= kMostDigits &&
                      text.find_first_not_of("0123456789") == std::string::npos;
    return fits ? "" : '"' + text + "\" is no number from 0 to 999999999";
}

void finishOperand(CLI::Option* operand, Operand kind)
{
    operand->check(refuseEmpty);
    operand->required(kind == Operand::Required);
}

} // namespace

void addFlag(CLI::App& verb, const char* names, bool& value, const char* text)
{
    verb.add_flag(names, value, text);
}

void addText(CLI::App& verb, const char* names, const char* valueName, std::string& value,
             const char* text)
{
    verb.add_option(names, value, text)->type_name(valueName)->check(refuseEmpty);
}

void addFlagWithText(CLI::App& verb, const char* names, std::string& value, const char* text)
{
    // Otherwise the last of several would silently win.
    verb.add_flag(names, value, text)->multi_option_policy(CLI::MultiOptionPolicy::Throw);
}

void addNumber(CLI::App& verb, const char* names, const char* valueName, std::optional<int>& value,
               const char* text)
{
    verb.add_option(names, value, text)->option_text(valueName)->check(refuseOtherNumbers);
}

void addOperand(CLI::App& verb, const char* name, std::string& value, Operand kind,
                const char* text)
{
    finishOperand(verb.add_option(name, value, text), kind);
}

void addOperands(CLI::App& verb, const char* name, std::vector<std::string>& values, Operand kind,
                 const char* text)
{
    finishOperand(verb.add_option(name, values, text), kind);
}

void addRefuseInUse(CLI::App& verb, CommandLine& line)
{
    addFlag(verb, "--refuse-in-use", line.refuseInUse,
            "Fail if a disk, a keyboard or another device in use hangs below the hub");
}

void addBackupFolder(CLI::App& verb, CommandLine& line)
{
    addText(verb, "--backup-dir", "FOLDER", line.backupFolder,
            "Keep backups in this folder instead of $XDG_STATE_HOME/vornadel/backups or "
            "~/.local/state/vornadel/backups");
}

void addChangeOptions(CLI::App& verb, CommandLine& line)
{
    addRefuseInUse(verb, line);
    addFlag(verb, "--no-backup", line.noBackup, "Do not save the flash before it is changed");
    addBackupFolder(verb, line);
    addDryRun(verb, line);
}

void addWriteOptions(CLI::App& verb, CommandLine& line)
{
    addChangeOptions(verb, line);
    addFlag(verb, "--always-write", line.alwaysWrite,
            "Write also if the flash holds the image already");
}

} // namespace vornadel
