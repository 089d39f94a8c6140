#include "cli/NextCommand.h"

#include "cli/LineStream.h"
#include "cli/Verbs.h"

#include <filesystem>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                    "_./:=,@%+-";

constexpr std::string_view kBackupFolder = "--backup-dir";

/// The begin of a command line about the hub at a place.
std::string commandFor(const Command& command, const std::string& place)
{
    const CommandLine& line = command.line;
    std::string text = "vornadelctl";
    if (line.simulatedHub) {
        text += " --simulated-hub" +
                (line.simulatedHub->empty() ? "" : '=' + shellWord(*line.simulatedHub));
    }
    if (!line.configFile.empty()) {
        text += " --config " + shellWord(line.configFile);
    }
    if (!place.empty() && place != "-") {
        text += " --path " + shellWord(place);
    }
    return text;
}

/// The words without what selects a hub by something that it may not tell in its ROM code.
std::vector<std::string> withoutTexts(const std::vector<std::string>& words)
{
    std::vector<std::string> kept;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == "--") {
            kept.insert(kept.end(), word, words.end());
            break;
        }
        bool alone = false;
        bool joined = false; // with its value
        for (const std::string name : {"--serial", "--container", "--id"}) {
            alone = alone || *word == name;
            joined = joined || word->starts_with(name + '=');
        }
        alone = alone || *word == "-S";
        joined = joined || (word->starts_with("-S") && !alone);
        if (!alone && !joined) {
            kept.push_back(*word);
        } else if (alone && std::next(word) != words.end()) {
            ++word;
        }
    }
    return kept;
}

/// For $'...', which bash and zsh know: in printable ASCII.
std::string escaped(const std::string& word)
{
    std::string text;
    for (const char c : word) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\'' || c == '\\') {
            text += '\\';
        }
        if (c >= ' ' && c <= '~') {
            text += c;
            continue;
        }
        text += '\\'; // three octal digits, so that no next character can be taken for another one
        for (const int shift : {6, 3, 0}) {
            text += static_cast<char>('0' + (byte >> shift & 7));
        }
    }
    return text;
}

} // namespace

std::string shellWord(const std::string& word)
{
    if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) {
        return word;
    }
    const bool needsEscapes =
        word.find_first_of("\n\t") != std::string::npos || withoutControls(word) != word;
    if (needsEscapes) {
        return "$'" + escaped(word) + '\'';
    }
    std::string text = "'";
    for (const char c : word) {
        text += c == '\'' ? std::string(R"('\'')") : std::string(1, c);
    }
    return text + '\'';
}

std::string commandAgain(const Command& command, const std::string& place,
                         const std::string& without)
{
    const CommandLine& line = command.line;
    std::string text = "vornadelctl";
    const bool placed = line.hub.path.empty() && !place.empty() && place != "-";
    if (placed) {
        text += " --path " + shellWord(place);
    }
    bool isValue = false; // of the option that is left out
    for (const std::string& word : placed ? withoutTexts(line.typed) : line.typed) {
        const bool isLeftOut =
            !without.empty() && (word == without || word.starts_with(without + '='));
        text += isLeftOut || isValue ? "" : ' ' + shellWord(word);
        isValue = isLeftOut && word == kBackupFolder;
    }
    return text;
}

std::string nextCommand(const Command& command, const std::string& pattern)
{
    const std::string& place = command.result.place;
    const auto output = command.line.verb->output;
    const std::string& file = output == nullptr ? command.line.image : command.line.*output;
    const std::string folder = std::filesystem::path(file).parent_path();
    const bool addsBackupFolder = pattern.find(kBackupFolder) != std::string::npos;
    std::string text = pattern;
    const std::pair<std::string_view, std::string> values[] = {
        {"{again}", commandAgain(command, place, addsBackupFolder ? kBackupFolder.data() : "")},
        {"{hub}", commandFor(command, place)},
        {"{verb}", command.line.verb->name},
        {"{folder}", shellWord(folder.empty() ? "." : folder)},
    };
    for (const auto& [name, value] : values) {
        if (const std::size_t at = text.find(name); at != std::string::npos) {
            text.replace(at, name.size(), value);
        }
    }
    return text;
}

} // namespace vornadel
