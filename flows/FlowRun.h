#pragma once

#include "firmware/FwImage.h"
#include "flows/FlowOptions.h"
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
    FlowRun(const FlowStart& start, FlowReporter& reporter, const FlowOptions& options);
    FlowRun(const FlowRun&) = delete;
    FlowRun& operator=(const FlowRun&) = delete;

    bool openRom();
    bool erase();
    bool write(std::span<const std::uint8_t> bytes); ///< from address 0 on
    bool read(std::span<std::uint8_t> bytes);        ///< from address 0 on
    bool verify(std::span<const std::uint8_t> written, std::span<const std::uint8_t> readBack);
    bool restart();

    // In a strict flow; otherwise they do nothing and return true:
    bool readAgain(std::span<const std::uint8_t> bytes); ///< compares with the first read
    bool eraseIsDone();                                  ///< whether the flash is blank
    bool runs(const FwImage& image); ///< whether the hub runs this firmware, after restart();
                                     ///< true if the image holds none

    bool isStrict() const { return m_session.isStrict(); }
    HubSession& session() { return m_session; }

    /// Records a failure and returns false.
    bool fail(const FlowResult& result);

    /// Reports the result, closes the hub, and returns whether the flow succeeded. Call it on every
    /// path out.
    bool end();

private:
    template <typename Byte, typename Transfer>
    bool transferAll(Step step, std::span<Byte> bytes, Transfer transfer);
    bool readSilently(Step step, std::span<std::uint8_t> bytes);
    bool failByHub(Step step, Cause cause, std::uint32_t address = 0);
    bool check(const FlowResult& result);
    bool isAskedToStop() const;
    bool stop(Step step);

    FlowReporter& m_reporter;
    const std::atomic<bool>* m_stop;
    HubSession m_session;
    FlowResult m_result;
};

} // namespace vornadel
