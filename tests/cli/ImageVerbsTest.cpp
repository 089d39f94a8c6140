// The verbs about images: on files, on standard input, and on the flash of a hub.

#include "standins/sim/DemoImage.h"
#include "tests/cli/Session.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Bytes = std::vector<std::uint8_t>;
using Object = nlohmann::json;

constexpr std::size_t kDescriptor = 0x7E00;

constexpr const char* kProperties = R"([HubFF_USB_01]
PageName = SSC
PropName = Spread
PropAddr = 9
PropMask = 1
PropOption_00 = Off
PropOption_01 = On
[HubFF_USB_02]
PageName = SSC
PropName = Depth
PropAddr = 20
PropMask = 48
BaseOnAddr = 9
BaseOnMask = 1
PropOption_00 = None
PropOption_01 = 2
PropOption_02 = High
[HubFF_USB_03]
PageName = System
PropName = Twice
PropAddr = 113
PropMask = 1
PropOption_00 = No
PropOption_01 = Yes
[HubFF_USB_04]
PageName = DSP OCP/U1/U2
PropName = Twice
PropAddr = 113
PropMask = 2
PropOption_00 = No
PropOption_01 = Yes
[HubFF_USB_05]
PageName = SSC
PropName = a=b
PropAddr = 114
PropMask = 255
PropOption_00 = c=d
DataOption_00 = 7
[HubFF_USB_06]
PageName = SSC
PropName = Constant
[HubFF_USB_07]
PageName = Nowhere
PropName = Hidden
PropMask = 1
PropOption_00 = Off
[HubFF_USB_08]
PageName = SSC
PropName = Maskless
PropOption_00 = Off
[HubFF_USB_09]
PageName = SSC
PropName = Outside
PropAddr = 60000
PropMask = 1
PropOption_00 = Off
)";

class ImageVerbs : public testing::Test
{
protected:
    ImageVerbs()
    {
        session.folder.write("A.INI", kProperties);
        image = session.folder.write("in.bin", demoImage());
        out = session.folder.path("out.bin");
    }

    int run(std::string_view verb, const std::vector<std::string>& words = {}, bool json = false)
    {
        CommandLine line = session.line(verb, image);
        line.words = words;
        line.output = out;
        line.otherImage = other;
        line.force = force;
        line.json = json;
        line.definitions = definitions;
        line.controller = controller;
        return session.run(line);
    }
    int set(const std::vector<std::string>& edits) { return run("image set", edits); }
    Object object() const { return Object::parse(session.out.str()); }
    std::string text() const { return session.out.str(); }
    std::string errors() const { return session.told(); }

    /// The demo image with bytes of its block changed.
    static Bytes demoWith(const std::vector<std::pair<std::size_t, std::uint8_t>>& changes)
    {
        Bytes bytes = demoImage();
        for (const auto& [offset, value] : changes) {
            bytes[kDescriptor + offset] = value;
        }
        return bytes;
    }

    Session session;
    std::string image;
    std::string other;
    std::string out;
    std::string definitions;
    std::string controller;
    bool force = false;
};

