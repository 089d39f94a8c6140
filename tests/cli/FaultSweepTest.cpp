// Whatever goes wrong with a hub, a program must be able to act on the result that it is told: each
// verb, with each fault at each place where it can strike. What the result says of the flash and of
// the hub is compared with the simulated hub itself.

#include "cli/Backups.h"
#include "standins/sim/DemoImage.h"
#include "tests/cli/EventCheck.h"
#include "tests/cli/Session.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;

using Bytes = std::vector<std::uint8_t>;

/// What a fault happens to. A write and a read are also requests.
enum class StruckBy { Request, WriteOrRead, Write, Open, Restart };

struct SweptFault {
    const char* name;
    FaultKind kind;
    StruckBy struckBy;
    unsigned amount = 0;
    Clock::Duration delay = 0s;
};

constexpr SweptFault kSweptFaults[] = {
    {"Stall", FaultKind::Stall, StruckBy::Request},
    {"VanishBefore", FaultKind::VanishBefore, StruckBy::Request},
    {"VanishAfter", FaultKind::VanishAfter, StruckBy::Request},
    {"Ignore", FaultKind::Ignore, StruckBy::Request},
    {"TornAtOnce", FaultKind::Torn, StruckBy::Write, 0},
    {"TornHalfWay", FaultKind::Torn, StruckBy::Write, 1000},
    {"TornAtTheEnd", FaultKind::Torn, StruckBy::Write, 4095},
    {"FlipFirst", FaultKind::Flip, StruckBy::WriteOrRead, 0},
    {"FlipLast", FaultKind::Flip, StruckBy::WriteOrRead, 4095},
    {"OneOpenRefused", FaultKind::OpenRefused, StruckBy::Open, 1},
    {"AllOpensRefused", FaultKind::OpenRefused, StruckBy::Open, 10000},
    {"Never", FaultKind::Never, StruckBy::Restart},
    {"Late", FaultKind::Late, StruckBy::Restart, 0, 3s},
    {"TooLate", FaultKind::Late, StruckBy::Restart, 0, 41s},
    {"SameMode", FaultKind::SameMode, StruckBy::Restart},
    {"Bounce", FaultKind::Bounce, StruckBy::Restart},
    {"Ignored", FaultKind::Ignored, StruckBy::Restart},
    {"Swapped", FaultKind::Swapped, StruckBy::Restart},
    {"Moved", FaultKind::Moved, StruckBy::Restart},
    {"RefusedForASecond", FaultKind::Refused, StruckBy::Restart, 0, 1s},
    {"RefusedForLong", FaultKind::Refused, StruckBy::Restart, 0, 100s},
};

/// A verb with a file, on a hub that holds demo firmware 1.00.
struct SweptVerb {
    const char* name;
    const char* verb;
    HubCode starts;
    Bytes (*file)(); ///< its content; null: the verb has none, or writes it
    bool intoRom = false;
};

Bytes oldImage() { return demoImage(); }
Bytes newImage() { return demoImage(kDemoVersion101); }

constexpr SweptVerb kSweptVerbs[] = {
    {"Update", "update", HubCode::Flash, newImage},
    {"UpdateInRomCode", "update", HubCode::Rom, newImage},
    {"UpdateToTheSame", "update", HubCode::Flash, oldImage},
    {"Restore", "restore", HubCode::Flash, newImage},
    {"RestoreInRomCode", "restore", HubCode::Rom, newImage},
    {"Erase", "erase", HubCode::Flash, nullptr},
    {"EraseInRomCode", "erase", HubCode::Rom, nullptr},
    {"Read", "read", HubCode::Flash, nullptr},
    {"ReadInRomCode", "read", HubCode::Rom, nullptr},
    {"VerifyTheSame", "verify", HubCode::Flash, oldImage},
    {"VerifyAnother", "verify", HubCode::Rom, newImage},
    {"Restart", "restart", HubCode::Flash, nullptr},
    {"RestartIntoRom", "restart", HubCode::Flash, nullptr, true},
};

