#include "standins/virtual_hub/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

struct Parsed {
    std::optional<int> ended;
    VirtualHubCommandLine commandLine;
    std::string out;
    std::string err;
};

Parsed parse(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "vornadel-virtual-hub");
    Parsed parsed;
    std::ostringstream out;
    std::ostringstream err;
    parsed.ended = parseVirtualHubCommandLine(static_cast<int>(arguments.size()), arguments.data(),
                                              parsed.commandLine, out, err);
    parsed.out = out.str();
    parsed.err = err.str();
    return parsed;
}

TEST(VirtualHubCommandLine, AttachesOneHubWhenNothingIsSaid)
{
    for (const Parsed& parsed : {parse({}), parse({"--attach"})}) {
        EXPECT_FALSE(parsed.ended);
        ASSERT_THAT(parsed.commandLine.hubs, SizeIs(1));
        EXPECT_THAT(parsed.commandLine.hubs[0].image, IsEmpty());
        EXPECT_FALSE(parsed.commandLine.servePort);
    }
}

TEST(VirtualHubCommandLine, TakesUpTo64Hubs)
{
    const Parsed two = parse({"--hub", "image=a.bin", "--hub=image=b.bin,fault=never"});
    ASSERT_THAT(two.commandLine.hubs, SizeIs(2));
    EXPECT_EQ(two.commandLine.hubs[0].image, "a.bin");
    EXPECT_THAT(two.commandLine.hubs[1].faults, SizeIs(1));
    std::vector<const char*> many(64, "--hub=mode=rom");
    EXPECT_THAT(parse(many).commandLine.hubs, SizeIs(64));
    many.push_back("--hub=mode=rom");
    EXPECT_EQ(parse(many).ended, kBadUsage);
}

TEST(VirtualHubCommandLine, ServesOnThePortThatIsAskedFor)
{
    EXPECT_EQ(parse({"--serve"}).commandLine.servePort, 3240);
    EXPECT_EQ(parse({"--serve=0"}).commandLine.servePort, 0);
    EXPECT_EQ(parse({"--serve=65535"}).commandLine.servePort, 65535);
    EXPECT_EQ(parse({"--serve=010"}).commandLine.servePort, 10);
    EXPECT_EQ(parse({"--serve", "--hub", "mode=rom"}).commandLine.hubs[0].mode, HubCode::Rom);
}

TEST(VirtualHubCommandLine, SaysWhatIsWrongWithIt)
{
    const struct {
        std::vector<const char*> arguments;
        const char* reason;
    } rows[] = {
        {{"--hub", "colour=red"}, "colour"},
        {{"--hub", "fault=open-refused:1"}, "open-refused"},
        {{"--serve=65536"}, "65536"},
        {{"--serve=-1"}, "-1"},
        {{"--serve=0x10"}, "0x10"},
        {{"--serve= 5"}, " 5"},
        {{"--serve=+5"}, "+5"},
        {{"--attach", "--serve"}, "--serve"},
        {{"--serve=1", "--serve=2"}, "--serve"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.arguments));
        const Parsed parsed = parse(row.arguments);
        EXPECT_EQ(parsed.ended, kBadUsage);
        EXPECT_THAT(parsed.err, HasSubstr(row.reason));
        EXPECT_THAT(parsed.out, IsEmpty());
    }
}

} // namespace
} // namespace vornadel::test
