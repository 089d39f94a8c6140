#include "tests/rooms/IncludeRules.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <regex>
#include <string_view>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 9> kSourceSuffixes = {".h",   ".hpp", ".ipp", ".c", ".cc",
                                                             ".cpp", ".cxx", ".m",   ".mm"};

/// Folders at the root that are not rooms; they may include anything.
constexpr std::array<std::string_view, 5> kOtherFolders = {"tests", "bench", "examples",
                                                           "packaging", "build"};

/// Rooms that choose the machine to work on. A front end may use them in its main.cpp only.
constexpr std::array<std::string_view, 2> kChosenInMain = {"platform_native", "sim"};

/// Rooms that may use these anywhere, although they are no front ends.
constexpr std::array<std::string_view, 1> kMadeOfIt = {"virtual_hub"};

/// A pattern for the headers of an external library, and the CMake target that the room's row must
/// allow.
struct OutsideHeaders {
    const char* library;
    const char* headers;
};

constexpr OutsideHeaders kOutsideHeaders[] = {
    {"LibUSB::LibUSB", "libusb.*"},
    {"Nettle::Nettle", "nettle/.*"},
    {"SdBus::Headers", "systemd/.*"},
    {"Qt6::Widgets", "Q[A-Zt].*|q[a-z]+\\.h|ui_.*\\.h"},
    {"iniparser::iniparser", "iniparser.*|dictionary\\.h"},
    {"CLI11::CLI11", "CLI/.*"},
    {"nlohmann_json::nlohmann_json", "nlohmann/.*"},
    {"MacOS::Interfaces", "(AppKit|ApplicationServices|Carbon|Cocoa|CoreFoundation|CoreServices|"
                          "Foundation|IOKit|Security)/.*|"
                          "(Availability|TargetConditionals)\\.h|(mach|mach-o|objc|xpc)/.*"},
    {"GTest::gtest", "(gtest|gmock)/.*"},
    {"a USB test bed", "umockdev.*"},
    {"a validator for tests", "valijson/.*"},
};

bool isSource(const fs::path& file)
{
    const std::string suffix = file.extension().string();
    return std::find(kSourceSuffixes.begin(), kSourceSuffixes.end(), suffix) !=
           kSourceSuffixes.end();
}

/// The files of the tree, relative to the root, sorted by name. Without hidden folders and builds.
std::vector<std::string> sourcesBelow(const fs::path& root)
{
    std::vector<std::string> files;
    for (auto each = fs::recursive_directory_iterator(root);
         each != fs::recursive_directory_iterator(); ++each) {
        const std::string name = each->path().filename().string();
        if (each->is_directory() && (name.front() == '.' || name == "build")) {
            each.disable_recursion_pending();
        } else if (each->is_regular_file() && isSource(each->path())) {
            files.push_back(each->path().lexically_relative(root).generic_string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool liesIn(const std::string& path, const std::string& folder)
{
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

/// The room of a path, the innermost one if rooms are nested; null for a path in no room.
const Room* roomOf(const std::string& path, const std::vector<Room>& rooms)
{
    const Room* found = nullptr;
    for (const Room& room : rooms) {
        if (liesIn(path, room.folder) &&
            (found == nullptr || room.folder.size() > found->folder.size())) {
            found = &room;
        }
    }
    return found;
}

template <typename List, typename Value>
bool contains(const List& list, const Value& value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

/// What is wrong with a room including a header of another; empty if it is allowed.
std::optional<std::string> judgeRoom(const std::string& file, const Room& from, const Room& to)
{
    if (from.name == to.name) {
        return std::nullopt;
    }
    if (!contains(from.mayUse, to.name)) {
        return "room " + from.name + " may not use room " + to.name;
    }
    if (contains(kChosenInMain, to.name) && !contains(kMadeOfIt, from.name) &&
        fs::path(file).filename() != "main.cpp") {
        return "room " + to.name + " is chosen in main.cpp and used nowhere else";
    }
    return std::nullopt;
}

std::optional<std::string> judgeOutside(const Room& from, const std::string& header)
{
    for (const OutsideHeaders& each : kOutsideHeaders) {
        if (!contains(from.mayUseOutside, each.library) &&
            std::regex_match(header, std::regex(each.headers))) {
            return "room " + from.name + " may not use " + each.library;
        }
    }
    return std::nullopt;
}

/// What is wrong with one line of a file; empty if it is no include line, or an allowed one.
std::optional<std::string> judgeLine(const std::string& file, const Room& from,
                                     const std::string& line, const std::vector<Room>& rooms)
{
    static const std::regex directive(R"(^\s*#\s*(?:include|include_next|import)\b\s*(.*)$)");
    static const std::regex named(R"re(^(["<])([^">]+)[">].*$)re");
    std::smatch match;
    if (!std::regex_match(line, match, directive)) {
        return std::nullopt;
    }
    const std::string operand = match[1];
    if (!std::regex_match(operand, match, named)) {
        return "an include that names no file cannot be checked";
    }
    const bool quoted = match[1] == "\"";
    const std::string header = match[2];
    if (const Room* to = roomOf(header, rooms)) {
        return judgeRoom(file, from, *to);
    }
    if (auto wrong = judgeOutside(from, header)) {
        return wrong;
    }
    if (quoted) {
        return "\"" + header + "\" is not in a room; our own includes are written from the root";
    }
    return std::nullopt;
}

} // namespace

std::vector<std::string> wrongIncludes(const fs::path& root, const std::vector<Room>& rooms)
{
    std::vector<std::string> wrong;
    for (const std::string& file : sourcesBelow(root)) {
        const Room* from = roomOf(file, rooms);
        if (from == nullptr) {
            continue;
        }
        std::ifstream source(root / file);
        std::string line;
        for (int number = 1; std::getline(source, line); ++number) {
            if (const auto what = judgeLine(file, *from, line, rooms)) {
                wrong.push_back(file + ":" + std::to_string(number) + ": " + *what);
            }
        }
    }
    return wrong;
}

std::vector<std::string> homelessSources(const fs::path& root, const std::vector<Room>& rooms)
{
    std::vector<std::string> homeless;
    for (const std::string& file : sourcesBelow(root)) {
        if (roomOf(file, rooms) == nullptr &&
            !contains(kOtherFolders, file.substr(0, file.find('/')))) {
            homeless.push_back(file);
        }
    }
    return homeless;
}

std::vector<std::string> linesThatAskForTheSystem(const fs::path& root)
{
    static const std::regex asks(R"(^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(?:__)"
                                 R"(APPLE__|__MACH__|__linux__|__unix__|TARGET_OS_\w+)\b.*$)");
    std::vector<std::string> asking;
    for (const std::string& file : sourcesBelow(root)) {
        if (file.starts_with("platform/")) {
            continue;
        }
        std::ifstream source(root / file);
        std::string line;
        for (int number = 1; std::getline(source, line); ++number) {
            if (std::regex_match(line, asks)) {
                asking.push_back(file + ":" + std::to_string(number));
            }
        }
    }
    return asking;
}

std::vector<std::string> sourcesOf(const fs::path& root, const std::vector<Room>& rooms,
                                   const std::string& room)
{
    std::vector<std::string> files = sourcesBelow(root);
    std::erase_if(files, [&](const std::string& file) {
        const Room* home = roomOf(file, rooms);
        return home == nullptr || home->name != room;
    });
    return files;
}

} // namespace vornadel::test
