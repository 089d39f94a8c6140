#include "flows/FlashVerify.h"

#include "flows/FlowRun.h"
#include "hub/FlashGeometry.h"

#include <algorithm>

namespace vornadel
{

namespace
{

void readAndCompare(std::span<const std::uint8_t> image, std::vector<std::uint8_t>& flash,
                    FlowRun& run)
{
    std::vector<std::uint8_t> bytes(kFlashSize);
    // Every byte that is compared starts different, so that a hub which confirms a read but
    // delivers nothing fails the comparison.
    std::transform(image.begin(), image.end(), bytes.begin(),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    if (!run.openRom() || !run.read(bytes)) {
        run.sendBack();
        return;
    }
    flash = bytes;
    if (run.verify(image, std::span(bytes).first(image.size()))) {
        FwImage read;
        FwImage_Parse(read, bytes.data(), static_cast<std::int32_t>(bytes.size()));
        static_cast<void>(run.restart() && run.runs(read));
    } else {
        run.readAgain(bytes);
        run.sendBack();
    }
}

} // namespace

bool verifyFlash(std::span<const std::uint8_t> image, const std::string& imageName,
                 std::vector<std::uint8_t>& flash, FlowReporter& reporter,
                 const FlowOptions& options)
{
    FlowRun run({FlowKind::Verify, imageName, static_cast<std::int32_t>(image.size())}, reporter,
                options);
    if (image.empty() || image.size() > kFlashSize) {
        run.fail({.step = Step::Open, .cause = Cause::WrongImage});
    } else {
        readAndCompare(image, flash, run);
    }
    return run.end();
}

} // namespace vornadel
