#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace vornadel::test
{

/// A place in memory if there is one, for tests that write many files.
inline std::filesystem::path placeInMemory()
{
    const std::filesystem::path memory = "/dev/shm";
    return ::access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
}

/// An empty temporary folder that every user can read; removed with its content at the end of the
/// test.
class TemporaryFolder
{
public:
    explicit TemporaryFolder(
        const std::filesystem::path& place = std::filesystem::temp_directory_path())
    {
        std::string name = (place / "vornadel-test-XXXXXX").string();
        m_path = ::mkdtemp(name.data()) != nullptr ? name : std::string();
        std::filesystem::permissions(m_path, std::filesystem::perms(0755));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(std::string_view name) const { return (m_path / name).string(); }
    std::string path() const { return m_path.string(); }

    /// Writes a file, with the folders in its name, and returns its path.
    std::string write(std::string_view name, std::string_view bytes) const
    {
        std::filesystem::create_directories((m_path / name).parent_path());
        std::ofstream(m_path / name, std::ios::binary) << bytes;
        return path(name);
    }
    std::string write(std::string_view name, const std::vector<std::uint8_t>& bytes) const
    {
        return write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    std::vector<std::uint8_t> read(std::string_view name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::string text(std::string_view name) const
    {
        const std::vector<std::uint8_t> bytes = read(name);
        return {bytes.begin(), bytes.end()};
    }

private:
    std::filesystem::path m_path;
};

} // namespace vornadel::test
