#include "cli/EventStream.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/EventCheck.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <chrono>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::HasSubstr;
using testing::IsEmpty;

/// Runs a verb with --json; the last event.
Json resultOf(Session& session, std::string_view verb, const std::string& file = {})
{
    CommandLine line = session.line(verb, file);
    line.json = true;
    line.typed = {"--json", std::string(verb)};
    if (!file.empty()) {
        line.typed.push_back(file);
    }
    const int status = session.run(line);
    EXPECT_THAT(session.err.str(), IsEmpty());
    const std::vector<Json> events = checkedEvents(session.out.str());
    if (events.empty()) {
        return {};
    }
    EXPECT_EQ(events.back()["exit"], status);
    return events.back();
}

TEST(Events, TellTimeInUtcWithMilliseconds)
{
    using namespace std::chrono_literals;
    EXPECT_EQ(utcText(Environment::Time(0ms)), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(utcText(Environment::Time(951'782'400s + 7ms)), "2000-02-29T00:00:00.007Z");
}

TEST(Events, ClaimNothingOfAFlashWhoseUpdateEndedInAnException)
{
    Session session("latency=none");
    const auto now = session.env.now;
    bool thrown = false;
    session.env.now = [&] {
        if (!thrown && session.hub().flash()[0] == 0xFF) { // erased
            thrown = true;
            throw std::runtime_error("no memory");
        }
        return now();
    };
    const Json result =
        resultOf(session, "update", session.folder.write("new.bin", demoImage(kDemoVersion101)));
    EXPECT_TRUE(thrown);
    EXPECT_EQ(result["id"], "internal");
    EXPECT_EQ(result["changed"], true);
    EXPECT_EQ(result["flash"], "incomplete");
    EXPECT_EQ(result["hub"], nullptr);
}

TEST(Events, OfAnUpdateAreItsStepsAndItsResult)
{
    Session session("latency=none");
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    const Json result = resultOf(session, "update", image);
    EXPECT_EQ(result["path"], "sim-1");
    EXPECT_EQ(result["ok"], true);
    EXPECT_EQ(result["changed"], true);
    EXPECT_EQ(result["flash"], "verified");
    EXPECT_EQ(result["hub"], "flash");
    EXPECT_EQ(result["version"], "0101");
    EXPECT_EQ(result["serial"], "SN0001");
    EXPECT_GT(result["ms"], 0);

    std::string steps;
    int done = 0;
    const std::vector<Json> events = checkedEvents(session.out.str());
    EXPECT_EQ(events[0]["verb"], "update");
    EXPECT_EQ(events[0]["words"], Json({"--json", "update", image}));
    for (const Json& event : events) {
        if (event["event"] == "step") {
            steps += event["step"].get<std::string>() + ' ';
        } else if (event.contains("done") && event["step"] == "write") {
            EXPECT_EQ(event["total"], 32768);
            done = event["done"];
        }
    }
    EXPECT_THAT(steps, HasSubstr("open "));
    EXPECT_THAT(steps, HasSubstr("erase write read verify restart "));
    EXPECT_EQ(done, 32768);
}

TEST(Events, NameWhatDiffers)
{
    Session session("latency=none,mode=rom");
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    const Json verified = resultOf(session, "verify", image);
    EXPECT_EQ(verified["differences"]["fields"],
              Json({{{"name", "version"}, {"before", "0101"}, {"after", "0100"}}}));
    session.hub().setFlash(demoImage(kDemoVersion101));
    EXPECT_FALSE(resultOf(session, "verify", image).contains("differences"));
}

TEST(Events, EndWithOneResultAlsoIfNoFlowBegins)
{
    const struct {
        std::string hub;
        std::string verb;
        std::string file;
        std::string id;
        std::string next;
    } rows[] = {
        {"hubs=2", "erase", "", "several-hubs", "vornadelctl --path sim-1 --json erase"},
        {"ids=1234:5678:9abc", "erase", "", "no-hub", "vornadelctl list --all"},
        {"latency=none", "update", "/nowhere", "image-unreadable", "ls -ld /nowhere"},
        {"latency=none", "read", "/nowhere/else", "file-not-saved", "ls -ld /nowhere"},
    };
    for (const auto& row : rows) {
        Session session(row.hub);
        const Json result = resultOf(session, row.verb, row.file);
        EXPECT_EQ(result["id"], row.id);
        EXPECT_EQ(result["next"], row.next);
        EXPECT_EQ(result["flash"], "untouched");
        EXPECT_EQ(result["hub"], nullptr);
        EXPECT_EQ(session.hub().requestCount(), 0U);
    }
}

TEST(Events, EndWithOneResultAlsoIfTheCommandLineIsWrong)
{
    Session session("latency=none");
    const char* const words[] = {"vornadelctl", "--json", "--path", "sim-1", "erase", "all"};
    CommandLine line;
    EXPECT_EQ(parseCommandLine(std::size(words), words, line, session.out, session.err),
              std::nullopt);
    EXPECT_EQ(session.run(line), kExitUsage);
    const std::vector<Json> events = checkedEvents(session.out.str());
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back()["id"], "usage");
    EXPECT_EQ(events.back()["exit"], kExitUsage);
    EXPECT_EQ(session.hub().requestCount(), 0U);
}

