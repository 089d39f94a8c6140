#include "cli/Commands.h"

#include "base/WholeFile.h"
#include "cli/ConsoleReporter.h"
#include "config/ToolConfig.h"
#include "firmware/FwImage.h"
#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "flows/ScalarUpdate.h"
#include "hub/HubCommands.h"
#include "hub/HubDetection.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <memory>
#include <sstream>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

/// Four upper-case hex digits.
std::string hex4(unsigned number)
{
    std::ostringstream text;
    text << std::hex << std::uppercase << std::setw(4) << std::setfill('0') << number;
    return text.str();
}

/// Two stored bytes, high byte first; a dash for a null position.
std::string storedNumber(const std::uint8_t* position)
{
    return position == nullptr ? "-" : hex4(static_cast<unsigned>(position[0] << 8 | position[1]));
}

/// Bytes outside printable ASCII would reach the terminal as control codes.
std::string printable(const FwText& text)
{
    std::string shown(text.data());
    for (char& c : shown) {
        if (c < ' ' || c > '~') {
            c = '?';
        }
    }
    return shown;
}

/// Why an image file could not be read.
std::string whyUnread(const std::string& path)
{
    struct stat info = {};
    if (::stat(path.c_str(), &info) != 0) {
        return std::generic_category().message(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return S_ISDIR(info.st_mode) ? "it is a folder" : "it is not a regular file";
    }
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) {
        return std::generic_category().message(errno);
    }
    return info.st_size == 0 ? "it is empty" : "it cannot be read, or is too large";
}

/// Loads an image into a fresh record. Reports why a file could not be read, because the flows
/// would only call it a wrong firmware file.
bool loadImage(FwImage& image, const std::string& path, std::ostream& err)
{
    const bool loaded = FwImage_LoadFile(image, path);
    if (!loaded && image.data == nullptr) {
        err << path << ": " << whyUnread(path) << '\n';
    }
    return loaded;
}

int update(const std::string& path, std::ostream& out, std::ostream& err, bool terminal)
{
    FwImage image;
    loadImage(image, path, err);
    ConsoleReporter reporter(out, err, terminal);
    return updateFirmware(image, path, reporter) ? kExitSuccess : kExitFailure;
}

/// The image lies beside the configuration file.
int scalar(const std::string& configFile, const ToolConfig& config, std::ostream& out,
           std::ostream& err, bool terminal)
{
    const std::filesystem::path beside = std::filesystem::path(configFile).parent_path();
    const std::string folder = beside.empty() ? "." : beside.string();
    FwImage image;
    if (config.fwbinPath.empty()) {
        if (config.problem.empty()) { // otherwise that has been told
            err << configFile << ": FwBin names no image\n";
        }
    } else if (!loadConfiguredImage(image, folder, config.fwbinPath)) {
        const std::string path = folder + '/' + config.fwbinPath;
        err << path << ": " << whyUnread(path) << '\n';
    }
    ConsoleReporter reporter(out, err, terminal);
    return updateFirmware(image, config.fwbinPath, reporter) ? kExitSuccess : kExitFailure;
}

int readInto(const std::string& path, std::ostream& out, std::ostream& err, bool terminal)
{
    std::string problem;
    // Before the read, because a read restarts the hub and disconnects everything behind it.
    if (!canBeSaved(path, problem)) {
        err << "the flash was not read, because it could not be saved: " << problem << '\n';
        return kExitFailure;
    }
    std::vector<std::uint8_t> flash;
    ConsoleReporter reporter(out, err, terminal);
    if (!readFlash(flash, reporter)) {
        return kExitFailure;
    }
    if (!saveWholeFile(path, flash, problem)) {
        err << "the flash was read but could not be saved: " << problem << '\n';
        return kExitFailure;
    }
    out << "Saved " << flash.size() << " bytes to " << path << '\n' << std::flush;
    return kExitSuccess;
}

int erase(std::ostream& out, std::ostream& err, bool terminal)
{
    ConsoleReporter reporter(out, err, terminal);
    return eraseFlash(reporter) ? kExitSuccess : kExitFailure;
}

