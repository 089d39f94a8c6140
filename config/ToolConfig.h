#pragma once

#include <cstdint>
#include <string>

namespace vornadel
{

/// The settings in config.ini other than the supported ids.
struct ToolConfig {
    std::string appTitle = "Vornadel"; ///< "DumpTool Config:AppTitle"
    std::int32_t isScalarMode = 0;     ///< "DumpTool Config:ScalarMode"; only 1 means scalar mode
    /// "DumpTool Config:FwBin", relative to the resource directory; may be empty
    std::string fwbinPath;

    /// Why the file was not used, in one line that names it: missing, unreadable, no regular file,
    /// too large, or no INI file. Empty when it was read.
    std::string problem;
};

/// Larger files are not read, because the INI reader's time grows with the square of the number of
/// lines. 64 triples with a comment each take a tenth of this size.
inline constexpr std::uintmax_t kLargestConfigFile = 64UL * 1024UL;

/// Reads config.ini, fills `SupportedIdList` from its section "Support Vid Pid" and `HubMakerVid`
/// from "DumpTool Config:HubMakerVid". Prints nothing. If the file cannot be read, the result is
/// the defaults, an empty list, no maker's id and a `problem`.
///
/// Numbers are read with base detection (0x.. hexadecimal, 0.. octal) and keep their low 16 bits. A
/// triple counts only if all three of its numbers are then non-zero.
ToolConfig readToolConfig(const std::string& path);

} // namespace vornadel