TEST_F(ImageVerbs, SetFieldsAndPropertiesAndSayWhatChanged)
{
    EXPECT_EQ(set({"Depth=High", "vid=12aB", "System/Twice=Yes", "a=b=c=d"}), kExitImageRefused)
        << "locked until Spread is on";
    EXPECT_THAT(errors(), HasSubstr("\"Depth\" is locked: This Item is Not Editable. To Change "
                                    "this Item,you should set Spread (Addr 0x09[0:0]) from 0 to "
                                    "1\n"));
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(set({"Spread=On", "Depth=2 : High", "vid=12aB", "System/Twice=Yes", "a=b=c=d"}),
              kExitSuccess);
    EXPECT_EQ(session.folder.read("out.bin"),
              demoWith({{2, 0x12}, {3, 0xAB}, {9, 0x01}, {10, 0x01}, {20, 0xA5}, {113, 0x01}}));
    EXPECT_EQ(text(), "vid: 1209 -> 12AB\nchanged: none -> ids\nSpread: 0 : Off -> 1 : On\n"
                      "System/Twice: 0 : No -> 1 : Yes\nSaved 32768 bytes to " +
                          out + '\n');
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ImageVerbs, SetNothingForAWrongEdit)
{
    const struct {
        std::string edit;
        std::string why; ///< the beginning
        int status = kExitUsage;
    } rows[] = {
        {"serial", "\"serial\" is not NAME=VALUE\n"},
        {"=1", "\"=1\" is not NAME=VALUE\n"},
        {"Serial=1", "there is no field and no property \"Serial\"\n"},
        {"vid=12", "vid cannot be \"12\": an id has four hex digits\n"},
        {"container-id=7", "container-id cannot be \"7\": a Container ID is 8-4-4-4-12 hex"},
        {"serial=\xFF", "serial cannot be \"?\": it is not UTF-8\n"},
        {"serial=" + std::string(14, 's'),
         "manufacturer, product and serial would have more than 29 characters together\n"},
        {"Twice=1", "several properties are called \"Twice\": \"System/Twice\", "
                    "\"DSP OCP/U1/U2/Twice\"\n"},
        {"Depth=2", "\"2\" means several options of \"Depth\": \"1 : 2\", \"2 : High\"\n"},
        {"Spread=2", "\"Spread\" cannot be \"2\"; its options are: \"0 : Off\", \"1 : On\"\n"},
        {"Constant=1", "\"Constant\" cannot be set: it is a constant, without options\n"},
        {"Hidden=0", "\"Hidden\" cannot be set: it is on no page of the editor\n"},
        {"Maskless=0", "\"Maskless\" cannot be set: its mask is 0, so it has no bits\n"},
        {"Outside=0", "\"Outside\" lies behind the end of the image\n", kExitImageRefused},
        {"sspid=0001", "\"sspid\" is set twice\n"},
        {"SSC/Spread=1", "\"SSC/Spread\" is set twice\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(set({"sspid=1234", "Spread=1", row.edit}), row.status) << row.edit;
        EXPECT_THAT(errors(), testing::StartsWith(row.why));
        EXPECT_THAT(text(), IsEmpty()) << row.edit;
        EXPECT_FALSE(std::filesystem::exists(out)) << row.edit;
    }
}

TEST_F(ImageVerbs, SetMakesANewContainerId)
{
    EXPECT_EQ(set({"container-id=new"}), kExitSuccess);
    const Bytes first = session.folder.read("out.bin");
    force = true;
    EXPECT_EQ(set({"container-id=new"}), kExitSuccess);
    const Bytes second = session.folder.read("out.bin");
    EXPECT_NE(first, second);
    const Bytes demo = demoImage();
    for (std::size_t at = 0; at < demo.size(); ++at) {
        const std::size_t offset = at - kDescriptor;
        ASSERT_TRUE(offset == 42 || (offset >= 78 && offset < 94) || first[at] == demo[at]) << at;
    }
    EXPECT_EQ(first[kDescriptor + 42], 0x01);
}

TEST_F(ImageVerbs, SetReplacesAFileOnlyByForce)
{
    session.folder.write("out.bin", "kept");
    EXPECT_EQ(set({"serial=7"}), kExitFailure);
    EXPECT_THAT(errors(), HasSubstr("exists, and is not replaced without --force\n"));
    out = session.folder.path("none/out.bin");
    EXPECT_EQ(set({"serial=7"}), kExitFailure);
    EXPECT_THAT(session.err.str(),
                HasSubstr("\n  next: ls -ld " + session.folder.path("none") + '\n'));
    out = image;
    EXPECT_EQ(set({"serial=7"}), kExitFailure);
    EXPECT_EQ(session.folder.read("in.bin"), demoImage());
    force = true;
    EXPECT_EQ(set({"serial=7"}), kExitSuccess);
    EXPECT_NE(session.folder.read("in.bin"), demoImage());
}

TEST_F(ImageVerbs, SetReadsStandardInputAndWritesStandardOutput)
{
    const Bytes demo = demoImage();
    session.in.str(std::string(demo.begin(), demo.end()));
    image = out = "-";
    EXPECT_EQ(set({"hspid=0003"}), kExitSuccess);
    const std::string written = text();
    EXPECT_EQ(Bytes(written.begin(), written.end()), demoWith({{7, 0x03}, {10, 0x01}}));
    EXPECT_EQ(errors(), "hspid: 0002 -> 0003\nchanged: none -> ids\n");
    EXPECT_EQ(run("image set", {"hspid=0003"}, true), kExitUsage) << "JSON has to go somewhere";
    session.in.str({});
    EXPECT_EQ(set({"hspid=0003"}), kExitImageRefused);
    EXPECT_THAT(errors(), HasSubstr("standard input is empty\n"));
}

TEST_F(ImageVerbs, SetTellsProgramsWhatChanged)
{
    EXPECT_EQ(run("image set", {"serial=SN9", "Spread=1"}, true), kExitSuccess);
    EXPECT_EQ(object()["definitions"].get<std::string>().substr(0, 1), "/");
    const Object changed = object()["changed"];
    EXPECT_EQ(changed["fields"][0],
              (Object{{"name", "serial"}, {"before", "SN0001"}, {"after", "SN9"}}));
    EXPECT_EQ(changed["properties"][0]["after"], "1 : On");
    EXPECT_THAT(changed["ranges"], IsEmpty());
    EXPECT_EQ(object()["bytes"], 32768);
}

TEST_F(ImageVerbs, DiffNamesWhatDiffersAndHasAStatusOfItsOwn)
{
    other = session.folder.write("other.bin", demoWith({{9, 0x01}, {130, 0x77}}));
    EXPECT_EQ(run("image diff"), kExitDiffers);
    EXPECT_EQ(text(), "Spread: 0 : Off -> 1 : On\n0x7E82: 1 byte differs\n");
    EXPECT_EQ(run("image diff", {}, true), kExitDiffers);
    EXPECT_EQ(object()["equal"], false);
    EXPECT_EQ(object()["differences"]["ranges"][0],
              (Object{{"begin", 0x7E82}, {"end", 0x7E83}, {"bytes", 1}}));
    other = image;
    EXPECT_EQ(run("image diff"), kExitSuccess);
    EXPECT_EQ(text(), "the images are equal\n");
}

TEST_F(ImageVerbs, DiffCutsAVeryLongListOfRanges)
{
    Bytes scattered = demoImage();
    for (std::size_t at = 0; at < 20UL * 64UL; at += 64) {
        scattered[at] ^= 1;
    }
    other = session.folder.write("other.bin", scattered);
    EXPECT_EQ(run("image diff"), kExitDiffers);
    const std::string lines = text();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 17);
    EXPECT_THAT(lines, testing::EndsWith("\nand 4 more ranges\n"));
    EXPECT_EQ(run("image diff", {}, true), kExitDiffers);
    EXPECT_EQ(object()["differences"]["ranges"].size(), 20U);
}

