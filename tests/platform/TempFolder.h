#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace vornadel::test
{

/// A temporary folder, removed with the object.
class TempFolder
{
public:
    TempFolder()
    {
        std::string name =
            (std::filesystem::temp_directory_path() / "vornadel-test-XXXXXX").string();
        if (mkdtemp(name.data()) != nullptr) {
            m_path = name;
        }
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(std::string_view name) const { return (m_path / name).string(); }

    std::string write(std::string_view name, std::string_view text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    std::string read(std::string_view name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_path;
};

} // namespace vornadel::test
