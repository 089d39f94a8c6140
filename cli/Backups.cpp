#include "cli/Backups.h"

#include "base/Descriptor.h"
#include "base/WholeFile.h"
#include "cli/CommandLine.h"
#include "cli/ImageFile.h"

#include <nettle/sha2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".bin";
constexpr char kBetweenParts = '_';
constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::size_t kHashDigits = 2UL * SHA256_DIGEST_SIZE;
constexpr std::size_t kTimeLength = std::string_view("20261122T134715.123Z").size();
/// A longer part of a name is replaced by its hash, because a name has at most 255 bytes.
constexpr std::size_t kLongestPart = 72;
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kOwnersFolder = 0700;
/// No flash is larger, by far.
constexpr std::uintmax_t kLargestBackup = 16UL * 1024UL * 1024UL;

std::string hashOf(std::span<const std::uint8_t> bytes)
{
    sha256_ctx context{};
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_init(&context);
    sha256_update(&context, bytes.size(), bytes.data());
    sha256_digest(&context, digest.size(), digest.data());
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += kHexDigits[byte >> 4];
        text += kHexDigits[byte & 0x0F];
    }
    return text;
}

bool isPlain(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-';
}

/// A text as a part of a name: two texts never become the same part.
std::string partOf(const std::string& text)
{
    if (text.empty()) {
        return "-";
    }
    std::string part;
    for (const char c : text) {
        if (c == '/') {
            part += '+';
        } else if (isPlain(c) && text != "-") {
            part += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            part += '%';
            part += kHexDigits[byte >> 4];
            part += kHexDigits[byte & 0x0F];
        }
    }
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    return part.size() <= kLongestPart ? part : "%%" + hashOf({bytes, text.size()});
}

std::string timeText(Environment::Time time)
{
    using std::chrono::milliseconds;
    const auto sinceEpoch = std::chrono::floor<milliseconds>(time).time_since_epoch().count();
    const auto seconds = static_cast<std::time_t>(sinceEpoch / 1000);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y%m%dT%H%M%S", &utc);
    const std::string thousandths = std::to_string(1000 + sinceEpoch % 1000);
    return date.data() + ('.' + thousandths.substr(1)) + 'Z';
}

std::string because(const std::string& path, int errorNumber)
{
    return path + ": " + std::generic_category().message(errorNumber);
}

/// Creates a folder with those above it. Writes their names to disk, or a backup could be lost with
/// its folder.
bool makeFolder(const fs::path& folder, std::string& problem)
{
    int made = ::mkdir(folder.c_str(), kOwnersFolder);
    if (made != 0 && errno == ENOENT && folder.has_parent_path() &&
        folder.parent_path() != folder) {
        if (!makeFolder(folder.parent_path(), problem)) {
            return false;
        }
        made = ::mkdir(folder.c_str(), kOwnersFolder);
    }
    if (made == 0) {
        const fs::path above = folder.has_parent_path() ? folder.parent_path() : ".";
        const Descriptor file(::open(above.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        ::fsync(file.get());
        return true;
    }
    if (errno == EEXIST) {
        return true; // if it is no folder, creating the file will tell
    }
    problem = because(folder.string(), errno);
    return false;
}

} // namespace

std::string BackupName::text() const
{
    std::string name = place;
    for (const std::string* const part : {&serialNumber, &time, &hash}) {
        name += kBetweenParts + *part;
    }
    return name + std::string(kEnding);
}

std::optional<BackupName> BackupName::in(const std::string& fileName)
{
    if (!fileName.ends_with(kEnding)) {
        return {};
    }
    std::vector<std::string> parts(1);
    for (const char c : fileName.substr(0, fileName.size() - kEnding.size())) {
        if (c == kBetweenParts) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    if (parts.size() != 4 || parts[2].size() != kTimeLength || parts[3].size() != kHashDigits ||
        parts[3].find_first_not_of(kHexDigits) != std::string::npos) {
        return {};
    }
    return BackupName{parts[0], parts[1], parts[2], parts[3]};
}

Backups::Backups(std::string folder) : m_folder(std::move(folder)) {}

bool Backups::canSave(std::string& problem) const
{
    if (m_folder.empty()) {
        problem = "neither XDG_STATE_HOME nor HOME says where";
        return false;
    }
    return makeFolder(m_folder, problem) &&
           canBeSaved(fs::path(m_folder) / ("new" + std::string(kEnding)), problem);
}

std::string Backups::save(const BackupOwner& owner, Environment::Time now,
                          std::span<const std::uint8_t> flash, std::string& problem) const
{
    if (!canSave(problem)) {
        return {};
    }
    const BackupName name{partOf(owner.place), partOf(owner.serialNumber), timeText(now),
                          hashOf(flash)};
    const std::string path = fs::path(m_folder) / name.text();
    return saveNewFile(path, flash, problem, kOwnerOnly) ? path : std::string();
}

std::string Backups::newestOf(const BackupOwner& owner) const
{
    const std::string place = partOf(owner.place);
    const std::string serialNumber = partOf(owner.serialNumber);
    BackupName newest;
    std::error_code failed;
    for (fs::directory_iterator entry(m_folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const std::optional<BackupName> name = BackupName::in(entry->path().filename().string());
        if (name && name->time > newest.time &&
            (owner.serialNumber.empty() ? name->place == place
                                        : name->serialNumber == serialNumber)) {
            newest = *name;
        }
    }
    return newest.time.empty() ? std::string() : (fs::path(m_folder) / newest.text()).string();
}

Backups backupsOf(const CommandLine& line, const Environment& env)
{
    if (!line.backupFolder.empty()) {
        return Backups(line.backupFolder);
    }
    const std::string state = stateFolder(env);
    return Backups(state.empty() ? state : state + "/backups");
}

bool readBackup(const std::string& path, std::vector<std::uint8_t>& bytes, std::string& problem)
{
    std::error_code failed;
    if (!fs::is_regular_file(path, failed) || fs::file_size(path, failed) > kLargestBackup) {
        problem = path + ": " + whyUnread(path);
        return false;
    }
    std::ifstream file(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (!file || bytes.empty()) {
        problem = path + ": " + whyUnread(path);
        return false;
    }
    const std::optional<BackupName> name = BackupName::in(fs::path(path).filename().string());
    if (name && name->hash != hashOf(bytes)) {
        problem = path + ": its content does not have the hash in its name, so it is damaged";
        return false;
    }
    return true;
}

} // namespace vornadel
