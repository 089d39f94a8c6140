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
/// their 40 keys are 10,455 lines.
inline constexpr std::size_t kMostPropertyLines = 11'000;

/// The properties in a property file, in the order of their numbers.
///
/// `problem` is empty if the file was read. Otherwise it is one line for the console that says why
/// not, and the list is empty. That happens if the file is missing, unreadable, not a regular file,
/// larger than kLargestPropertyFile, longer than kMostPropertyLines, no text or no INI file, or if
/// it has a section named like one of a property's keys.
///
/// The contents are not checked: numbers are decimal and cut to their width ("0x20" is 0, a mask of
/// 300 is 44); page, address and mask may be anything. Main thread only, because the INI reader
/// reports errors through a global.
PropItemList readPropertyFile(const std::string& path, std::string& problem);

} // namespace vornadel