TEST_F(ImageVerbs, DiffComparesAHubWithAFile)
{
    other = session.folder.write("other.bin", demoImage(kDemoVersion101));
    image = "hub";
    EXPECT_EQ(run("image diff"), kExitDiffers);
    EXPECT_THAT(text(), testing::StartsWith("version: 0100 -> 0101\n"));
    EXPECT_THAT(errors(), Not(IsEmpty())) << "what the read of the flash tells";
    std::swap(image, other);
    EXPECT_EQ(run("image diff"), kExitDiffers);
    EXPECT_THAT(text(), testing::StartsWith("version: 0101 -> 0100\n"));
    image = "hub";
    EXPECT_EQ(run("image diff"), kExitUsage) << "twice the hub";
    session.hub().unplug();
    other = out;
    EXPECT_EQ(run("image info"), kExitNoHub);
}

TEST_F(ImageVerbs, TakeSelectorsOnlyForAHub)
{
    session.selector.path = "9-9";
    EXPECT_EQ(run("image info"), kExitUsage);
    image = "hub";
    EXPECT_EQ(run("image info"), kExitNoHub) << "none is there";
}

TEST_F(ImageVerbs, GetPrintsWhatSetTakes)
{
    EXPECT_EQ(run("image get", {"serial", "Spread", "SSC/Depth", "version"}), kExitSuccess);
    EXPECT_EQ(text(), "SN0001\n0 : Off\n2 : High\n0100\n");
    EXPECT_EQ(run("image get"), kExitSuccess);
    EXPECT_THAT(text(), HasSubstr("\nserial=SN0001\n"));
    EXPECT_THAT(text(), HasSubstr("\nSystem/Twice=0 : No\n"));
    EXPECT_THAT(text(), HasSubstr("\na=b=0\n")) << "a value that is no option";
    EXPECT_EQ(run("image get", {"serial", "a=b"}, true), kExitSuccess);
    EXPECT_EQ(object()["values"], (Object{{"serial", "SN0001"}, {"a=b", "0"}}));
    EXPECT_EQ(run("image get", {"Twice"}), kExitUsage);
    EXPECT_EQ(run("image get", {"vid", "Nothing"}), kExitUsage);
    EXPECT_THAT(text(), IsEmpty());
}

TEST_F(ImageVerbs, InfoShowsEachField)
{
    EXPECT_EQ(run("image info"), kExitSuccess);
    EXPECT_THAT(text(), HasSubstr("\nblock at:       0x7E00\nversion:        0100\n"));
    EXPECT_THAT(text(), HasSubstr("\nserial number:  SN0001\n"));
    EXPECT_EQ(run("image info", {}, true), kExitSuccess);
    EXPECT_EQ(object()["sspid"], "0001");
    EXPECT_EQ(object()["size"], 32768);
    image = session.folder.write("no.bin", std::string(512, 'x'));
    EXPECT_EQ(run("image info"), kExitImageRefused);
    EXPECT_THAT(errors(), HasSubstr("is no firmware image: it has no descriptor block"));
    image = session.folder.path("missing.bin");
    EXPECT_EQ(run("image info"), kExitImageRefused);
    EXPECT_THAT(errors(), HasSubstr("could not be read: No such file or directory"));
}

