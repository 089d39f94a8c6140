#include "RoomTable.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// A temporary source tree for each test.
class SourceTree : public ::testing::Test
{
protected:
    void write(const std::string& file, const std::string& text)
    {
        fs::create_directories((m_root / file).parent_path());
        std::ofstream(m_root / file) << text;
    }

    std::vector<std::string> wrong() const { return wrongIncludes(m_root, kRooms); }

    const TemporaryFolder m_folder;
    const fs::path m_root = m_folder.path();
};

TEST(Includes, OfTheWholeHouseFollowItsArrows)
{
    EXPECT_THAT(wrongIncludes(SOURCE_ROOT, kRooms), IsEmpty());
}

TEST(Includes, AreReadInEveryRoom)
{
    for (const auto& [room, links] : kLinks) {
        EXPECT_THAT(sourcesOf(SOURCE_ROOT, kRooms, room), Not(IsEmpty())) << room;
    }
    EXPECT_THAT(sourcesOf(SOURCE_ROOT, kRooms, "hub"), Contains("hub/HubTransport.h"));
    EXPECT_THAT(sourcesOf(SOURCE_ROOT, kRooms, "platform_linux"),
                Contains("platform/linux/LibusbBus.h"));
}

/// The simulated hub must not share a mistake with the tool.
TEST(Includes, OfTheSimulatedHubTakeNothingFromBaseButFiles)
{
    std::vector<std::string> taken;
    for (const std::string& file : sourcesOf(SOURCE_ROOT, kRooms, "sim")) {
        std::ifstream source(fs::path(SOURCE_ROOT) / file);
        for (std::string line; std::getline(source, line);) {
            if (line.find("#include \"base/") != std::string::npos) {
                taken.push_back(line);
            }
        }
    }
    EXPECT_THAT(taken,
                ElementsAre("#include \"base/Descriptor.h\"", "#include \"base/WholeFile.h\""));
}

TEST(Sources, AllLieInARoom) { EXPECT_THAT(homelessSources(SOURCE_ROOT, kRooms), IsEmpty()); }

TEST(Sources, AskForTheirSystemInThePlatformAlone)
{
    EXPECT_THAT(linesThatAskForTheSystem(SOURCE_ROOT), IsEmpty());
}

TEST_F(SourceTree, NamesTheFileAndTheLineOfEachMistake)
{
    write("hub/a/b/Deep.ipp",
          "// first\n#include \"app/Window.h\"\n\n#include \"standins/sim/Hub.h\"\n");
    write("hub/Transport.cpp",
          "#include <vector>\n#  if defined(__APPLE__) && 1\n#endif // __APPLE__\n");
    write("platform/native/Native.h", "#ifdef __APPLE__\n#endif\n");
    write("tests/hub/Test.cpp", "#include \"sim/Hub.h\"\n#elif TARGET_OS_MAC\n#endif\n");
    write("build/dev/Generated.cpp", "");
    write("hob/Typo.cpp", "");
    write("stray.cpp", "");
    EXPECT_THAT(wrong(), ElementsAre("hub/a/b/Deep.ipp:2: room hub may not use room app",
                                     "hub/a/b/Deep.ipp:4: room hub may not use room sim"));
    EXPECT_THAT(linesThatAskForTheSystem(m_root),
                ElementsAre("hub/Transport.cpp:2", "tests/hub/Test.cpp:2"));
    EXPECT_THAT(homelessSources(m_root, kRooms), ElementsAre("hob/Typo.cpp", "stray.cpp"));
}

TEST_F(SourceTree, FindsEachIncludeThatIsNotAllowed)
{
    const struct {
        const char* file;
        const char* line;
        const char* complaint;
    } rows[] = {
        {"standins/sim/Hub.cpp", "#include <hub/T.h>", "sim may not use room hub"},
        {"standins/sim/Hub.cpp", " #\tinclude\"hub/T.h\"", "sim may not use room hub"},
        {"hub/T.cpp", "#include \"Transport.h\"", "written from the root"},
        {"hub/T.cpp", "#include \"tests/support/VirtualClock.h\"", "not in a room"},
        {"hub/T.cpp", "#include HEADER", "cannot be checked"},
        {"app/Tool.cpp", "#include \"platform/native/Native.h\"", "chosen in main.cpp"},
        {"app/Tool.cpp", "#include \"standins/sim/Hub.h\"", "chosen in main.cpp"},
        {"hub/T.cpp", "#include <libusb.h>", "hub may not use LibUSB::LibUSB"},
        {"platform/posix/T.cpp", "#include <systemd/sd-bus.h>", "SdBus::Headers"},
        {"hub/T.h", "#include <QString>", "hub may not use Qt6::Widgets"},
        {"app/A.cpp", "#include <iniparser/iniparser.h>", "iniparser::iniparser"},
        {"platform/linux/Bus.cpp", "#import <IOKit/usb/IOUSBLib.h>", "MacOS::Interfaces"},
        {"hub/T.cpp", "#include <gtest/gtest.h>", "GTest::gtest"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        write(row.file, std::string(row.line) + "\n");
        EXPECT_THAT(wrong(), ElementsAre(HasSubstr(row.complaint)));
        fs::remove(m_root / row.file);
    }
}

} // namespace
} // namespace vornadel::test
