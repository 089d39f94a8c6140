#include "flows/ScalarUpdate.h"

#include "base/LastError.h"
#include "flows/FirmwareUpdate.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;
using Kind = RecordingReporter::Kind;

class ScalarUpdate : public testing::Test
{
protected:
    bool update(const std::string& fwbinPath)
    {
        m_taken = loadConfiguredImage(m_image, m_resources.path(), fwbinPath);
        return updateFirmware(m_image, "shown name", m_reporter);
    }

    const TemporaryFolder m_resources;
    SimulatedSetup m_setup;
    FwImage m_image;
    bool m_taken = false; // the configured image is the one in m_image
    RecordingReporter m_reporter;
};

TEST_F(ScalarUpdate, WritesTheConfiguredImageOfTheResourceFolder)
{
    m_resources.write("sub/new.bin", demoImage(kDemoVersion101));
    EXPECT_TRUE(update("sub/new.bin"));
    EXPECT_TRUE(m_taken);
    EXPECT_EQ(m_setup.hub().flash(), demoImage(kDemoVersion101));
    EXPECT_EQ(m_reporter.texts(Kind::Blue).front(), "FW:shown name(size=32768)\n\n");
}

TEST_F(ScalarUpdate, TakesAPathFromTheRootForOneInTheResourceFolder)
{
    m_resources.write("new.bin", demoImage(kDemoVersion101));
    EXPECT_TRUE(update("/new.bin"));
    EXPECT_EQ(m_setup.hub().flash(), demoImage(kDemoVersion101));
}

TEST_F(ScalarUpdate, WritesWhatIsLoadedIfNoneIsConfiguredOrItIsMissing)
{
    for (const char* const fwbinPath : {"", "missing.bin"}) {
        const std::vector<std::uint8_t> bytes =
            demoImage(*fwbinPath == '\0' ? kDemoVersion101 : kDemoVersion100);
        ASSERT_TRUE(FwImage_Parse(m_image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
        EXPECT_TRUE(update(fwbinPath));
        EXPECT_FALSE(m_taken);
        EXPECT_EQ(m_setup.hub().flash(), bytes);
    }
}

TEST_F(ScalarUpdate, SendsNothingIfNoneIsConfiguredAndWhatWasChosenIsNone)
{
    const std::vector<std::uint8_t> none(1024, 0xFF);
    ASSERT_FALSE(FwImage_Parse(m_image, none.data(), static_cast<std::int32_t>(none.size())));
    EXPECT_FALSE(update(""));
    EXPECT_FALSE(m_taken);
    EXPECT_EQ(m_setup.hub().requestCount(), 0U);
}

TEST_F(ScalarUpdate, WithAnImageThatIsMissingSendsNothing)
{
    EXPECT_FALSE(update("missing.bin"));
    EXPECT_FALSE(m_taken);
    EXPECT_THAT(m_reporter.texts(Kind::Red),
                ElementsAre("Wrong firmware file\n", "Update FW Fail\n"));
    EXPECT_EQ(LastError, 6);
    EXPECT_EQ(m_setup.hub().requestCount(), 0U);
}

TEST_F(ScalarUpdate, WithAnImageThatIsNoneSendsNothingThoughOneWasLoadedBefore)
{
    const std::vector<std::uint8_t> bytes = demoImage();
    ASSERT_TRUE(FwImage_Parse(m_image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    m_resources.write("none.bin", std::vector<std::uint8_t>(1024, 0xFF));
    EXPECT_FALSE(update("none.bin"));
    EXPECT_TRUE(m_taken) << "its name belongs to the failure";
    EXPECT_THAT(m_reporter.texts(Kind::Red),
                ElementsAre("Wrong firmware file\n", "Update FW Fail\n"));
    EXPECT_EQ(m_setup.hub().requestCount(), 0U);
}

} // namespace

} // namespace vornadel::test
