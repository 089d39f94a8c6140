#pragma once

#include "flows/FlowReporter.h"

#include <cstdint>
#include <span>

namespace vornadel
{

/// One run of a flow, step by step. Each step tells the reporter that it begins, and answers
/// whether it succeeded. The first failure ends the flow: the caller takes no further step.
class FlowRun
{
public:
    FlowRun(const FlowStart& start, FlowReporter& reporter);
    FlowRun(const FlowRun&) = delete;
    FlowRun& operator=(const FlowRun&) = delete;

    bool openRom();
    bool erase();
    bool write(std::span<const std::uint8_t> bytes); ///< to address 0 and on
    bool read(std::span<std::uint8_t> bytes);        ///< from address 0 on
    bool verify(std::span<const std::uint8_t> written, std::span<const std::uint8_t> readBack);
    bool restart();

    /// Notes a failure and answers false.
    bool fail(Step step, Cause cause, std::uint32_t address = 0);

    /// Tells the result, closes the hub, and answers whether the flow succeeded. To be called on
    /// every way out.
    bool end();

private:
    template <typename Byte, typename Transfer>
    bool transferAll(Step step, std::span<Byte> bytes, Transfer transfer);

    FlowReporter& m_reporter;
    FlowResult m_result;
};

} // namespace vornadel
