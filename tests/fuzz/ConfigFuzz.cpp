// Reads config.ini. An input is the file.

#include "config/ToolConfig.h"
#include "hub/SupportedIds.h"
#include "tests/fuzz/FuzzInput.h"

#include <iniparser/iniparser.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace vornadel::test
{

namespace
{

int saysNothing(const char* /*format*/, ...) { return 0; }

/// The list before a read; none of it may remain.
const SupportedIdEntry kEarlier{1, 9, 9, 9};

/// The text of a key, straight from the library; `missing` if it does not exist or is a section.
std::string plainText(const dictionary* entries, const std::string& key, const char* missing)
{
    const char* text =
        entries != nullptr ? iniparser_getstring(entries, key.c_str(), nullptr) : nullptr;
    return text != nullptr ? text : missing;
}

std::uint16_t plainId(const dictionary* entries, const char* kind, unsigned index)
{
    std::array<char, 64> key{};
    std::snprintf(key.data(), key.size(), "support vid pid:%s_%02x", kind, index);
    const long number = std::strtol(plainText(entries, key.data(), "0").c_str(), nullptr, 0);
    return static_cast<std::uint16_t>(number & 0xFFFF);
}

void requireListOf(const dictionary* entries)
{
    for (unsigned i = 0; i < kSupportedIdCount; ++i) {
        const SupportedIdEntry& entry = SupportedIdList.at(i);
        const SupportedIdEntry plain{1, plainId(entries, "vid", i), plainId(entries, "sspid", i),
                                     plainId(entries, "hspid", i)};
        const bool whole = plain.vid != 0 && plain.sspid != 0 && plain.hspid != 0;
        require(entry == (whole ? plain : SupportedIdEntry{}),
                "an entry is its triple, or nothing");
        require(!whole || (FindSupportedId(plain.vid, plain.sspid) &&
                           FindSupportedId(plain.vid, plain.hspid) &&
                           FindSupportedTriple(plain.vid, plain.sspid, plain.hspid)),
                "a hub in the list is a supported one");
    }
}

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel;
    using namespace vornadel::test;
    static const MemoryFile file;
    file.write({data, size});
    SupportedIdList.fill(kEarlier);
    const ToolConfig config = readToolConfig(file.path());
    require(config.problem.find('\n') == std::string::npos, "a problem is one line");

    std::unique_ptr<dictionary, decltype(&iniparser_freedict)> entries(nullptr, iniparser_freedict);
    if (size <= kLargestConfigFile) {
        iniparser_set_error_callback(saysNothing);
        entries.reset(iniparser_load(file.path().c_str()));
    }
    require(config.problem.empty() == (entries != nullptr),
            "a file that the INI reader can read is read, and no other");
    require(config.appTitle == plainText(entries.get(), "dumptool config:apptitle", "Vornadel"),
            "the title is the file's or ours");
    require(config.fwbinPath == plainText(entries.get(), "dumptool config:fwbin", ""),
            "so is the image");
    require(
        config.isScalarMode ==
            static_cast<std::int32_t>(std::strtol(
                plainText(entries.get(), "dumptool config:scalarmode", "0").c_str(), nullptr, 0)),
        "and the mode");
    requireListOf(entries.get());
    return 0;
}
