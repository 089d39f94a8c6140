#pragma once

#include "props/PropItem.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vornadel
{

/// The initial `curValue` of a property without options.
inline constexpr const char* kConstValue = "Const Value";

/// Larger files are not read.
inline constexpr std::uintmax_t kLargestPropertyFile = 1024UL * 1024UL;

/// Files with more lines, not counting blank lines and comments, are not read: the INI reader's
/// time grows with the square of the number of entries. All 255 sections with a heading and all
/// their 40 keys are 10,455 lines; the rest is room for keys that the tool does not know. A file of
/// this length is read within 0.1 s, and within 1 s on a machine ten times slower.
inline constexpr std::size_t kMostPropertyLines = 16'000;

/// The properties in a property file, in the order of their numbers.
///
/// `problem` is empty if the file was read. Otherwise it is one line for the console that says why
/// not, and the list is empty; the line begins with the path. That happens if the file is missing,
/// unreadable, not a regular file, larger than kLargestPropertyFile, longer than
/// kMostPropertyLines, no INI file, has a NUL before its end, or has a section named like one of a
/// property's keys.
///
/// The contents are not checked: numbers are decimal and cut to their width ("0x20" is 0, a mask of
/// 300 is 44); page, address and mask may be anything. Main thread only, because the INI reader
/// reports errors through a global.
PropItemList readPropertyFile(const std::string& path, std::string& problem);

} // namespace vornadel
