#include "platform/linux/AttachedBelow.h"

#include "platform/linux/SysfsText.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <unistd.h>

namespace vornadel
{

namespace
{

using Path = std::filesystem::path;
using Texts = std::vector<std::string>;

void addOnce(Texts& texts, const std::string& text)
{
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) {
        texts.push_back(text);
    }
}

/// The device nodes of a disk or partition, and of what is on it, such as an encrypted volume.
void addNodes(const Path& folder, std::set<Path>& nodes)
{
    nodes.insert("/dev" / folder.filename());
    for (const std::string& holder : entriesOf(folder / "holders")) {
        nodes.insert("/dev/" + holder);
        nodes.insert("/dev/mapper/" + textIn(folder / "holders" / holder / "dm/name"));
    }
}

/// A path in the kernel's list of mounts, where some characters are written as "\040".
std::string unescaped(const std::string& text)
{
    std::string path;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size()) {
            path += static_cast<char>(std::strtoul(text.substr(i + 1, 3).c_str(), nullptr, 8));
            i += 3;
        } else {
            path += text[i];
        }
    }
    return path;
}

std::string diskText(const Path& folder)
{
    std::set<Path> nodes;
    addNodes(folder, nodes);
    for (const std::string& part : foldersIn(folder)) { // "sda1", but also "queue"
        addNodes(folder / part, nodes);
    }
    std::string text = "disk " + folder.filename().string();
    std::string separator = ", mounted at ";
    std::ifstream mounts("/proc/self/mounts");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream words(line);
        std::string node;
        std::string place;
        words >> node >> place;
        if (nodes.contains(node)) {
            text.append(separator).append(withoutControls(unescaped(place)));
            separator = ", ";
        }
    }
    return text;
}

/// The last 32 bits of a bit map, which is written as hexadecimal words, highest first.
std::uint32_t lowestBits(const std::string& file)
{
    const std::string words = textIn(file);
    return static_cast<std::uint32_t>(
        std::strtoull(words.c_str() + (words.rfind(' ') + 1), nullptr, 16));
}

/// "keyboard NAME" for an input device with letter keys, "mouse NAME" for one that moves in two
/// directions, empty for others, such as the volume keys of a headset.
std::string inputText(const Path& folder)
{
    constexpr std::uint32_t kLetters = 1U << 16 | 1U << 30; // KEY_Q and KEY_A
    constexpr std::uint32_t kBothAxes = 1U << 0 | 1U << 1;  // REL_X and REL_Y
    const std::string name = textIn(folder / "name");
    if ((lowestBits(folder / "capabilities/key") & kLetters) == kLetters) {
        return "keyboard " + name;
    }
    return (lowestBits(folder / "capabilities/rel") & kBothAxes) == kBothAxes ? "mouse " + name
                                                                              : std::string();
}

/// What the drivers of a USB device have made of it, from a folder of one of its interfaces.
void addFunctions(const Path& folder, Texts& texts)
{
    for (const std::string& kind : foldersIn(folder)) {
        const Path inner = folder / kind;
        if (kind != "block" && kind != "net" && kind != "input") {
            addFunctions(inner, texts);
            continue;
        }
        for (const std::string& name : foldersIn(inner)) {
            const std::string text = kind == "block" ? diskText(inner / name)
                                     : kind == "net" ? "network interface " + name
                                                     : inputText(inner / name);
            if (!text.empty()) {
                addOnce(texts, text);
            }
        }
    }
}

bool isUsbDevice(const Path& folder) { return access((folder / "devnum").c_str(), F_OK) == 0; }

void addDevice(const Path& folder, Texts& texts)
{
    Texts functions;
    for (const std::string& part : foldersIn(folder)) {
        if (!isUsbDevice(folder / part)) {
            addFunctions(folder / part, functions);
        }
    }
    const bool isHub = numberIn(folder / "bDeviceClass", 16) == 9;
    if (functions.empty() && !isHub) {
        std::string text = textIn(folder / "product");
        if (text.empty()) {
            text.append(textIn(folder / "idVendor"))
                .append(":")
                .append(textIn(folder / "idProduct"));
        }
        functions.push_back("USB device " + text);
    }
    texts.insert(texts.end(), functions.begin(), functions.end());
}

} // namespace

std::vector<std::string> attachedBelow(const std::string& hubFolder)
{
    Texts texts;
    for (const std::string& child : foldersIn(hubFolder)) {
        const Path folder = Path(hubFolder) / child;
        if (isUsbDevice(folder)) {
            addDevice(folder, texts);
            const Texts below = attachedBelow(folder);
            texts.insert(texts.end(), below.begin(), below.end());
        }
    }
    return texts;
}

} // namespace vornadel
