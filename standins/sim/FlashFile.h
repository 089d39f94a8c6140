#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

/// The file that keeps the simulated flash between runs, and the lock file beside it (its name with
/// ".lock" appended), by which only one program at a time has the hub open. Not thread-safe.
class FlashFile
{
public:
    /// The file `path`. One that does not exist is created with `initial` in it, its folders too.
    /// Null and a sentence in `error` unless it is a regular file of exactly 32768 bytes that can
    /// be read and replaced. A file of another size is left as it is.
    static std::unique_ptr<FlashFile> openOrCreate(const std::string& path,
                                                   const std::vector<std::uint8_t>& initial,
                                                   std::string& error);

    FlashFile(const FlashFile&) = delete;
    FlashFile& operator=(const FlashFile&) = delete;
    ~FlashFile();

    /// Reads the whole flash. `bytes` holds only on true.
    bool load(std::vector<std::uint8_t>& bytes, std::string& error) const;
    /// Replaces the file in one step: after a crash it holds the old or the new flash, never a
    /// mixture.
    bool store(const std::vector<std::uint8_t>& bytes, std::string& error) const;

    /// Takes the lock without waiting; false when somebody has it, in this program or another.
    bool lock();
    void unlock(); ///< harmless without the lock
    bool locked() const { return m_lock >= 0; }

private:
    explicit FlashFile(std::string path);

    bool lock(int operation); ///< as flock() takes it; errno says why not
    bool fill(const std::vector<std::uint8_t>& initial, std::string& error);

    std::string m_path; // symbolic links resolved: all names of one file share its lock
    int m_lock = -1;
};

/// The default file: vornadel/simulated-hub.bin in $XDG_STATE_HOME, or in ~/.local/state. Empty
/// when the environment names neither folder.
std::string defaultFlashFile();

} // namespace vornadel
