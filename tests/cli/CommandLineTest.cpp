#include "cli/CommandLine.h"
#include "cli/Verbs.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
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
        std::string verb;
        std::string image;
    } rows[] = {
        {{"update", "new.bin"}, "update", "new.bin"},
        {{"update", "--", "-new.bin"}, "update", "-new.bin"},
        {{"read", "new.bin"}, "read", "new.bin"},
        {{"read", "erase"}, "read", "erase"},
        {{"scalar"}, "scalar", ""},
        {{"erase"}, "erase", ""},
        {{"info"}, "info", ""},
        {{"info", "new.bin"}, "info", "new.bin"},
        {{"info", "list"}, "info", "list"},
        {{"list"}, "list", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        const Parsed parsed = parse(row.words);
        EXPECT_EQ(parsed.ended, std::nullopt) << parsed.err;
        ASSERT_NE(parsed.commandLine.verb, nullptr);
        EXPECT_EQ(parsed.commandLine.verb->name, row.verb);
        EXPECT_EQ(parsed.commandLine.image, row.image);
        EXPECT_EQ(parsed.commandLine.simulatedHub, std::nullopt);
        EXPECT_THAT(parsed.commandLine.configFile, IsEmpty());
        EXPECT_FALSE(parsed.commandLine.hub.isGiven());
        EXPECT_FALSE(parsed.commandLine.refuseInUse || parsed.commandLine.all);
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
        EXPECT_EQ(parsed.commandLine.verb, &kUpdateVerb);
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

TEST(CommandLine, TakesSelectorsBeforeAndAfterTheVerb)
{
    const Parsed parsed =
        parse({"-p", "2-1.4/1-1.4", "erase", "-S", "a b", "--refuse-in-use", "--container",
               "00112233-4455-6677-8899-AABBCCDDEEFF", "--id=1209:aB"});
    EXPECT_EQ(parsed.ended, std::nullopt) << parsed.err;
    const HubSelector& hub = parsed.commandLine.hub;
    EXPECT_EQ(hub.path, "2-1.4/1-1.4");
    EXPECT_EQ(hub.serialNumber, "a b");
    EXPECT_EQ(hub.containerId, "{00112233-4455-6677-8899-aabbccddeeff}");
    EXPECT_EQ(hub.id, (UsbIds{0x1209, 0x00AB}));
    EXPECT_EQ(parse({"info", "--id=F:FFFF"}).commandLine.hub.id, (UsbIds{0x000F, 0xFFFF}));
    EXPECT_TRUE(parsed.commandLine.refuseInUse);
    EXPECT_EQ(parse({"info", "--container", hub.containerId}).commandLine.hub.containerId,
              hub.containerId);
    const std::string longest = std::string(98, '1') + "-1";
    EXPECT_EQ(parse({"list", "--path", longest}).commandLine.hub.path, longest);
    EXPECT_EQ(parse({"list", "--path", "sim-12"}).commandLine.hub.path, "sim-12");
    EXPECT_TRUE(parse({"list", "--all"}).commandLine.all);
}

TEST(CommandLine, TakesSelectorsAndFilesTogetherExceptForTheInfoOfAnImage)
{
    for (const Words& words :
         {Words{"update", "a.bin"}, Words{"read", "a.bin"}, Words{"info"}, Words{"list"}}) {
        Words selected = words;
        selected.insert(selected.end(), {"--path", "2-1"});
        EXPECT_EQ(parse(selected).ended, std::nullopt);
    }
    EXPECT_EQ(parse({"info", "a.bin"}).ended, std::nullopt);
    EXPECT_EQ(parse({"list", "--all"}).ended, std::nullopt);
}

TEST(CommandLine, RefusesSelectorsThatCannotMatch)
{
    const std::string container = "00112233-4455-6677-8899-aabbccddeeff";
    const struct {
        std::string option;
        Words values;
    } rows[] = {
        {"--path",
         {"", "1", "1:5", "-1", "2-", "2-x", "2-1.", "2-.1", "2-1..4", "2-1/", "/2-1",
          std::string(99, '1') + "-1", "2-1/1-1/3-1"}},
        {"--serial", {""}},
        {"--container",
         {"", "{" + container, container + "}", "{}", "{", "0" + container + "}",
          "{" + container + "0", container + "0", container.substr(1), "g" + container.substr(1),
          "00112233445566778899aabbccddeeff"}},
        {"--id",
         {"", "1209", "1209:", ":0001", "12091:1", "1209:00001", "1209:-1", "-1:1", "0x1:1",
          "1209:000g", "1209:~", "1209:1:2"}},
    };
    for (const auto& row : rows) {
        for (const std::string& value : row.values) {
            const Parsed parsed = parse({"info", row.option + '=' + value});
            EXPECT_EQ(parsed.ended, 2) << row.option << ' ' << value;
            EXPECT_THAT(parsed.err, HasSubstr(row.option)) << value;
        }
    }
}

TEST(CommandLine, HelpAndVersionAreNoErrors)
{
    const struct {
        Words words;
        std::string says;
    } rows[] = {
        {{"--help"}, "vornadelctl [OPTIONS]"},
        {{"--help"}, "--simulated-hub"},
        {{"--help"}, "Which hub:\n"},
        {{"--help"}, "-S,--serial TEXT "},
        {{"--help"}, "The one with this Container ID\n"},
        {{"-h"}, "\nExit status:\n   0  done, or already so\n"},
        {{"help"}, "\nExit status:\n   0  done, or already so\n"},
        {{"help", "update"}, "\nUsage: vornadelctl update [OPTIONS] IMAGE\n"},
        {{"update", "-h"}, "\nUsage: vornadelctl update [OPTIONS] IMAGE\n"},
        {{"help", "image", "set"}, "\nUsage: vornadelctl image set [OPTIONS] IMAGE EDITS...\n"},
        {{"image", "--help"}, "\n  properties   "},
        {{"info", "--help"}, "[IMAGE]"},
        {{"-h"}, "update"},
        {{"update", "--help"}, "IMAGE"},
        {{"erase", "--help"}, "Asks first"},
        {{"--version"}, "vornadelctl 1.02"},
        {{"update", "--version"}, "vornadelctl 1.02"},
        {{"--version", "image"}, "vornadelctl 1.02"},
        {{"image", "set", "a.bin", "--version"}, "vornadelctl 1.02"},
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
        {{},
         "a verb is missing [usage]\n  hub:  not asked\n  next: vornadelctl help\n  log:  none\n"},
        {{"image"}, "a verb is missing [usage]\n"},
        {{"updat"}, "there is no verb \"updat\"; did you mean \"update\"? [usage]\n"},
        {{"--path", "2-3", "ifno", "a.bin"}, "there is no verb \"ifno\"; did you mean \"info\"?"},
        {{"image", "st", "a.bin"}, "there is no verb \"st\"; did you mean \"set\"?"},
        {{"help", "image", "gte"}, "there is no verb \"gte\"; did you mean \"get\"?"},
        {{"\x1b[2J"}, "there is no verb \"?[2J\"; did you mean"},
        {{"update"}, "IMAGE"},
        {{"update", "a.bin", "b.bin"}, "b.bin"},
        {{"read"}, "FILE"},
        {{"read", ""}, "empty"},
        {{"info", ""}, "it is empty"},
        {{"erase", "a.bin"}, "a.bin"},
        {{"info", "a.bin", "b.bin"}, "b.bin"},
        {{"list", "a.bin"}, "a.bin"},
        {{"--nonsense", "list"}, "--nonsense"},
        {{"list", "--config", ""}, "empty"},
        {{"info", "-p", "1:5"},
         "\"1:5\" is no port such as 2-3, nor a pair such as 2-3/1-3 [usage]\n"},
        {{"info", "--container", "5d"}, "\"5d\" is no Container ID [usage]\n"},
        {{"wait", "--timeout", "-1"}, ": \"-1\" is no number from 0 to 999999999 [usage]\n"},
        {{"info", "--id", "12"}, "\"12\" is no VID:PID in hex [usage]\n"},
        {{"info", "--refuse-in-use"}, "--refuse-in-use"},
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

TEST(CommandLine, LetsAVerbWithJsonTellWhatIsWrong)
{
    const struct {
        Words words;
        std::string verb; // empty: it ends at once
        std::string why{};
    } rows[] = {
        {{"--json", "update"}, "update", "IMAGE is required"},
        {{"image", "set", "a.bin", "--json"}, "image set", "EDITS is required"},
        {{"list", "--json", "--path", "1:5"}, "list", "\"1:5\" is no port"},
        {{"--json"}, ""},
        {{"image", "st", "--json"}, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        const Parsed parsed = parse(row.words);
        EXPECT_EQ(parsed.ended.has_value(), row.verb.empty());
        EXPECT_EQ(parsed.err.empty(), !row.verb.empty());
        EXPECT_EQ(parsed.out.empty(), !row.verb.empty());
        if (row.verb.empty()) {
            EXPECT_THAT(parsed.out, HasSubstr("\"id\": \"usage\""));
        }
        EXPECT_EQ(parsed.commandLine.verb, verbCalled(row.verb));
        EXPECT_THAT(parsed.commandLine.usageProblem, HasSubstr(row.why));
    }
}

std::string joined(const Words& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += ' ' + word;
    }
    return text;
}

TEST(CommandLine, HasADocumentedHelpOfEightyColumnsWithExamplesForEachVerb)
{
    std::vector<Words> helps{{"help"}, {"help", "image"}, {"help", "access"}};
    for (const Verb* const verb : allVerbs()) {
        std::istringstream names(verb->name);
        helps.push_back({"help"});
        for (std::string name; names >> name;) {
            helps.back().push_back(name);
        }
        std::istringstream examples(verb->examples);
        int count = 0;
        for (std::string example; std::getline(examples, example); ++count) {
            EXPECT_THAT(example, testing::StartsWith("vornadelctl "));
            EXPECT_THAT(example, HasSubstr(verb->name));
        }
        EXPECT_GT(count, 0) << verb->name;
    }
    std::string all;
    for (const Words& words : helps) {
        SCOPED_TRACE(testing::PrintToString(words));
        const Parsed parsed = parse(words);
        EXPECT_EQ(parsed.ended, kExitSuccess) << parsed.err;
        all += "$ vornadelctl" + joined(words) + '\n' + parsed.out + '\n';
        std::istringstream lines(parsed.out);
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(line.size(), 80U) << line;
        }
    }
    std::ifstream page(HELP_PAGE);
    std::ostringstream documented;
    documented << page.rdbuf();
    if (documented.str() != all) {
        std::ofstream("help.txt.new") << all;
        ADD_FAILURE() << HELP_PAGE " does not show these helps; help.txt.new does";
    }
}

} // namespace

} // namespace vornadel::test
