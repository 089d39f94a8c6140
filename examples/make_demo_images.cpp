#include "standins/sim/DemoImage.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

namespace
{

struct DemoFile {
    const char* name;
    std::uint16_t version;
};

constexpr std::array<DemoFile, 2> kDemoFiles = {{
    {"demo-1.00.bin", vornadel::kDemoVersion100},
    {"demo-1.01.bin", vornadel::kDemoVersion101},
}};

bool write(const std::filesystem::path& path, const std::vector<std::uint8_t>& image)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (const std::uint8_t byte : image) {
        file.put(static_cast<char>(byte));
    }
    file.close();
    return !file.fail();
}

} // namespace

/// make_demo_images [FOLDER]: writes demo-1.00.bin and demo-1.01.bin into the folder, by default
/// the current one.
int main(int argc, char** argv)
{
    if (argc > 2) {
        std::fputs("usage: make_demo_images [FOLDER]\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = argc == 2 ? argv[1] : ".";
    for (const DemoFile& demo : kDemoFiles) {
        const std::filesystem::path path = folder / demo.name;
        if (!write(path, vornadel::demoImage(demo.version))) {
            std::fprintf(stderr, "make_demo_images: cannot write %s\n", path.c_str());
            return 1;
        }
    }
    return 0;
}
