#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

/// The file that keeps the simulated flash between runs. A lock file beside it (its name with
/// ".lock" appended) makes sure that only one program at a time has the hub. While it is locked, it
/// contains the process id of that program. Not thread-safe.
class FlashFile
{
public:
    /// Opens the file `path`. If it does not exist, creates it with `initial`, and its folders too.
    /// Null and a sentence in `error` unless it is a regular file of exactly 32768 bytes that can
    /// be read and replaced. A file of another size is left unchanged.
    static std::unique_ptr<FlashFile> openOrCreate(const std::string& path,
                                                   const std::vector<std::uint8_t>& initial,
                                                   std::string& error);

    FlashFile(const FlashFile&) = delete;
    FlashFile& operator=(const FlashFile&) = delete;
    ~FlashFile();

    /// Reads the whole flash. `bytes` is valid only if the result is true.
    bool load(std::vector<std::uint8_t>& bytes, std::string& error) const;
    /// Replaces the file atomically: after a crash it holds the old or the new flash, never a mix.
    bool store(const std::vector<std::uint8_t>& bytes, std::string& error) const;

    /// Takes the lock without waiting; false when somebody has it, in this program or another.
    bool lock();
    void unlock(); ///< harmless without the lock
    bool locked() const { return m_lock >= 0; }
    /// The process that has the lock; 0 if nobody has it, or if the process is not known.
    std::int64_t owner() const;

private:
    explicit FlashFile(std::string path);

    bool lock(int operation); ///< flock() with this operation; sets errno
    bool fill(const std::vector<std::uint8_t>& initial, std::string& error);

    std::string m_path; // symbolic links resolved: all names of one file share its lock
    int m_lock = -1;
};

/// The default file: vornadel/simulated-hub.bin in $XDG_STATE_HOME, or in ~/.local/state. Empty
/// when the environment names neither folder.
std::string defaultFlashFile();

} // namespace vornadel
