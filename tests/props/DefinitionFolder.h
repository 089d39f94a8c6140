#pragma once

#include "props/PropertyFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace vornadel::test
{

/// A temporary folder with property files.
class DefinitionFolder : public ::testing::Test
{
protected:
    std::string path(const std::string& name = "Hub.INI") const { return m_folder.path(name); }

    void write(std::string_view text, const std::string& name = "Hub.INI") const
    {
        m_folder.write(name, text);
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

    const TemporaryFolder m_folder{placeInMemory()};
    std::string problem = "left over"; ///< of the last read
};

} // namespace vornadel::test