TEST_F(ImageVerbs, CheckFindsWhatIsWrongAndWhatIsUnusual)
{
    EXPECT_EQ(run("image check"), kExitSuccess);
    EXPECT_EQ(text(), "ok    a hub can run this image\n");
    const Bytes demo = demoImage();
    const struct {
        Bytes bytes;
        std::string text;
        int status = kExitSuccess;
    } rows[] = {
        {demoWith({{3, 0x0A}}), "warn  the configuration does not name its ids\n"},
        {demoWith({{114, 0x07}, {20, 0xB5}}), "warn  Depth has the value 3, which is none of its"},
        {Bytes(demo.begin() + 0x100, demo.end()),
         "warn  it has 32512 bytes; the rest of the hub's flash (32768) stays blank\n"},
        {demoWith({{4, 0}, {5, 0}}), "its vendor id or one of its product ids is missing",
         kExitImageRefused},
        {Bytes(100), "it is no firmware image: it has no descriptor block", kExitImageRefused},
    };
    controller = "A";
    for (const auto& row : rows) {
        image = session.folder.write("checked.bin", row.bytes);
        EXPECT_EQ(run("image check"), row.status);
        EXPECT_THAT(text() + errors(), HasSubstr(row.text));
        EXPECT_EQ(run("image check", {}, true), row.status);
        EXPECT_EQ(object()["ok"], row.status == kExitSuccess);
        EXPECT_EQ(object()["findings"][0]["refused"], row.status != kExitSuccess);
    }
}

TEST_F(ImageVerbs, PropertiesListsThemByPageWithTheirOptions)
{
    EXPECT_EQ(run("image properties"), kExitSuccess);
    EXPECT_THAT(text(), HasSubstr("SSC\n  Spread    0 : Off            [0 : Off, 1 : On]\n"
                                  "  Depth     2 : High (locked)  [0 : None, 1 : 2, 2 : High]\n"));
    EXPECT_THAT(text(), Not(HasSubstr("Hidden")));
    image.clear();
    EXPECT_EQ(run("image properties"), kExitSuccess);
    EXPECT_THAT(text(), HasSubstr("SSC\n  Spread    [0 : Off, 1 : On]\n"));
    EXPECT_EQ(run("image properties", {}, true), kExitSuccess);
    const Object depth = object()["properties"][1];
    EXPECT_EQ(depth["name"], "Depth");
    EXPECT_EQ(depth["options"][2], (Object{{"value", "2"}, {"label", "High"}}));
    EXPECT_FALSE(depth.contains("locked")) << "there is no image";
}

TEST_F(ImageVerbs, ChooseOneOfSeveralPropertyFiles)
{
    session.folder.write("sub/B.INI", "[HubFF_USB_01]\nPageName=SSC\nPropName=Other\n");
    image.clear();
    EXPECT_EQ(run("image properties"), kExitSuccess);
    EXPECT_THAT(errors(), HasSubstr("; --ic NAME chooses: "));
    for (const char* name : {"B", "sub/B.INI"}) {
        controller = name;
        EXPECT_EQ(run("image properties"), kExitSuccess);
        EXPECT_EQ(text(), "SSC\n  Other  []\n");
        EXPECT_THAT(errors(), IsEmpty());
    }
    session.folder.write("sub/C.INI", "");
    session.folder.write("sub/more/C.INI", "");
    controller = "D";
    EXPECT_EQ(run("image properties"), kExitUsage);
    EXPECT_THAT(errors(), HasSubstr("there is no property file for D; there are: "));
    EXPECT_THAT(errors(),
                AllOf(HasSubstr(" B"), HasSubstr(" sub/C.INI"), HasSubstr(" sub/more/C.INI")))
        << "by path where the name alone would not tell";
    definitions = session.folder.path("sub/B.INI");
    EXPECT_EQ(run("image properties"), kExitUsage) << "which of the two?";
    controller.clear();
    EXPECT_EQ(run("image properties"), kExitSuccess);
    definitions = session.folder.path("config");
    EXPECT_EQ(run("image properties"), kExitUsage);
    EXPECT_THAT(errors(), HasSubstr("cannot be found"));
}

} // namespace

} // namespace vornadel::test
