#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <sys/types.h>

namespace vornadel
{

/// Writes a whole file or nothing: what is at `path` is either its old content or all of `bytes`,
/// also when the power fails half-way.
///
/// On failure, returns false; `problem` names the file and says why, an existing file is untouched
/// and nothing is left beside it. What exists must be a regular file that may be written; folders,
/// devices and pipes are never opened, so nothing blocks on them. A symbolic link stays one: the
/// file it leads to is written, or created. A replaced file keeps its permissions and, where the
/// system allows it, its owner and group; until it is complete, nobody else can read the new
/// content. Its other hard links keep the old content. May be called from any thread.
bool saveWholeFile(const std::string& path, std::span<const std::uint8_t> bytes,
                   std::string& problem);

/// Creates a whole file or nothing, also when the power fails half-way, and never replaces what is
/// there: if anything has this name, even a link that leads nowhere, it fails with "File exists".
/// On failure, `problem` names the file and says why, and nothing is left. `permissions` less the
/// umask. May be called from any thread.
///
/// On a file system without hard links, two callers that create the same file at the same moment
/// may both succeed; the file is then that of one of them.
bool saveNewFile(const std::string& path, std::span<const std::uint8_t> bytes, std::string& problem,
                 mode_t permissions = 0666);

/// Whether saveWholeFile() could begin to write at `path` now; otherwise `problem` says why, in
/// the same words. Leaves nothing behind. For a check before the work whose result is to be saved;
/// the disk may still fill up meanwhile.
bool canBeSaved(const std::string& path, std::string& problem);

} // namespace vornadel
