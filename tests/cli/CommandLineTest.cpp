#include "cli/CommandLine.h"
#include "tests/support/TemporaryFolder.h"

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

using Verb = CommandLine::Verb;
using Words = std::vector<std::string>;

struct Parsed {
    CommandLine commandLine;
    std::optional<int> ended;
    std::string out;
    std::string err;
};

Parsed parse(const Words& words)
{
    std::vector<const char*> argv{"vornadelctl"};
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    Parsed parsed;
    std::ostringstream out;
    std::ostringstream err;
    parsed.ended =
        parseCommandLine(static_cast<int>(argv.size()), argv.data(), parsed.commandLine, out, err);
    parsed.out = out.str();
    parsed.err = err.str();
    return parsed;
}

TEST(CommandLine, KnowsItsVerbs)
{
    const struct {
        Words words;
        Verb verb;
        std::string image;
    } rows[] = {
        {{"update", "new.bin"}, Verb::Update, "new.bin"},
        {{"update", "--", "-new.bin"}, Verb::Update, "-new.bin"},
        {{"read", "new.bin"}, Verb::Read, "new.bin"},
        {{"read", "erase"}, Verb::Read, "erase"},
        {{"scalar"}, Verb::Scalar, ""},
        {{"erase"}, Verb::Erase, ""},
        {{"info"}, Verb::Info, ""},
        {{"info", "new.bin"}, Verb::Info, "new.bin"},
        {{"info", "list"}, Verb::Info, "list"},
        {{"list"}, Verb::List, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        const Parsed parsed = parse(row.words);
        EXPECT_EQ(parsed.ended, std::nullopt) << parsed.err;
        EXPECT_EQ(parsed.commandLine.verb, row.verb);
        EXPECT_EQ(parsed.commandLine.image, row.image);
        EXPECT_EQ(parsed.commandLine.simulatedHub, std::nullopt);
        EXPECT_THAT(parsed.commandLine.configFile, IsEmpty());
        EXPECT_THAT(parsed.out + parsed.err, IsEmpty());
    }
}

TEST(CommandLine, TakesTheSimulatedHubBeforeAndAfterTheVerb)
{
    const struct {
        Words words;
        std::string options;
    } rows[] = {
        {{"--simulated-hub", "update", "new.bin"}, ""},
        {{"update", "--simulated-hub", "new.bin"}, ""},
        {{"update", "new.bin", "--simulated-hub"}, ""},
        {{"update", "--simulated-hub=latency=none", "new.bin"}, "latency=none"},
        {{"update", "new.bin", "--simulated-hub=image=/tmp/a b.bin,mode=rom,fault=stall@write#2"},
         "image=/tmp/a b.bin,mode=rom,fault=stall@write#2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        const Parsed parsed = parse(row.words);
        EXPECT_EQ(parsed.ended, std::nullopt) << parsed.err;
        EXPECT_EQ(parsed.commandLine.simulatedHub, row.options);
        EXPECT_EQ(parsed.commandLine.verb, Verb::Update);
        EXPECT_EQ(parsed.commandLine.image, "new.bin");
    }
}

TEST(CommandLine, TakesAConfigFileBeforeAndAfterTheVerb)
{
    const TemporaryFolder folder;
    const std::string file = folder.write("mine.ini", "[x]\n");
    for (const Words& words : {Words{"--config", file, "list"}, Words{"list", "--config", file},
                               Words{"list", "--config=" + file}}) {
        SCOPED_TRACE(testing::PrintToString(words));
        const Parsed parsed = parse(words);
        EXPECT_EQ(parsed.ended, std::nullopt) << parsed.err;
        EXPECT_EQ(parsed.commandLine.configFile, file);
    }
}

TEST(CommandLine, HelpAndVersionAreNoErrors)
{
    const struct {
        Words words;
        std::string says;
    } rows[] = {
        {{"--help"}, "vornadelctl [OPTIONS]"}, {{"--help"}, "--simulated-hub"},
        {{"info", "--help"}, "[IMAGE]"},       {{"-h"}, "update"},
        {{"update", "--help"}, "IMAGE"},       {{"erase", "--help"}, "without asking"},
        {{"--version"}, "vornadelctl 1.02"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        const Parsed parsed = parse(row.words);
        EXPECT_EQ(parsed.ended, kExitSuccess);
        EXPECT_THAT(parsed.out, HasSubstr(row.says));
        EXPECT_THAT(parsed.err, IsEmpty());
    }
}

TEST(CommandLine, ExplainsWhatItDoesNotUnderstand)
{
    const struct {
        Words words;
        std::string named; // in the error message
    } rows[] = {
        {{}, "subcommand"},
        {{"update"}, "IMAGE"},
        {{"update", "a.bin", "b.bin"}, "b.bin"},
        {{"read"}, "FILE"},
        {{"read", ""}, "empty"},
        {{"info", ""}, "the name is empty"},
        {{"erase", "a.bin"}, "a.bin"},
        {{"info", "a.bin", "b.bin"}, "b.bin"},
        {{"list", "a.bin"}, "a.bin"},
        {{"--nonsense", "list"}, "--nonsense"},
        {{"list", "--config", ""}, "empty"},
        {{"list", "--simulated-hub=latency=none", "--simulated-hub"}, "--simulated-hub"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        const Parsed parsed = parse(row.words);
        EXPECT_EQ(parsed.ended, 2);
        EXPECT_THAT(parsed.err, HasSubstr(row.named));
        EXPECT_THAT(parsed.out, IsEmpty());
    }
}

} // namespace

} // namespace vornadel::test
