#include "config/ToolConfig.h"

#include "hub/SupportedIds.h"

#include <iniparser/iniparser.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
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

/// The text of a key. A key that is the name of a section has no text and counts as missing.
std::string textOf(const Dictionary& entries, const std::string& key, const char* missing)
{
    const char* text = entries ? iniparser_getstring(entries.get(), key.c_str(), missing) : missing;
    return text != nullptr ? text : missing;
}

/// The number of a key, 0 when missing. Not by the library's own getter: that one reads through a
/// null pointer when a section is named like the key.
std::int32_t numberOf(const Dictionary& entries, const std::string& key)
{
    return static_cast<std::int32_t>(std::strtol(textOf(entries, key, "0").c_str(), nullptr, 0));
}

/// "Support Vid Pid:VID_0A" and its like.
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

/// Why the file must not be handed to the INI reader; empty when it may be. A missing file may: the
/// reader says so.
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
    if (fs::file_size(path, failed) > kLargestConfigFile && !failed) {
        return path + " is larger than 64 KiB and was not read";
    }
    return {};
}

} // namespace

ToolConfig readToolConfig(const std::string& path)
{
    ToolConfig config;
    config.problem = problemWith(path);
    const Dictionary entries(config.problem.empty() ? iniparser_load(path.c_str()) : nullptr);
    config.appTitle = textOf(entries, "DumpTool Config:AppTitle", "Vornadel");
    config.isScalarMode = numberOf(entries, "DumpTool Config:ScalarMode");
    config.fwbinPath = textOf(entries, "DumpTool Config:FwBin", "");
    HubMakerVid = static_cast<std::uint16_t>(numberOf(entries, "DumpTool Config:HubMakerVid"));
    fillSupportedIds(entries);
    return config;
}

} // namespace vornadel
