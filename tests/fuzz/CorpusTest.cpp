// Runs every input of a target's corpus without the fuzzer, in every preset.

#include "tests/fuzz/FuzzInput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

TEST(CORPUS_NAME, IsWorkedOffWithoutADefect)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(CORPUS)) {
        files.push_back(entry.path());
    }
    ASSERT_FALSE(files.empty());
    for (const auto& file : files) {
        // If the process ends here, this file is the culprit.
        std::printf("%s\n", file.filename().c_str());
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
}

} // namespace

} // namespace vornadel::test
