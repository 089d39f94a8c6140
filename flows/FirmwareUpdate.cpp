#include "flows/FirmwareUpdate.h"

#include "flows/FlowRun.h"
#include "hub/FlashGeometry.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace vornadel
{

namespace
{

/// Restarts the hub into the image that is in its flash now.
bool restartInto(const FwImage& image, FlowRun& run)
{
    if (image.loaded) {
        run.session().expectSerialNumber(FwText_AsReported(image.serial));
    } else {
        run.session().expectAnySerialNumber();
    }
    return run.restart() && run.runs(image);
}

/// `image` is what the bytes hold; it need not be loaded.
void writeAndVerify(std::span<const std::uint8_t> bytes, const FwImage& image, FlowRun& run)
{
    const std::unique_ptr<std::uint8_t[]> memory(new (std::nothrow) std::uint8_t[bytes.size()]);
    if (!memory) {
        run.fail({.step = Step::Open, .cause = Cause::WrongImage}); // larger than any flash
        return;
    }
    const std::span<std::uint8_t> readBack(memory.get(), bytes.size());
    // Every byte of the buffer starts different from the image, so that a hub which confirms a read
    // but delivers nothing fails the comparison.
    std::transform(bytes.begin(), bytes.end(), readBack.begin(),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    if (run.openRom() && run.save(bytes, FlashState::Verified) &&
        (run.isUpToDate() ||
         (run.erase() && run.write(bytes) && run.read(readBack) && run.verify(bytes, readBack)))) {
        restartInto(image, run);
    }
}

} // namespace

bool updateFirmware(const FwImage& image, const std::string& imageName, FlowReporter& reporter,
                    const FlowOptions& options)
{
    FlowRun run({FlowKind::Update, imageName, image.size}, reporter, options);
    if (image.loaded) {
        writeAndVerify({image.data.get(), static_cast<std::size_t>(image.size)}, image, run);
    } else {
        run.fail({.step = Step::Open, .cause = Cause::WrongImage});
    }
    return run.end();
}

bool restoreFlash(std::span<const std::uint8_t> bytes, const std::string& name,
                  FlowReporter& reporter, const FlowOptions& options)
{
    const auto size = static_cast<std::int32_t>(bytes.size());
    FlowRun run({FlowKind::Restore, name, size}, reporter, options);
    if (bytes.empty() || bytes.size() > kFlashSize) {
        run.fail({.step = Step::Open, .cause = Cause::WrongImage});
    } else {
        FwImage image;
        FwImage_Parse(image, bytes.data(), size);
        writeAndVerify(bytes, image, run);
    }
    return run.end();
}

} // namespace vornadel