/// The kinds of a verb's requests, in their order.
enum class Asked : std::uint8_t { Open, Restart, Erase, Write, Read, Other };

Asked kindOf(const ControlRequest& request)
{
    switch (request.bRequest) {
    case 0x02:
        return Asked::Open;
    case 0x00:
    case 0xE9:
        return Asked::Restart;
    case 0xE8:
        return Asked::Erase;
    case 0xC8:
        return Asked::Write;
    case 0xD8:
        return Asked::Read;
    default:
        return Asked::Other;
    }
}

/// The positions at which a fault can strike these requests, counted as the fault counts.
std::vector<unsigned> positionsOf(const SweptFault& fault, const std::vector<Asked>& requests)
{
    std::vector<unsigned> positions;
    unsigned count = 0;
    for (const Asked asked : requests) {
        const bool isCounted = fault.struckBy == StruckBy::Open      ? asked == Asked::Open
                               : fault.struckBy == StruckBy::Restart ? asked == Asked::Restart
                                                                     : true;
        const bool isStruck = fault.struckBy == StruckBy::Write ? asked == Asked::Write
                              : fault.struckBy == StruckBy::WriteOrRead
                                  ? asked == Asked::Write || asked == Asked::Read
                                  : isCounted;
        count += isCounted ? 1 : 0;
        if (isStruck) {
            positions.push_back(count);
        }
    }
    return positions;
}

/// One run of a verb with --json on the first of two hubs.
class SweptRun
{
public:
    explicit SweptRun(const SweptVerb& swept) : m_swept(swept) { session.selector.path = "sim-1"; }

    /// Runs it; `atRequest` is called before each request takes effect.
    void go(const std::function<void()>& atRequest = [] {})
    {
        const SweptVerb& swept = m_swept;
        hub().onRequest = [&](const ControlRequest& request) {
            requests.push_back(kindOf(request));
            atRequest();
        };
        CommandLine line = session.line(swept.verb);
        line.json = true;
        line.yes = true;
        line.rom = swept.intoRom;
        if (std::string_view(swept.verb) == "read") {
            line.image = session.folder.path("read.bin");
        } else if (swept.file != nullptr) {
            line.image = session.folder.write("image.bin", swept.file());
        }
        m_status = session.run(line);
        hub().onRequest = nullptr;
        const std::vector<Json> events = checkedEvents(session.out.str());
        if (!events.empty()) {
            result = events.back();
        }
    }

    /// What the result says, against what is so.
    void expectTrue()
    {
        ASSERT_FALSE(result.is_null());
        EXPECT_EQ(session.err.str(), "");
        EXPECT_EQ(result["exit"], m_status);
        EXPECT_EQ(session.hub(2).requestCount(), 0U) << "of the hub beside it";
        expectFlash();
        expectHub();
        expectBackup();
        if (result["ok"] == true) {
            expectSuccess();
        }
    }

    SimulatedHub& hub() { return session.hub(1); }

    Session session{"hubs=2"};
    std::vector<Asked> requests;
    Json result;

private:
    bool wasChanged() const
    {
        return std::any_of(requests.begin(), requests.end(), [](Asked asked) {
            return asked == Asked::Erase || asked == Asked::Write;
        });
    }

    void expectFlash()
    {
        const Bytes flash = hub().flash();
        const std::string told = result["flash"];
        EXPECT_EQ(result["changed"], wasChanged());
        if (told == "untouched") {
            EXPECT_FALSE(wasChanged());
            EXPECT_TRUE(flash == oldImage());
        } else if (told == "erased") {
            EXPECT_TRUE(flash == Bytes(flash.size(), 0xFF));
        } else if (told == "verified") {
            EXPECT_TRUE(flash == m_swept.file());
        } else { // no byte has been compared
            EXPECT_TRUE(wasChanged());
        }
    }

