#pragma once

#include <unistd.h>
#include <utility>

namespace vornadel
{

/// A file descriptor that is closed at the end, or none.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor()
    {
        if (valid()) {
            ::close(m_number);
        }
    }

    bool valid() const { return m_number >= 0; }
    int get() const { return m_number; } ///< -1 for none

private:
    int m_number;
};

} // namespace vornadel
