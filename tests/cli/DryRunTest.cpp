#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::AllOf;
using testing::AnyOf;
using testing::Each;
using testing::EndsWith;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr std::uint8_t kOpenTimeCode = 0x02;
constexpr std::uint8_t kStatusCode = 0x09;
constexpr std::uint8_t kReadCode = 0xD8;

/// The new image on a hub with the old one.
class DryRun : public testing::Test
{
protected:
    void begin(const std::string& options, const std::string& kind = "online")
    {
        session = std::make_unique<Session>("latency=none" + options);
        session->hub().onRequest = [this](const ControlRequest& request) {
            requests.push_back(request.bRequest);
        };
        line =
            session->line("update", session->folder.write("new.bin", demoImage(kDemoVersion101)));
        line.dryRun = kind;
    }

    std::unique_ptr<Session> session;
    CommandLine line;
    std::vector<std::uint8_t> requests;
};

TEST_F(DryRun, TellsThePlanAndSendsOnlyReads)
{
    begin("");
    EXPECT_EQ(session->run(line), kExitSuccess) << session->err.str();
    EXPECT_EQ(session->out.str(),
              "dry run: nothing is changed\n"
              "hub:     sim-1, serial number SN0001\n"
              "lock:    free\n"
              "runs:    flash code 0100\n"
              "work:    save the flash, erase it, write " +
                  line.image +
                  " (32768 bytes, version 0101) and compare, and restart the hub\n"
                  "backup:  a new file in " +
                  session->backupFolder() +
                  "\n"
                  "flash:   it cannot be read without a restart, so what differs is not known\n");
    EXPECT_THAT(requests, Each(AnyOf(kOpenTimeCode, kStatusCode)));
    EXPECT_EQ(session->hub().runningCode(), HubCode::Flash);
    EXPECT_EQ(session->hub().flash(), demoImage());
}

TEST_F(DryRun, NamesWhatDiffersIfTheHubRunsItsRomCode)
{
    begin(",mode=rom");
    EXPECT_EQ(session->run(line), kExitSuccess) << session->err.str();
    EXPECT_THAT(session->out.str(), HasSubstr("\nruns:    ROM code 0100\n"));
    EXPECT_THAT(session->out.str(), HasSubstr("\ndiffers: version: 0100 -> 0101\n"));
    EXPECT_THAT(requests, Each(AnyOf(kOpenTimeCode, kStatusCode, kReadCode)));

    line.image = session->folder.write("old.bin", demoImage());
    line.noBackup = true;
    EXPECT_EQ(session->run(line), kExitSuccess);
    EXPECT_THAT(session->out.str(), HasSubstr("\nwork:    erase the flash, write "));
    EXPECT_THAT(session->out.str(), EndsWith("backup:  none (--no-backup)\n"
                                             "flash:   Already up to date: the flash holds this "
                                             "image, so nothing would be changed\n"));

    line = session->line("erase");
    line.dryRun = "online";
    EXPECT_EQ(session->run(line), kExitSuccess) << "and does not ask";
    EXPECT_THAT(session->out.str(),
                HasSubstr("\nwork:    save the flash, erase it, and restart the hub\n"));
    EXPECT_THAT(session->out.str(), HasSubstr("\ndiffers: "));
    EXPECT_EQ(session->hub().flash(), demoImage());
}

TEST_F(DryRun, SendsNothingOffline)
{
    begin(",mode=rom", "offline");
    EXPECT_EQ(session->run(line), kExitSuccess) << session->err.str();
    EXPECT_THAT(session->out.str(), AllOf(StartsWith("dry run: "), Not(HasSubstr("runs:"))));
    EXPECT_THAT(requests, IsEmpty());

    session->selector.containerId = "{00112233-4455-6677-8899-aabbccddeeff}";
    line.hub = session->selector;
    EXPECT_EQ(session->run(line), kExitUsage);
    EXPECT_EQ(session->hub().requestCount(), 0U);
    line.dryRun = "nonsense";
    EXPECT_EQ(session->run(line), kExitUsage);
    EXPECT_EQ(session->told(), "--dry-run stands alone, or is --dry-run=offline\n");
}

TEST_F(DryRun, FailsAsTheFlowWould)
{
    for (const char* kind : {"online", "offline"}) {
        begin("", kind);
        SCOPED_TRACE(kind);
        const CommandLine fit = line;
        line.image = session->folder.path("missing.bin");
        EXPECT_EQ(session->run(line), kExitImageRefused);
        line = fit;
        line.backupFolder = session->folder.write("file", "") + "/backups";
        EXPECT_EQ(session->run(line), kExitFailure);
        line = fit;
        const auto other = session->occupy("sim-1");
        EXPECT_EQ(session->run(line), kExitBusy);
        EXPECT_THAT(requests, IsEmpty());
    }
    begin(",mode=rom,fault=stall@read#3");
    EXPECT_EQ(session->run(line), kExitTransferFailed);
    EXPECT_THAT(session->out.str(), Not(HasSubstr("dry run")));
}

} // namespace

} // namespace vornadel::test
