#pragma once

#include <array>
#include <istream>
#include <streambuf>

namespace vornadel
{

/// Standard input as a stream that ends when a signal has stopped the program: a read would wait
/// for input although nobody wants it any more. It is bad after an error of a read.
class StandardInput final : public std::istream
{
public:
    StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

private:
    class Buffer final : public std::streambuf
    {
        int_type underflow() override;

        std::array<char, 65536> m_bytes{};
    };

    Buffer m_buffer;
};

} // namespace vornadel
