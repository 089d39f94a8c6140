#include "config/ToolConfig.h"

#include "base/FirstComplaint.h"
#include "hub/SupportedIds.h"

#include <iniparser/iniparser.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

namespace vornadel
{

namespace
{

namespace fs = std::filesystem;

struct FreeDictionary {
    void operator()(dictionary* entries) const { iniparser_freedict(entries); }
};
using Dictionary = std::unique_ptr<dictionary, FreeDictionary>;

/// The text of a key. A key that is also the name of a section has no text and counts as missing.
std::string textOf(const Dictionary& entries, const std::string& key, const char* missing)
{
    const char* text = iniparser_getstring(entries.get(), key.c_str(), missing);
    return text != nullptr ? text : missing;
}

/// The number of a key, 0 when missing. The library's own getter would dereference a null pointer
/// for a section that is named like the key.
std::int32_t numberOf(const Dictionary& entries, const std::string& key)
{
    return static_cast<std::int32_t>(std::strtol(textOf(entries, key, "").c_str(), nullptr, 0));
}

/// The id under a key such as "Support Vid Pid:VID_0A".
std::uint16_t idOf(const Dictionary& entries, const char* kind, unsigned index)
{
    char key[64];
    std::snprintf(key, sizeof key, "%s:%s_%02X", "Support Vid Pid", kind, index);
    return static_cast<std::uint16_t>(numberOf(entries, key));
}

void fillSupportedIds(const Dictionary& entries)
{
    SupportedIdList.fill({});
    for (unsigned i = 0; i < SupportedIdList.size(); ++i) {
        const std::uint16_t vid = idOf(entries, "VID", i);
        const std::uint16_t hspid = idOf(entries, "HSPID", i);
        const std::uint16_t sspid = idOf(entries, "SSPID", i);
        if (vid != 0 && hspid != 0 && sspid != 0) {
            SupportedIdList.at(i) = {1, vid, sspid, hspid};
        }
    }
}

/// Why the file must not be passed to the INI reader; empty when it may be. A file that is missing
/// or cannot be opened is passed: the reader reports it.
std::string problemWith(const std::string& path)
{
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    if (!fs::exists(status)) {
        return {};
    }
    if (!fs::is_regular_file(status)) {
        return path + " is not a regular file and was not read";
    }
    // The size alone does not tell: the system's own files claim to be empty.
    std::ifstream file(path, std::ios::binary);
    std::string content(kLargestConfigFile + 1, '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    if (file.gcount() > static_cast<std::streamsize>(kLargestConfigFile)) {
        return path + " is larger than 64 KiB and was not read";
    }
    return {};
}

/// The file's entries; null, with the reason in `problem`, when there are none.
Dictionary load(const std::string& path, std::string& problem)
{
    problem = problemWith(path);
    if (!problem.empty()) {
        return nullptr;
    }
    resetFirstComplaint();
    iniparser_set_error_callback(keepFirstComplaint);
    Dictionary entries(iniparser_load(path.c_str()));
    iniparser_set_error_callback(nullptr);
    if (!entries) {
        problem = firstComplaint();
    }
    return entries;
}

} // namespace

ToolConfig readToolConfig(const std::string& path)
{
    ToolConfig config;
    const Dictionary entries = load(path, config.problem);
    config.appTitle = textOf(entries, "DumpTool Config:AppTitle", config.appTitle.c_str());
    config.isScalarMode = numberOf(entries, "DumpTool Config:ScalarMode");
    config.fwbinPath = textOf(entries, "DumpTool Config:FwBin", "");
    HubMakerVid = static_cast<std::uint16_t>(numberOf(entries, "DumpTool Config:HubMakerVid"));
    fillSupportedIds(entries);
    return config;
}

} // namespace vornadel
