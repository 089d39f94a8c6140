// Reading or refusing the costliest property files, and finding property files among many others.

#include "bench/Table.h"
#include "props/PropertyFile.h"
#include "props/PropertyFiles.h"
#include "tests/support/FullPropertyFile.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

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

/// A temporary folder.
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

template <typename Work>
double millisecondsOf(Work work)
{
    const auto before = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - before)
        .count();
}

std::string repeated(const std::string& text, std::size_t size)
{
    std::string all;
    while (all.size() + text.size() <= size) {
        all += text;
    }
    return all;
}

void benchReading(const Folder& folder)
{
    struct Sample {
        const char* what;
        std::string text;
        std::size_t properties;
    };
    const Sample samples[] = {
        {"255 properties with all their keys", test::fullPropertyFile("System"), 255},
        {"as many other keys as there may be", test::distinctKeys(kMostPropertyLines), 0},
        {"1 MiB of keys, refused", test::distinctKeys(150'000).substr(0, kLargestPropertyFile), 0},
        {"1 MiB of comments", repeated(";x\n", kLargestPropertyFile), 0},
        {"1 MiB of blank lines", std::string(kLargestPropertyFile, '\n'), 0},
        {"1 MiB of backslashes, refused", std::string(kLargestPropertyFile, '\\'), 0},
        {"half a MiB in one line, refused", std::string(kLargestPropertyFile / 2, 'x'), 0},
    };
    const std::string path = folder / "Costly.INI";
    std::vector<Row> rows;
    for (const Sample& sample : samples) {
        std::ofstream(path, std::ios::binary) << sample.text;
        Series reading;
        for (int run = 0; run < kRuns; ++run) {
            reading.add(millisecondsOf([&] {
                std::string problem;
                if (readPropertyFile(path, problem).size() != sample.properties) {
                    giveUp("a file was read wrongly: " + problem);
                }
            }));
        }
        rows.push_back(rowOf(sample.what, reading, 100));
    }
    bench::printTable("Reading a property file", "milliseconds", rows);
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
