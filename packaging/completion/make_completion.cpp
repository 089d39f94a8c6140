// Prints how a shell completes a command line of vornadelctl, from the parser that reads it:
// make_completion bash|zsh|fish.

#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace
{

struct Word {
    std::string text;
    std::string meaning; ///< in one line
};

struct OptionWords {
    std::vector<std::string> names;
    std::string meaning;
    bool hasValue = false;
    bool valueIsFile = false;
    std::vector<std::string> choices; ///< of the value
};

/// The top, a group of verbs, or a verb.
struct Place {
    std::string path; ///< "", "image", "image set"
    std::vector<Word> verbs;
    std::vector<OptionWords> options;
    bool takesFiles = false;
};

std::string inOneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// In single quotes for a shell.
std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return result + "'";
}

std::string joined(const std::vector<std::string>& words, const char* between)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

/// "HOW:{auto,none}": the parser tells the choices of a value this way.
std::vector<std::string> choicesIn(const std::string& type)
{
    std::vector<std::string> choices;
    const std::size_t open = type.find('{');
    const std::size_t close = type.find('}', open);
    if (open != std::string::npos && close != std::string::npos) {
        std::istringstream list(type.substr(open + 1, close - open - 1));
        for (std::string choice; std::getline(list, choice, ',');) {
            choices.push_back(choice);
        }
    }
    return choices;
}

OptionWords wordsOf(const CLI::Option& option)
{
    OptionWords words;
    for (const std::string& name : option.get_snames()) {
        words.names.push_back('-' + name);
    }
    for (const std::string& name : option.get_lnames()) {
        words.names.push_back("--" + name);
    }
    words.meaning = inOneLine(option.get_description());
    words.hasValue = option.get_items_expected_min() > 0;
    words.valueIsFile = option.get_type_name().starts_with("FILE");
    words.choices = choicesIn(option.get_type_name());
    return words;
}

bool isFileOperand(const CLI::Option& option)
{
    const std::string name = option.get_name(true);
    return name == "IMAGE" || name == "FILE" || name == "BEFORE" || name == "AFTER";
}

void collect(const CLI::App& app, const std::string& path, std::vector<Place>& places)
{
    Place place;
    place.path = path;
    for (const CLI::Option* const option : app.get_options()) {
        const bool operand = option->get_snames().empty() && option->get_lnames().empty();
        if (operand) {
            place.takesFiles = place.takesFiles || isFileOperand(*option);
        } else {
            place.options.push_back(wordsOf(*option));
        }
    }
    const auto all = [](const CLI::App*) { return true; };
    for (const CLI::App* const verb : app.get_subcommands(all)) {
        place.verbs.push_back({verb->get_name(), inOneLine(verb->get_description())});
    }
    places.push_back(place);
    for (const CLI::App* const verb : app.get_subcommands(all)) {
        collect(*verb, path.empty() ? verb->get_name() : path + ' ' + verb->get_name(), places);
    }
}

/// The names of the options of all places that fit, as alternatives of a shell's "case".
template <typename Fits>
std::string namesOfThose(const std::vector<Place>& places, const Fits& fits)
{
    std::vector<std::string> names;
    for (const Place& place : places) {
        for (const OptionWords& option : place.options) {
            for (const std::string& name : option.names) {
                if (fits(option) && std::find(names.begin(), names.end(), name) == names.end()) {
                    names.push_back(name);
                }
            }
        }
    }
    return joined(names, " | ");
}

/// The path of groups, which are no verbs without another word.
std::string groups(const std::vector<Place>& places)
{
    std::vector<std::string> paths;
    for (const Place& place : places) {
        if (!place.path.empty() && !place.verbs.empty()) {
            paths.push_back(place.path);
        }
    }
    return joined(paths, " | ");
}

