#pragma once

#include "props/PropItem.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vornadel
{

/// What `curValue` of a property without options starts as.
inline constexpr const char* kConstValue = "Const Value";

/// Larger files are not read.
inline constexpr std::uintmax_t kLargestPropertyFile = 1024UL * 1024UL;

/// Files with more lines that are neither blank nor comments are not read: the INI reader's time
/// grows with the square of the number of entries. All 255 sections with a heading and all their 40
/// keys are 10,455.
inline constexpr std::size_t kMostPropertyLines = 11'000;

/// The properties that a definition file describes, in the order of their numbers.
///
/// `problem` is empty when the file was read. Otherwise it is one line for the console that says
/// why it was not, and no property is returned: a file that is missing, unreadable, no regular
/// file, larger than kLargestPropertyFile, longer than kMostPropertyLines, no text, no INI file, or
/// that has a section named like one of a property's keys.
///
/// The contents are taken as they are: numbers are decimal and cut to their width ("0x20" is 0, a
/// mask of 300 is 44), and neither page, address nor mask is checked. Main thread only: the INI
/// reader tells what it dislikes by way of a global.
PropItemList readPropertyFile(const std::string& path, std::string& problem);

} // namespace vornadel
