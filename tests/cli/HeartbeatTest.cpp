#include "standins/sim/DemoImage.h"
#include "tests/cli/EventCheck.h"
#include "tests/cli/Session.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <streambuf>
#include <string>

namespace vornadel::test
{
namespace
{

using namespace std::chrono_literals;

/// Measures the longest time between two pieces of output.
class Silence final : public std::streambuf
{
public:
    explicit Silence(Clock& clock) : m_clock(clock), m_last(clock.now()) {}

    Clock::Duration longest{};

private:
    std::streamsize xsputn(const char* /*text*/, std::streamsize size) override
    {
        heard();
        return size;
    }
    int_type overflow(int_type character) override
    {
        heard();
        return traits_type::not_eof(character);
    }
    void heard()
    {
        const Clock::Duration now = m_clock.now();
        longest = std::max(longest, now - m_last);
        m_last = now;
    }

    Clock& m_clock;
    Clock::Duration m_last;
};

/// The longest silence of an update whose hub takes 29 s for the erase and is away for 19 s.
Clock::Duration silenceWith(bool json)
{
    Session session;
    session.hub().addFault({.kind = FaultKind::Late, .position = 2, .delay = 19s});
    session.hub().onRequest = [&](const ControlRequest& request) {
        if (request.bRequest == 0xE8) {
            session.clock.advance(29s);
        }
    };
    Silence silence(session.clock);
    session.out.std::ostream::rdbuf(&silence);
    CommandLine line =
        session.line("update", session.folder.write("new.bin", demoImage(kDemoVersion101)));
    line.json = json;
    EXPECT_EQ(session.run(line), kExitSuccess) << session.err.str();
    EXPECT_GT(session.clock.now(), 48s);
    return silence.longest;
}

TEST(Flow, IsNotSilentForLongerThanFiveSeconds)
{
    EXPECT_LE(silenceWith(true), 2s + 250ms);
    EXPECT_LE(silenceWith(false), 5s + 250ms) << "it looks four times a second";
}

} // namespace
} // namespace vornadel::test
