#include "platform/linux/OsRelease.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr std::string_view kKey = "VERSION_ID=";
constexpr std::string_view kBlanks = " \t\r";

/// Appends what `file` holds; 0 or an errno.
int readAll(int file, std::string& text)
{
    struct stat status {
    };
    if (fstat(file, &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    std::array<char, 4096> buffer{};
    while (text.size() < OsRelease::kMaxFileSize) {
        const ssize_t count = ::read(file, buffer.data(), buffer.size());
        if (count == 0) {
            return 0;
        }
        if (count > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return EFBIG;
}

/// 0 or an errno.
int readFile(const std::string& path, std::string& text)
{
    // O_NONBLOCK, so that a FIFO does not block us.
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        return errno;
    }
    const int error = readAll(file, text);
    ::close(file);
    return error;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view unquoted(std::string_view value)
{
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

std::optional<std::string_view> findVersionId(std::string_view text)
{
    std::optional<std::string_view> value;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = trimmed(text.substr(0, end));
        if (line.starts_with(kKey)) {
            value = unquoted(line.substr(kKey.size()));
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return value;
}

/// One to three numbers separated by dots; ignores what follows a third dot.
bool parseVersion(std::string_view text, SystemVersionNumbers& numbers)
{
    const char* position = text.data();
    const char* const end = position + text.size();
    for (unsigned* part : {&numbers.major, &numbers.minor, &numbers.bugfix}) {
        const auto [after, error] = std::from_chars(position, end, *part);
        if (error != std::errc()) {
            return false;
        }
        if (after == end) {
            return true;
        }
        if (*after != '.') {
            return false;
        }
        position = after + 1;
    }
    return true;
}

} // namespace

SystemVersionNumbers OsRelease::read()
{
    std::string text;
    int error = ENOENT;
    for (const std::string& path : m_paths) {
        text.clear();
        error = readFile(path, text);
        if (error == 0) {
            break;
        }
    }
    if (error != 0) {
        return {.error = error};
    }
    const std::optional<std::string_view> value = findVersionId(text);
    if (!value) {
        return {.error = ENOENT};
    }
    SystemVersionNumbers numbers;
    if (!parseVersion(*value, numbers)) {
        return {.error = EINVAL};
    }
    return numbers;
}

} // namespace vornadel
