#include "cli/Backups.h"
#include "hub/HubTransport.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"
#include "tests/support/FullDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr std::uint8_t kEraseCode = 0xE8;

/// A command on a hub that runs its firmware and has the old image.
class SavedFlash : public testing::Test
{
protected:
    SavedFlash()
    {
        session.hub().onRequest = [this](const ControlRequest& request) {
            erases += request.bRequest == kEraseCode ? 1 : 0;
        };
        line = session.line("update", session.folder.write("new.bin", kNew));
    }

    /// The contents of the backups, in order of time.
    std::vector<std::vector<std::uint8_t>> backups() const
    {
        std::vector<std::string> paths;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(session.backupFolder(), none)) {
            paths.push_back(entry.path().string());
        }
        std::sort(paths.begin(), paths.end());
        std::vector<std::vector<std::uint8_t>> contents(paths.size());
        for (std::size_t i = 0; i < paths.size(); ++i) {
            std::string problem;
            EXPECT_TRUE(readBackup(paths[i], contents[i], problem)) << problem;
        }
        return contents;
    }

    const std::vector<std::uint8_t> kOld = demoImage();
    const std::vector<std::uint8_t> kNew = demoImage(kDemoVersion101);
    const std::vector<std::uint8_t> kBlank = std::vector<std::uint8_t>(kOld.size(), 0xFF);
    Session session{"latency=none"};
    CommandLine line;
    int erases = 0;
};

TEST_F(SavedFlash, IsThereBeforeTheErase)
{
    std::vector<std::vector<std::uint8_t>> atErase;
    session.hub().onRequest = [&](const ControlRequest& request) {
        if (request.bRequest == kEraseCode) {
            atErase = backups();
        }
    };
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_THAT(atErase, ElementsAre(kOld));
    EXPECT_THAT(backups(), ElementsAre(kOld));
    EXPECT_THAT(session.out.str(), HasSubstr("\nSaved the old flash to " + session.backupFolder() +
                                             "/sim-1_SN0001_1970"));
    EXPECT_EQ(session.hub().flash(), kNew);

    line = session.line("erase");
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_THAT(backups(), ElementsAre(kOld, kNew));
}

TEST_F(SavedFlash, IsNotChangedIfItCannotBeSaved)
{
    {
        const FullDisk full(kOld.size() - 1);
        EXPECT_EQ(session.run(line), kExitFailure);
    }
    EXPECT_THAT(session.told(),
                HasSubstr("\nthe flash could not be saved: " + session.backupFolder() + "/sim-1_"));
    EXPECT_THAT(session.told(), HasSubstr(": File too large\n"));
    EXPECT_EQ(erases, 0);
    EXPECT_EQ(session.hub().flash(), kOld);
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash) << "it was sent back";
    EXPECT_THAT(backups(), IsEmpty());

    const unsigned requests = session.hub().requestCount();
    line.backupFolder = session.folder.write("file", "") + "/backups";
    line.typed = {"update", "--backup-dir", line.backupFolder, "--backup-dir=x", "my\x1b\xff'.bin"};
    EXPECT_EQ(session.run(line), kExitFailure);
    EXPECT_THAT(session.err.str(), HasSubstr("\n  next: vornadelctl --path sim-1 update "
                                             "$'my\\033\\377\\'.bin' --backup-dir .\n"));
    EXPECT_EQ(session.told(),
              "no backup can be saved: " + line.backupFolder + ": Not a directory\n");
    EXPECT_EQ(session.hub().requestCount(), requests) << "it was not even restarted";
}

TEST_F(SavedFlash, IsNotSavedOnRequestOrIfItIsBlank)
{
    session.hub().setFlash(kBlank);
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_THAT(session.out.str(),
                HasSubstr("\nThe flash is blank, so there is nothing to save\n"));
    EXPECT_THAT(backups(), IsEmpty());

    line.image = session.folder.write("old.bin", kOld);
    line.noBackup = true;
    session.variables.clear(); // nothing says where backups could be
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_THAT(backups(), IsEmpty());
    EXPECT_EQ(session.hub().flash(), kOld);
}

TEST_F(SavedFlash, IsLeftAloneIfItHoldsTheImageAlready)
{
    line.image = session.folder.write("old.bin", kOld);
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_THAT(session.out.str(), HasSubstr("\nAlready up to date: the flash holds this image\n"));
    EXPECT_EQ(erases, 0);
    EXPECT_EQ(session.hub().runningCode(), HubCode::Flash);

    line.alwaysWrite = true;
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_EQ(erases, 1);
    EXPECT_THAT(backups(), ElementsAre(kOld));

    line = session.line("erase");
    session.hub().setFlash(kBlank);
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_THAT(session.out.str(), HasSubstr("\nThe flash is blank already\n"));
    EXPECT_EQ(erases, 1);
}

TEST_F(SavedFlash, HoldsAShortImageOnlyIfTheRestIsBlank)
{
    // The end of the image, with the block.
    const std::vector<std::uint8_t> shortImage(kOld.end() - 0x400, kOld.end());
    line.image = session.folder.write("short.bin", shortImage);
    std::vector<std::uint8_t> flash = kBlank;
    std::copy(shortImage.begin(), shortImage.end(), flash.begin());
    flash.back() = 0;
    session.hub().setFlash(flash);
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_EQ(erases, 1);
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_EQ(erases, 1) << "now it does";
}

TEST_F(SavedFlash, IsErasedOnlyIfSomebodyAgrees)
{
    line = session.line("erase");
    line.yes = false;
    line.typed = {"erase"};
    EXPECT_EQ(session.run(line), kExitWouldAsk);
    EXPECT_EQ(session.told(), "erase asks first, and cannot ask here\n");
    EXPECT_THAT(session.err.str(), HasSubstr("\n  next: vornadelctl --path sim-1 erase --yes\n"));

    session.env.inIsTerminal = true;
    session.in.str("y\n");
    EXPECT_EQ(session.run(line), kExitWouldAsk) << "nobody would see the question";
    session.env.errIsTerminal = true;
    session.variables["NO_COLOR"] = "1";
    for (const char* answer : {"", "\n", "n\n", "yesterday\n", " y\n"}) {
        session.in.clear();
        session.in.str(answer);
        EXPECT_EQ(session.run(line), kExitWouldAsk) << answer;
        EXPECT_THAT(session.told(), HasSubstr("Erase the whole flash of the hub at sim-1?"));
        EXPECT_THAT(session.told(), HasSubstr("not erased\n"));
    }
    line.json = true; // a program reads, and cannot answer
    EXPECT_EQ(session.run(line), kExitWouldAsk);
    line.json = false;
    EXPECT_EQ(session.hub().requestCount(), 0U);

    session.in.clear();
    session.in.str("y\n");
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_EQ(session.hub().flash(), kBlank);
}

TEST_F(SavedFlash, StaysIfASignalCameBeforeTheQuestion)
{
    line = session.line("erase");
    line.yes = false;
    session.env.inIsTerminal = true;
    session.env.errIsTerminal = true;
    session.in.str("y\n");
    session.stop.ask();
    EXPECT_EQ(session.run(line), kExitWouldAsk);
    EXPECT_THAT(session.err.str(), Not(HasSubstr("?")));
}

} // namespace

} // namespace vornadel::test
