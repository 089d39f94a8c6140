#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::EndsWith;
using testing::HasSubstr;

const std::vector<std::uint8_t> kBlank(kSimulatedFlashSize, 0xFF);

class Restore : public testing::Test
{
protected:
    int restore(const std::string& file = {}) { return session.run(session.line("restore", file)); }

    Session session{"latency=none"};
};

TEST_F(Restore, TakesTheNewestBackupOfTheHub)
{
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    ASSERT_EQ(session.update(image), kExitSuccess);
    ASSERT_EQ(restore(), kExitSuccess) << session.err.str();
    EXPECT_EQ(session.hub().flash(), demoImage());
    EXPECT_THAT(session.out.str(), HasSubstr("Restore FW Success\n"));
    EXPECT_EQ(restore(), kExitSuccess) << "what the restore itself has saved";
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

TEST_F(Restore, NamesTheBackupInTheNextCommandIfItFails)
{
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    ASSERT_EQ(session.update(image), kExitSuccess);
    const std::string backup = session.onlyBackup();
    session.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Write});
    CommandLine line = session.line("restore");
    line.typed = {"restore"};
    EXPECT_EQ(session.run(line), kExitTransferFailed);
    EXPECT_THAT(session.err.str(), HasSubstr("vornadelctl --path sim-1 restore " + backup));
}

TEST_F(Restore, NamesTheBackupOfAHubThatHadAnotherSerialNumber)
{
    std::vector<std::uint8_t> image = demoImage(kDemoVersion101);
    const std::string_view serial = "SN0001"; // where the strings are, and where a copy may be
    for (auto at = image.begin();
         (at = std::search(at, image.end(), serial.begin(), serial.end())) != image.end(); ++at) {
        *at = 'X';
    }
    ASSERT_EQ(session.update(session.folder.write("new.bin", image)), kExitSuccess)
        << session.err.str();
    CommandLine line = session.line("restore");
    line.typed = {"restore"};
    EXPECT_EQ(session.run(line), kExitImageRefused) << "it may be another hub";
    EXPECT_THAT(session.err.str(),
                HasSubstr("\n  next: vornadelctl --path sim-1 restore " + session.onlyBackup()));
}

TEST_F(Restore, WritesContentThatIsNoImage)
{
    ASSERT_EQ(restore(session.folder.write("blank.bin", kBlank)), kExitSuccess)
        << session.err.str();
    EXPECT_EQ(session.hub().flash(), kBlank);
    EXPECT_THAT(session.out.str(), EndsWith("The hub runs its ROM code, because what was restored "
                                            "is no firmware\n"));
}

TEST_F(Restore, RefusesWhatItCannotTrust)
{
    EXPECT_EQ(restore(), kExitImageRefused) << "no backup";
    EXPECT_THAT(session.err.str(), HasSubstr("[no-backup]"));
    EXPECT_EQ(restore(session.folder.write("long.bin", std::vector<std::uint8_t>(32769))),
              kExitImageRefused);
    EXPECT_EQ(restore(session.folder.path("none.bin")), kExitImageRefused);

    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    ASSERT_EQ(session.update(image), kExitSuccess);
    const std::string backup = session.onlyBackup();
    std::filesystem::permissions(backup, std::filesystem::perms(0600));
    std::ofstream(backup, std::ios::binary | std::ios::app) << "more";
    EXPECT_EQ(restore(), kExitImageRefused) << "damaged";
    EXPECT_EQ(session.hub().flash(), demoImage(kDemoVersion101));
}

} // namespace
} // namespace vornadel::test