    void expectHub()
    {
        const bool isThere = !hub().attachedHalves().empty() && hub().place() == "sim-1";
        if (result["hub"] == "absent") {
            EXPECT_FALSE(isThere);
        } else if (!result["hub"].is_null()) {
            EXPECT_TRUE(isThere);
            EXPECT_EQ(hub().runningCode(), result["hub"] == "rom" ? HubCode::Rom : HubCode::Flash);
        }
    }

    void expectBackup()
    {
        const bool isTold = !result["backup"].is_null();
        EXPECT_EQ(session.onlyBackup(), isTold ? result["backup"].get<std::string>() : "");
        EXPECT_TRUE(isTold || !wasChanged());
        if (isTold) {
            Bytes saved;
            std::string problem;
            EXPECT_TRUE(readBackup(result["backup"], saved, problem)) << problem;
            EXPECT_TRUE(saved == oldImage());
        }
    }

    void expectSuccess()
    {
        const std::string verb = m_swept.verb;
        if (verb == "read") {
            EXPECT_TRUE(session.folder.read("read.bin") == hub().flash());
        } else if (verb == "erase") {
            EXPECT_EQ(result["flash"], "erased");
        } else if (m_swept.file != nullptr) {
            EXPECT_EQ(result["flash"], "verified");
        }
        if (verb == "restart") {
            EXPECT_EQ(result["hub"], m_swept.intoRom ? "rom" : "flash");
        } else if (verb != "erase") {
            EXPECT_EQ(result["hub"], "flash");
        }
    }

    const SweptVerb& m_swept;
    int m_status = 0;
};

class VerbWithFaults : public testing::TestWithParam<SweptVerb>
{
};

} // namespace

TEST_P(VerbWithFaults, TellsTheTruthOfTheFlashAndTheHub)
{
    SweptRun healthy(GetParam());
    healthy.go();
    healthy.expectTrue();
    EXPECT_EQ(healthy.result["ok"], std::string_view(GetParam().name) != "VerifyAnother");
    EXPECT_FALSE(healthy.result["hub"].is_null());
    for (const SweptFault& fault : kSweptFaults) {
        for (const unsigned position : positionsOf(fault, healthy.requests)) {
            SCOPED_TRACE(std::string(fault.name) + " at " + std::to_string(position));
            SweptRun run(GetParam());
            run.hub().addFault({fault.kind, {}, position, fault.amount, fault.delay});
            run.go();
            EXPECT_EQ(run.hub().faultsTriggered(), 1U);
            run.expectTrue();
            const bool isHonest = fault.kind != FaultKind::Ignore && fault.kind != FaultKind::Flip;
            if (isHonest && run.result["flash"] == "written") {
                EXPECT_TRUE(run.hub().flash() == GetParam().file());
            }
            // Only a hub that cannot be opened keeps its state to itself.
            const bool isOpened =
                fault.kind != FaultKind::OpenRefused && fault.kind != FaultKind::Refused;
            EXPECT_TRUE(!isOpened || !run.result["hub"].is_null());
        }
    }
}

TEST_P(VerbWithFaults, TellsTheTruthIfItIsStopped)
{
    SweptRun whole(GetParam());
    whole.go();
    for (std::size_t last = 1; last <= whole.requests.size(); ++last) {
        for (const bool atOnce : {false, true}) { // by one signal, by two
            SCOPED_TRACE(std::to_string(last) + (atOnce ? " at once" : ""));
            SweptRun run(GetParam());
            run.go([&] {
                if (run.requests.size() == last) {
                    run.session.stop.ask();
                    if (atOnce) {
                        Hub_Abandon();
                        run.session.clock.interrupt();
                    }
                }
            });
            run.expectTrue();
            EXPECT_TRUE(!atOnce || run.requests.size() == last);
            EXPECT_TRUE(atOnce || !run.result["hub"].is_null());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryFault, VerbWithFaults, testing::ValuesIn(kSweptVerbs),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace vornadel::test
