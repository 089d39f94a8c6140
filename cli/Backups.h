#pragma once

#include "cli/Environment.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vornadel
{

struct CommandLine;

/// Whose flash a backup holds.
struct BackupOwner {
    std::string place{};        ///< as UsbPlace::text() writes it
    std::string serialNumber{}; ///< empty: the hub has none
};

/// What the name of a backup tells: PLACE_SERIAL_TIME_HASH.bin, where the time is in UTC, the hash
/// is the SHA-256 of the content, and a dash stands for a place or serial number that is not known.
/// In the first two, every byte but A-Z, a-z, 0-9, "." and "-" is written as "%" and two hex
/// digits, the slash of a place as "+".
struct BackupName {
    std::string place{};
    std::string serialNumber{};
    std::string time{}; ///< "20261122T134715.123Z", so texts in order are times in order
    std::string hash{}; ///< 64 lower-case hex digits

    std::string text() const;
    /// Nothing if a file name is not of this form.
    static std::optional<BackupName> in(const std::string& fileName);
};

/// The folder in which the contents of flashes are kept, each in a file of its own that is never
/// changed. The path may be empty: then every operation fails.
class Backups
{
public:
    explicit Backups(std::string folder);

    const std::string& folder() const { return m_folder; }

    /// Whether save() could begin to write now; otherwise `problem` says why. Creates the folder.
    bool canSave(std::string& problem) const;

    /// Saves a whole file that only the user can read, or nothing, and returns its path. Creates
    /// the folder. On failure the path is empty, and `problem` says why.
    std::string save(const BackupOwner& owner, Environment::Time now,
                     std::span<const std::uint8_t> flash, std::string& problem) const;

    /// The path of the newest backup of a hub: that with its serial number, wherever the hub was,
    /// or for a hub without one, that of its place. Empty if there is none.
    std::string newestOf(const BackupOwner& owner) const;

private:
    std::string m_folder;
};

/// The backups that the command line asks for: in --backup-dir, or in the usual folder.
Backups backupsOf(const CommandLine& line, const Environment& env);

/// Reads a file that was saved as a backup. If its name is that of a backup, the content must have
/// the hash in it. On failure, false; `problem` names the file and says why.
bool readBackup(const std::string& path, std::vector<std::uint8_t>& bytes, std::string& problem);

} // namespace vornadel
