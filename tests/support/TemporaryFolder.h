#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel::test
{

/// An empty temporary folder; removed with its content at the end of the test.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name =
            (std::filesystem::temp_directory_path() / "vornadel-test-XXXXXX").string();
        m_path = ::mkdtemp(name.data()) != nullptr ? name : std::string();
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

    /// Writes a file and returns its path.
    template <typename Bytes>
    std::string write(std::string_view name, const Bytes& bytes) const
    {
        std::ofstream file(m_path / name, std::ios::binary);
        std::copy(bytes.begin(), bytes.end(), std::ostreambuf_iterator<char>(file));
        return path(name);
    }

    std::string write(std::string_view name, const char* text) const
    {
        return write(name, std::string_view(text));
    }

    std::vector<std::uint8_t> read(std::string_view name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// The content of a text file.
    std::string text(std::string_view name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    std::filesystem::path m_path;
};

} // namespace vornadel::test
