// What vornadelctl costs: its start, and a look at an image compared with reading the file.

#include "bench/Table.h"
#include "cli/Verbs.h"
#include "platform/native/NativePlatform.h"
#include "standins/sim/DemoImage.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace vornadel;
using bench::Series;

constexpr int kStarts = 200;
constexpr int kReads = 5000;
constexpr double kStartMilliseconds = 5;
constexpr double kMostLibraries = 12;
constexpr double kInfoRatio = 1.5;

double secondsSince(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

[[noreturn]] void giveUp(const char* what)
{
    std::fprintf(stderr, "bench_cli: %s\n", what);
    std::exit(EXIT_FAILURE);
}

/// From the start of the process to its end, with its output thrown away.
double millisecondsOfARun()
{
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = VORNADELCTL;
    std::string option = "--version";
    std::array<char*, 3> arguments = {program.data(), option.data(), nullptr};
    const auto begin = std::chrono::steady_clock::now();
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, VORNADELCTL, &files, nullptr, arguments.data(), environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
        giveUp("vornadelctl --version did not run");
    }
    const double seconds = secondsSince(begin);
    posix_spawn_file_actions_destroy(&files);
    return 1000 * seconds;
}

/// The libraries that the loader would load, without itself and the kernel's page.
double libraries()
{
    std::FILE* const list = popen("LD_TRACE_LOADED_OBJECTS=1 " VORNADELCTL, "r");
    if (list == nullptr) {
        giveUp("the libraries cannot be listed");
    }
    int count = 0;
    std::array<char, 1024> line{};
    while (std::fgets(line.data(), line.size(), list) != nullptr) {
        count += std::string(line.data()).find(" => ") != std::string::npos ? 1 : 0;
    }
    pclose(list);
    return count;
}

double microsecondsOfReading(const std::string& path)
{
    const auto begin = std::chrono::steady_clock::now();
    std::vector<char> bytes(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const double seconds = secondsSince(begin);
    if (bytes[0x7E00] != '\xAA') {
        giveUp("the file was read wrongly");
    }
    return 1e6 * seconds;
}

/// The verb alone, as it runs after the start of the program.
double microsecondsOfInfo(const std::string& path, Platform& platform)
{
    CommandLine line;
    line.verb = verbCalled("image info");
    line.image = path;
    const std::string none;
    const ToolConfig configuration;
    const Environment env;
    const Log log;
    StopRequest stop;
    CommandResult result;
    std::ostringstream out;
    std::ostringstream err;
    const Command command{line, platform, none, none, configuration, out,   out,
                          err,  env,      stop, log,  nullptr,       result};
    const auto begin = std::chrono::steady_clock::now();
    const int status = line.verb->run(command);
    const double seconds = secondsSince(begin);
    if (status != kExitSuccess || out.str().find("Demo Hub") == std::string::npos) {
        giveUp("image info failed");
    }
    return 1e6 * seconds;
}

} // namespace

int main()
{
    Series starts;
    for (int i = 0; i < kStarts; ++i) {
        starts.add(millisecondsOfARun());
    }
    bench::printTable("vornadelctl --version, from start to end", "milliseconds",
                      {rowOf("start", starts, kStartMilliseconds)});
    bench::printTable("Shared libraries of vornadelctl", "libraries",
                      {{"libraries", 1, kMostLibraries, libraries(), 0}});

    std::string path = (std::filesystem::temp_directory_path() / "bench-cli-XXXXXX").string();
    const int file = ::mkstemp(path.data());
    const std::vector<std::uint8_t> image = demoImage();
    if (file < 0 ||
        ::write(file, image.data(), image.size()) != static_cast<ssize_t>(image.size())) {
        giveUp("there is no file to read");
    }
    ::close(file);
    NativePlatform machine;
    Platform platform = machine.platform();
    Series reading;
    Series info;
    for (int i = 0; i < kReads; ++i) { // alternately, so that other load hits both
        reading.add(microsecondsOfReading(path));
        info.add(microsecondsOfInfo(path, platform));
    }
    std::filesystem::remove(path);
    bench::printTable("image info of 32 KiB, without the start", "microseconds",
                      {rowOf("reading the file", reading, 0),
                       rowOf("image info", info, 0),
                       {"image info / reading (ratio)", kReads, kInfoRatio,
                        info.median() / reading.median(), 0}});
    return 0;
}
