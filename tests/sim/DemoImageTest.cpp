#include "standins/sim/DemoImage.h"

#include "standins/sim/NorFlash.h"
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

TEST(DemoImage, CarriesVersionAndIds)
{
    for (const std::uint16_t version : {std::uint16_t{0x0100}, std::uint16_t{0x0101}}) {
        const Bytes image = demoImage(version);
        ASSERT_EQ(image.size(), kFlashSize);
        const auto identity = findFlashIdentity(image);
        ASSERT_TRUE(identity);
        EXPECT_EQ(identity->version, version);
        EXPECT_EQ(identity->vendorId, 0x1209);
        EXPECT_EQ(identity->superSpeedId, 0x0001);
        EXPECT_EQ(identity->highSpeedId, 0x0002);
    }
}

} // namespace
} // namespace vornadel::test