int showImage(const std::string& path, std::ostream& out, std::ostream& err)
{
    FwImage image;
    if (!loadImage(image, path, err)) {
        if (image.data != nullptr) {
            err << path << ": Firmware format error\n";
        }
        return kExitFailure;
    }
    const auto block = static_cast<unsigned>(image.descriptor - image.data.get());
    out << "file:          " << path << '\n'
        << "size:          " << image.size << " bytes\n"
        << "block at:      0x" << hex4(block) << '\n'
        << "version:       " << storedNumber(image.version) << '\n'
        << "VID:           " << storedNumber(image.vid) << '\n'
        << "SSPID:         " << storedNumber(image.sspid) << '\n'
        << "HSPID:         " << storedNumber(image.hspid) << '\n'
        << "manufacturer:  " << printable(image.manufacturer) << '\n'
        << "product:       " << printable(image.product) << '\n'
        << "serial number: " << printable(image.serial) << '\n'
        << "container ID:  " << printable(image.containerIdText) << '\n';
    return kExitSuccess;
}

const char* whyNotOpened(UsbOpenStatus status)
{
    switch (status) {
    case UsbOpenStatus::NoAccess:
        return "permission is missing";
    case UsbOpenStatus::Busy:
        return "another program has it open";
    case UsbOpenStatus::Gone:
        return "it has just left";
    default:
        return "the system gave no reason";
    }
}

int showHub(std::ostream& out, std::ostream& err)
{
    if (!Hub_FindDevice()) {
        err << "no supported hub is attached\n";
        return kExitFailure;
    }
    if (!Hub_OpenDevice()) {
        err << "a supported hub is attached, but it cannot be opened: "
            << whyNotOpened(Hub_LastOpenStatus()) << '\n';
        return kExitFailure;
    }
    HubStatusBlock status{};
    const bool read = Hub_ReadStatusBlock(status) == 0;
    Hub_CloseDevice();
    if (!read) {
        err << "the hub was opened, but it does not answer\n";
        return kExitFailure;
    }
    out << "firmware version: " << hex4(firmwareVersionIn(status)) << '\n'
        << "running:          " << (romCodeRunsBy(status) ? "ROM code" : "flash code") << '\n';
    return kExitSuccess;
}

int list(UsbBus& bus, std::ostream& out, std::ostream& err)
{
    const std::unique_ptr<UsbSearch> search = bus.search();
    if (!search) {
        err << "the USB devices cannot be listed\n";
        return kExitFailure;
    }
    std::unique_ptr<UsbDevice> device;
    for (auto step = search->next(device); step != UsbSearch::Step::End;
         step = search->next(device)) {
        if (step == UsbSearch::Step::Device) {
            const std::uint16_t vendor = device->vendorId();
            const std::uint16_t product = device->productId();
            const char* const mark = FindSupportedId(vendor, product) ? "  supported hub" : "";
            out << hex4(vendor) << ':' << hex4(product) << mark << '\n';
        }
    }
    search->release();
    return kExitSuccess;
}

} // namespace

int runCommand(const CommandLine& commandLine, Platform& platform, const std::string& resourcePath,
               std::ostream& out, std::ostream& err, bool terminal)
{
    const std::string configFile =
        commandLine.configFile.empty() ? resourcePath + "/config.ini" : commandLine.configFile;
    const ToolConfig config = readToolConfig(configFile);
    if (!config.problem.empty()) {
        const bool named = !commandLine.configFile.empty();
        err << (named ? "--config: " : "") << config.problem << '\n';
        if (named) {
            return kExitUsage;
        }
    }
    int status = kExitSuccess;
    switch (commandLine.verb) {
    // The result does not depend on whether the output can be written.
    case CommandLine::Verb::Update:
        return update(commandLine.image, out, err, terminal);
    case CommandLine::Verb::Scalar:
        return scalar(configFile, config, out, err, terminal);
    case CommandLine::Verb::Read:
        return readInto(commandLine.image, out, err, terminal);
    case CommandLine::Verb::Erase:
        return erase(out, err, terminal);
    // The output is the result.
    case CommandLine::Verb::Info:
        status =
            commandLine.image.empty() ? showHub(out, err) : showImage(commandLine.image, out, err);
        break;
    case CommandLine::Verb::List:
        status = list(platform.usb, out, err);
        break;
    }
    if (!out.flush()) {
        err << "the output could not be written\n";
        return kExitFailure;
    }
    return status;
}

} // namespace vornadel
