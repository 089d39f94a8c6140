#pragma once

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <malloc.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/// Bytes in use on the sanitizers' own heap.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // NOLINT: their name for it
#endif

namespace vornadel::test
{

/// The resources that a process holds.
struct Resources {
    std::size_t bytes;       ///< of the heap, in use
    std::size_t descriptors; ///< open files

    static Resources now()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        // mallinfo2() does not include this heap.
        const std::size_t bytes = __sanitizer_get_current_allocated_bytes();
#else
        const struct mallinfo2 info = mallinfo2();
        const std::size_t bytes = info.uordblks + info.hblkhd;
#endif
        std::size_t descriptors = 0;
        for ([[maybe_unused]] const auto& entry :
             std::filesystem::directory_iterator("/proc/self/fd")) {
            ++descriptors;
        }
        return {bytes, descriptors};
    }
};

/// Restarts the program, once, with a heap without per-thread caches, because caches count as in
/// use.
inline void insistOnAnExactHeap([[maybe_unused]] char** argv)
{
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    if (std::getenv("GLIBC_TUNABLES") == nullptr) {
        setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
        execv("/proc/self/exe", argv);
    }
#endif
}

} // namespace vornadel::test
