#pragma once

#include "props/PropertyFile.h"
#include "tests/support/WithoutPrivilege.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace vornadel::test
{

/// A temporary folder with property files.
class DefinitionFolder : public ::testing::Test
{
public:
    DefinitionFolder(const DefinitionFolder&) = delete;
    DefinitionFolder& operator=(const DefinitionFolder&) = delete;
    ~DefinitionFolder() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

protected:
    DefinitionFolder()
    {
        // In memory if possible, because some tests create many files.
        const bool memory = access("/dev/shm", W_OK) == 0;
        const std::filesystem::path place =
            memory ? "/dev/shm" : std::filesystem::temp_directory_path();
        std::string pattern = (place / "props_test-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        std::filesystem::permissions(m_folder, std::filesystem::perms(0755));
    }

    std::string path(const std::string& name = "Hub.INI") const
    {
        return (m_folder / name).string();
    }

    void write(std::string_view text, const std::string& name = "Hub.INI") const
    {
        std::filesystem::create_directories((m_folder / name).parent_path());
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }

    /// Reads Hub.INI. The library must print nothing itself.
    PropItemList readFile()
    {
        ::testing::internal::CaptureStderr();
        PropItemList items = readPropertyFile(path(), problem);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
        return items;
    }

    PropItemList read(std::string_view text)
    {
        write(text);
        return readFile();
    }

    std::filesystem::path m_folder;
    std::string problem = "left over"; ///< of the last read
};

} // namespace vornadel::test
