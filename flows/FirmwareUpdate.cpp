#include "flows/FirmwareUpdate.h"

#include "flows/FlowRun.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace vornadel
{

namespace
{

bool writeAndVerify(const FwImage& image, FlowRun& run)
{
    if (!image.loaded) {
        return run.fail(Step::Open, Cause::WrongImage);
    }
    const std::span<const std::uint8_t> bytes(image.data.get(),
                                              static_cast<std::size_t>(image.size));
    const std::unique_ptr<std::uint8_t[]> memory(new (std::nothrow) std::uint8_t[bytes.size()]);
    if (!memory) {
        return run.fail(Step::Open, Cause::WrongImage); // larger than any flash
    }
    const std::span<std::uint8_t> readBack(memory.get(), bytes.size());
    // Every byte of the buffer starts different from the image, so that a hub which confirms a read
    // but delivers nothing fails the comparison.
    std::transform(bytes.begin(), bytes.end(), readBack.begin(),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    return run.openRom() && run.erase() && run.write(bytes) && run.read(readBack) &&
           run.verify(bytes, readBack) && run.restart();
}

} // namespace

bool updateFirmware(const FwImage& image, const std::string& imageName, FlowReporter& reporter)
{
    FlowRun run({FlowKind::Update, imageName, image.size}, reporter);
    writeAndVerify(image, run);
    return run.end();
}

} // namespace vornadel
