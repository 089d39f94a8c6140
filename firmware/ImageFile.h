#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vornadel
{

/// Writes a whole file or nothing: what is at `path` is either its old content or all the `size`
/// bytes, also when the power fails half-way.
///
/// False when it did not happen; `problem` says why in words that name the file, an existing file
/// is untouched and nothing is left beside it. What exists must be a regular file that may be
/// written; directories, devices and pipes are not touched, so nothing blocks on them. A symbolic
/// link stays one: the file it leads to is written, or made. A replaced file keeps its permissions
/// and, where the system lets us, its owner and group; its other hard links keep the old content.
/// May be called from any thread.
bool saveFileAtomically(const std::string& path, const std::uint8_t* bytes, std::size_t size,
                        std::string& problem);

/// Whether saveFileAtomically() could begin to write at `path` now; otherwise `problem` says why,
/// in its words. Leaves nothing behind. For asking before the work whose result is to be saved; the
/// disk may still be full afterwards.
bool canBeSaved(const std::string& path, std::string& problem);

} // namespace vornadel
