#pragma once

#include "flows/FlowReporter.h"

#include <cstdint>
#include <span>

namespace vornadel
{

/// One run of a flow, step by step. Each step reports its start and returns whether it succeeded.
/// After the first failure the caller takes no further step.
class FlowRun
{
public:
    FlowRun(const FlowStart& start, FlowReporter& reporter);
    FlowRun(const FlowRun&) = delete;
    FlowRun& operator=(const FlowRun&) = delete;

    bool openRom();
    bool erase();
    bool write(std::span<const std::uint8_t> bytes); ///< from address 0 on
    bool read(std::span<std::uint8_t> bytes);        ///< from address 0 on
    bool verify(std::span<const std::uint8_t> written, std::span<const std::uint8_t> readBack);
    bool restart();

    /// Records a failure and returns false.
    bool fail(Step step, Cause cause, std::uint32_t address = 0);

    /// Reports the result, closes the hub, and returns whether the flow succeeded. Call it on every
    /// path out.
    bool end();

private:
    template <typename Byte, typename Transfer>
    bool transferAll(Step step, std::span<Byte> bytes, Transfer transfer);

    FlowReporter& m_reporter;
    FlowResult m_result;
};

} // namespace vornadel
