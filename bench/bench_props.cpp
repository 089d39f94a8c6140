// Reading the fullest property file there can be, against the INI reader alone; and looking for such files in a crowd.

#include "bench/Table.h"
#include "props/PropertyFile.h"
#include "props/PropertyFiles.h"

#include <iniparser/iniparser.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

using namespace vornadel;
using bench::Row;
using bench::Series;
namespace fs = std::filesystem;

constexpr int kRuns = 15;
constexpr int kCrowd = 100'000;

[[noreturn]] void giveUp(const std::string& why)
{
    std::fprintf(stderr, "bench_props: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

/// A folder of the benchmark's own.
class Folder
{
public:
    Folder()
    {
        std::string pattern = (fs::temp_directory_path() / "bench_props-XXXXXX").string();
        const char* made = mkdtemp(pattern.data());
        if (made == nullptr) {
            giveUp("no temporary folder");
        }
        m_path = made;
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }

    std::string operator/(const std::string& name) const { return m_path + '/' + name; }
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// 255 sections with all their 40 keys.
void writeFullFile(const std::string& path)
{
    std::ofstream file(path);
    for (int number = 0; number < 255; ++number) {
        std::array<char, 64> heading{};
        std::snprintf(heading.data(), heading.size(), "[HubFF_USB_%02X]\n", static_cast<unsigned>(number));
        file << heading.data() << "PropName = Property " << number
             << "\nPageName = System\nGroupName = Group\nPropDesp = \"What the property is for, in a few "
                "words.\"\n"
                "PropAddr = 11\nPropMask = 1\nBaseOnAddr = 12\nBaseOnMask = 16\n";
        for (int slot = 0; slot < 16; ++slot) {
            std::array<char, 96> option{};
            std::snprintf(option.data(), option.size(), "PropOption_%02X = Option %d\nDataOption_%02X = %d\n",
                          static_cast<unsigned>(slot), slot, static_cast<unsigned>(slot), slot);
            file << option.data();
        }
    }
}

template <typename Work>
double millisecondsOf(Work work)
{
    const auto before = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - before).count();
}

void readFile(const std::string& path)
{
    std::string problem;
    if (readPropertyFile(path, problem).size() != 255) {
        giveUp("the file was read wrongly: " + problem);
    }
}

void loadAlone(const std::string& path)
{
    dictionary* entries = iniparser_load(path.c_str());
    if (entries == nullptr) {
        giveUp("the INI reader does not read the file");
    }
    iniparser_freedict(entries);
}

void benchReading(const Folder& folder)
{
    const std::string path = folder / "Full.INI";
    writeFullFile(path);
    Series alone;
    Series whole;
    for (int run = 0; run < kRuns; ++run) {
        alone.add(millisecondsOf([&] { loadAlone(path); }));
        whole.add(millisecondsOf([&] { readFile(path); }));
    }
    bench::printTable("A property file of 255 sections", "milliseconds",
                      {rowOf("the INI reader alone", alone, 0), rowOf("read into properties", whole, 100)});
    bench::printTable("The same, against the INI reader alone", "times",
                      {Row{"read into properties", static_cast<std::size_t>(kRuns), 1.3,
                           whole.median() / alone.median(), 0}});
}

void benchSearch(const Folder& folder)
{
    for (int file = 0; file < kCrowd; ++file) {
        const std::string sub = folder / std::to_string(file / 1000);
        if (file % 1000 == 0) {
            fs::create_directory(sub);
        }
        std::ofstream(sub + '/' + std::to_string(file) + ".txt");
    }
    Series search;
    for (int run = 0; run < kRuns; ++run) {
        search.add(millisecondsOf([&] {
            if (findPropertyFiles(folder.path()).size() != 1) {
                giveUp("the search found something else");
            }
        }));
    }
    bench::printTable("Looking for property files", "milliseconds",
                      {rowOf("among 100,000 other files", search, 300)});
}

} // namespace

int main()
{
    const Folder folder;
    benchReading(folder);
    benchSearch(folder);
    return 0;
}
