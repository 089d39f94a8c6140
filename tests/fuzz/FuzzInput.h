#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

/// Every fuzz target defines this; the fuzzer and the corpus test call it with one input. An input
/// that shows a defect ends the process. Always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vornadel::test
{

/// Ends the process if a condition does not hold; the fuzzer then keeps the input.
inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "This does not hold: %s\n", what);
        std::abort();
    }
}

/// Reads an input from its start. Past its end there are only zeros and empty texts.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_rest(data, size) {}

    std::uint8_t byte() { return m_rest.empty() ? std::uint8_t{0} : take(1).front(); }

    /// High byte first.
    std::uint16_t word()
    {
        const unsigned high = byte();
        return static_cast<std::uint16_t>(high << 8 | byte());
    }

    /// One byte with the length, then that many characters, or as many as are left.
    std::string text()
    {
        const std::span<const std::uint8_t> taken = take(byte());
        return {taken.begin(), taken.end()};
    }

    std::span<const std::uint8_t> rest() { return take(m_rest.size()); }

private:
    std::span<const std::uint8_t> take(std::size_t count)
    {
        const std::span<const std::uint8_t> taken = m_rest.first(std::min(count, m_rest.size()));
        m_rest = m_rest.subspan(taken.size());
        return taken;
    }

    std::span<const std::uint8_t> m_rest;
};

/// A regular file in memory, fast enough for thousands of inputs a second.
class MemoryFile
{
public:
    MemoryFile() : m_file(memfd_create("fuzz input", MFD_CLOEXEC))
    {
        require(m_file >= 0, "the system gives a file in memory");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(m_file); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(m_file); }

    void write(std::span<const std::uint8_t> bytes) const
    {
        require(ftruncate(m_file, 0) == 0, "the file can be emptied");
        const ssize_t written = pwrite(m_file, bytes.data(), bytes.size(), 0);
        require(written == static_cast<ssize_t>(bytes.size()), "the file takes all bytes");
    }

private:
    int m_file;
};

} // namespace vornadel::test
