#pragma once

#include <cstddef>
#include <pthread.h>

namespace vornadel::test
{

/// While it lives, no thread can be started: each would need a stack larger than the address space.
class NoMoreThreads
{
public:
    NoMoreThreads()
    {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t vast = m_before;
        pthread_attr_setstacksize(&vast, std::size_t{1} << 50);
        pthread_setattr_default_np(&vast);
    }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;
    ~NoMoreThreads()
    {
        pthread_setattr_default_np(&m_before);
        pthread_attr_destroy(&m_before);
    }

private:
    pthread_attr_t m_before{};
};

} // namespace vornadel::test
