// Runs every input of a target's corpus without the fuzzer, in every preset.

#include "tests/fuzz/FuzzInput.h"

#include <gtest/gtest.h>

#include <algorithm>
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

namespace fs = std::filesystem;

std::vector<fs::path> corpus()
{
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(CORPUS)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

TEST(CORPUS_NAME, IsWorkedOffWithoutADefect)
{
    const std::vector<fs::path> files = corpus();
    ASSERT_FALSE(files.empty());
    for (const fs::path& file : files) {
        std::printf("%s\n",
                    file.filename().c_str()); // if the process ends here, this file is the culprit
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
}

TEST(CORPUS_NAME, StandsBesideAnEmptyInput)
{
    const std::uint8_t nothing = 0;
    EXPECT_EQ(LLVMFuzzerTestOneInput(&nothing, 0), 0);
    EXPECT_EQ(LLVMFuzzerTestOneInput(nullptr, 0), 0);
}

} // namespace

} // namespace vornadel::test