/// The start that bash and zsh share: finds the verb before the word at `current` of `words`.
void printVerbSearch(const std::vector<Place>& places, const char* words, const char* begin,
                     const char* current)
{
    std::cout << "    for ((i = " << begin << "; i < " << current << "; i++)); do\n"
              << "        case ${" << words << "[i]} in\n        "
              << namesOfThose(places, [](const auto& option) { return option.hasValue; })
              << ") ((i += 1)) ;;\n"
                 "        -*) ;;\n"
                 "        *)\n"
                 "            case $verb in\n"
                 "            '') verb=${"
              << words << "[i]} ;;\n            " << groups(places) << ") verb=\"$verb ${" << words
              << "[i]}\" ;;\n"
                 "            esac\n"
                 "            ;;\n"
                 "        esac\n"
                 "    done\n";
}

const auto kHasFile = [](const OptionWords& option) { return option.valueIsFile; };
const auto kHasFreeText = [](const OptionWords& option) {
    return option.hasValue && !option.valueIsFile && option.choices.empty();
};

std::vector<std::string> optionNames(const std::vector<OptionWords>& options)
{
    std::vector<std::string> names;
    for (const OptionWords& option : options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return names;
}

void printBash(const std::vector<Place>& places)
{
    std::cout
        << "# bash completion for vornadelctl\n"
           "_vornadelctl() {\n"
           "    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
           "    local verb='' words='' options='' files=no i\n"
           "    COMPREPLY=()\n";
    printVerbSearch(places, "COMP_WORDS", "1", "COMP_CWORD");
    std::cout << "    case $before in\n";
    for (const Place& place : places) {
        for (const OptionWords& option : place.options) {
            if (!option.choices.empty()) {
                std::cout << "    " << joined(option.names, " | ")
                          << ") mapfile -t COMPREPLY < <(compgen -W "
                          << quoted(joined(option.choices, " "))
                          << " -- \"$current\"); return ;;\n";
            }
        }
    }
    std::cout << "    " << namesOfThose(places, kHasFile)
              << ") mapfile -t COMPREPLY < <(compgen -f -- \"$current\"); return ;;\n    "
              << namesOfThose(places, kHasFreeText)
              << ") return ;;\n"
                 "    esac\n"
                 "    case $verb in\n";
    for (const Place& place : places) {
        std::cout << "    " << quoted(place.path) << ')';
        if (!place.verbs.empty()) {
            std::cout << " words=";
            std::vector<std::string> verbs;
            for (const Word& verb : place.verbs) {
                verbs.push_back(verb.text);
            }
            std::cout << quoted(joined(verbs, " "));
        }
        std::cout << (place.takesFiles ? " files=yes" : "")
                  << " options=" << quoted(joined(optionNames(place.options), " ")) << " ;;\n";
    }
    std::cout << "    *) return ;;\n"
                 "    esac\n"
                 "    case $current in\n"
                 "    -*) mapfile -t COMPREPLY < <(compgen -W \"$options "
              << joined(optionNames(places.front().options), " ")
              << "\" -- \"$current\") ;;\n"
                 "    *)\n"
                 "        mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
                 "        [ $files = no ] || mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
                 "        ;;\n"
                 "    esac\n"
                 "}\n"
                 "complete -o filenames -F _vornadelctl vornadelctl\n";
}

/// A word and its meaning for zsh's _describe.
std::string described(const std::string& word, const std::string& meaning)
{
    return ' ' + quoted(word + ':' + meaning);
}

void printZsh(const std::vector<Place>& places)
{
    std::cout << "#compdef vornadelctl\n"
                 "_vornadelctl() {\n"
                 "    local verb='' before=${words[CURRENT - 1]} files=no i\n"
                 "    local -a verbs options common\n";
    printVerbSearch(places, "words", "2", "CURRENT");
    std::cout << "    case $before in\n";
    for (const Place& place : places) {
        for (const OptionWords& option : place.options) {
            if (!option.choices.empty()) {
                std::cout << "    (" << joined(option.names, " | ") << ") compadd -- "
                          << joined(option.choices, " ") << "; return ;;\n";
            }
        }
    }
    std::cout << "    (" << namesOfThose(places, kHasFile) << ") _files; return ;;\n    ("
              << namesOfThose(places, kHasFreeText)
              << ") return ;;\n"
                 "    esac\n"
                 "    case $verb in\n";
    for (const Place& place : places) {
        std::cout << "    (" << quoted(place.path) << ")\n        verbs=(";
        for (const Word& verb : place.verbs) {
            std::cout << described(verb.text, verb.meaning);
        }
        std::cout << ")\n        options=(";
        for (const OptionWords& option : place.options) {
            for (const std::string& name : option.names) {
                std::cout << described(name, option.meaning);
            }
        }
        std::cout << ")\n" << (place.takesFiles ? "        files=yes\n" : "") << "        ;;\n";
    }
    std::cout << "    (*) return ;;\n"
                 "    esac\n"
                 "    common=(";
    for (const OptionWords& option : places.front().options) {
        for (const std::string& name : option.names) {
            std::cout << described(name, option.meaning);
        }
    }
    std::cout << ")\n"
                 "    if [[ ${words[CURRENT]} == -* ]]; then\n"
                 "        [[ -z $verb ]] || options+=($common)\n"
                 "        _describe -o option options\n"
                 "    elif [[ $files == yes ]]; then\n"
                 "        _files\n"
                 "    else\n"
                 "        _describe verb verbs\n"
                 "    fi\n"
                 "}\n"
                 "_vornadelctl \"$@\"\n";
}

void printFishOption(const Place& place, const OptionWords& option)
{
    std::cout << "complete -c vornadelctl";
    if (!place.path.empty()) {
        std::cout << " -n " << quoted("test (__vornadelctl_verb) = " + quoted(place.path));
    }
    for (const std::string& name : option.names) {
        std::cout << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
    }
    if (option.hasValue) {
        std::cout << (option.valueIsFile ? " -rF" : " -x");
    }
    if (!option.choices.empty()) {
        std::cout << " -a " << quoted(joined(option.choices, " "));
    }
    std::cout << " -d " << quoted(option.meaning) << '\n';
}

void printFish(const std::vector<Place>& places)
{
    std::cout << "# fish completion for vornadelctl\n"
                 "function __vornadelctl_verb\n"
                 "    set -l verb ''\n"
                 "    set -l skip no\n"
                 "    for word in (commandline -opc)[2..]\n"
                 "        if test $skip = yes\n"
                 "            set skip no\n"
                 "            continue\n"
                 "        end\n"
                 "        switch $word\n"
                 "            case ";
    std::string withValue =
        namesOfThose(places, [](const auto& option) { return option.hasValue; });
    withValue.erase(std::remove(withValue.begin(), withValue.end(), '|'), withValue.end());
    std::cout << withValue
              << "\n"
                 "                set skip yes\n"
                 "            case '-*'\n"
                 "            case '*'\n"
                 "                switch $verb\n"
                 "                    case ''\n"
                 "                        set verb $word\n"
                 "                    case ";
    std::string groupNames = groups(places);
    groupNames.erase(std::remove(groupNames.begin(), groupNames.end(), '|'), groupNames.end());
    std::cout << groupNames
              << "\n"
                 "                        set verb \"$verb $word\"\n"
                 "                end\n"
                 "        end\n"
                 "    end\n"
                 "    echo $verb\n"
                 "end\n"
                 "complete -c vornadelctl -f\n";
    for (const Place& place : places) {
        const std::string condition =
            " -n " + quoted("test (__vornadelctl_verb) = " + quoted(place.path));
        for (const Word& verb : place.verbs) {
            std::cout << "complete -c vornadelctl" << condition << " -a " << verb.text << " -d "
                      << quoted(verb.meaning) << '\n';
        }
        if (place.takesFiles) {
            std::cout << "complete -c vornadelctl" << condition << " -F\n";
        }
        for (const OptionWords& option : place.options) {
            printFishOption(place, option);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const std::string shell = argc == 2 ? argv[1] : "";
    std::vector<Place> places;
    vornadel::useParser([&places](const CLI::App& app) { collect(app, "", places); });
    if (shell == "bash") {
        printBash(places);
    } else if (shell == "zsh") {
        printZsh(places);
    } else if (shell == "fish") {
        printFish(places);
    } else {
        std::fputs("usage: make_completion bash|zsh|fish\n", stderr);
        return 2;
    }
    return std::cout.flush() ? 0 : 1;
}