TEST(Events, OfAFailedFlowTellTheFailureOnceAndTheHubsState)
{
    Session session("latency=none,fault=never@2");
    const std::string image = session.folder.write("new.bin", demoImage(kDemoVersion101));
    const Json result = resultOf(session, "update", image);
    EXPECT_EQ(result["id"], "not-back");
    EXPECT_EQ(result["flash"], "verified");
    EXPECT_EQ(result["hub"], "absent");
    EXPECT_EQ(result["next"], "vornadelctl --path sim-1 info");
    int errors = 0;
    bool waited = false;
    for (const Json& event : checkedEvents(session.out.str())) {
        errors += event["event"] == "message" && event["level"] == "error" ? 1 : 0;
        waited = waited || event.contains("waited");
    }
    EXPECT_EQ(errors, 1);
    EXPECT_TRUE(waited);
}

TEST(Events, TellTheExitStatusAfterASignal)
{
    Session session("latency=none");
    session.env.statusAfterSignals = [](int status) { return status == 0 ? 0 : 130; };
    session.interruptBeforeCommands = true;
    const Json result = resultOf(session, "erase");
    EXPECT_EQ(result["exit"], 130);
    EXPECT_EQ(result["id"], "interrupted");
}

TEST(Events, ObeyNoTerminal)
{
    Session session("latency=none");
    CommandLine line = session.line("restart");
    line.json = true;
    line.typed = {"restart", "\x1b[2J\x7f\xc2\x9b\xff"};
    EXPECT_EQ(session.run(line), kExitSuccess);
    EXPECT_THAT(session.out.str(), HasSubstr(R"("\u001b[2J\u007f\u009b\ufffd")"));
}

TEST(Objects, AreTheOutputOfListAndInfo)
{
    Session session("hubs=2,latency=none");
    CommandLine list = session.line("list");
    list.json = true;
    EXPECT_EQ(session.run(list), kExitSuccess);
    Json object = Json::parse(session.out.str());
    ASSERT_EQ(object["hubs"].size(), 2U);
    EXPECT_EQ(object["hubs"][1]["path"], "sim-2");
    EXPECT_EQ(object["hubs"][1]["version"], "0100");
    EXPECT_EQ(object["hubs"][1]["running"], "flash");

    list.all = true;
    EXPECT_EQ(session.run(list), kExitSuccess);
    object = Json::parse(session.out.str());
    EXPECT_EQ(object["devices"][0]["pid"], "0001");
    EXPECT_EQ(object["devices"][0]["supported"], true);

    CommandLine info = session.line("info");
    info.json = true;
    EXPECT_EQ(session.run(info), kExitSeveralHubs);
    object = Json::parse(session.out.str());
    EXPECT_EQ(object["id"], "several-hubs");
    EXPECT_EQ(object["exit"], 4);
    info.hub.path = "sim-2";
    EXPECT_EQ(session.run(info), kExitSuccess);
    EXPECT_EQ(Json::parse(session.out.str())["version"], "0100");

    info = session.line("info", session.folder.write("new.bin", demoImage(kDemoVersion101)));
    info.json = true;
    EXPECT_EQ(session.run(info), kExitSuccess);
    EXPECT_EQ(Json::parse(session.out.str())["version"], "0101");
}

} // namespace

} // namespace vornadel::test
