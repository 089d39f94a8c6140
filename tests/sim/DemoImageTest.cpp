#include "standins/sim/DemoImage.h"

#include "tests/sim/HubBench.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace vornadel::test
{
namespace
{

Bytes contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(DemoImage, EqualsTheFilesInExamples)
{
    EXPECT_EQ(contentOf(VORNADEL_EXAMPLES "/demo-1.00.bin"), demoImage(0x0100));
    EXPECT_EQ(contentOf(VORNADEL_EXAMPLES "/demo-1.01.bin"), demoImage(0x0101));
}

} // namespace
} // namespace vornadel::test
