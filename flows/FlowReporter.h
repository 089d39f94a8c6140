#pragma once

#include <cstdint>
#include <string>

namespace vornadel
{

/// What is done to a hub.
enum class FlowKind { Update, Read, Erase };

/// The steps of the flows, in the order in which they come. Only the update has them all.
enum class Step { Open, Erase, Write, Read, Verify, Restart };

/// Why a flow failed.
enum class Cause {
    None,          ///< it succeeded
    WrongImage,    ///< there is no image to write; nothing was sent to a hub
    NotOpened,     ///< the hub could not be opened and brought to run its ROM code
    RequestFailed, ///< the hub did not confirm an erase, a write or a read
    Different,     ///< the flash was not read back as it was written
    NotRestarted,  ///< the hub refused the restart, or did not come back from it
};

/// What a flow is about to do.
struct FlowStart {
    FlowKind flow = FlowKind::Update;
    std::string imageName = {}; ///< Update: as the caller names the image
    std::int32_t imageSize = 0; ///< Update: bytes; 0 when no image was loaded
};

/// How a flow ended.
struct FlowResult {
    Step step = Step::Restart; ///< the step that failed; the last one after a success
    Cause cause = Cause::None;
    std::uint32_t address = 0; ///< in the flash. Write and Read: of the piece that failed; Verify:
                               ///< of the first byte that differs

    bool succeeded() const { return cause == Cause::None; }
    bool operator==(const FlowResult&) const = default;
};

/// What a flow tells while it works: started() once, stepStarted() for each step that it comes to,
/// progressed() after each piece of a Write or Read step, finished() once, closed() once. All are
/// called on the flow's own thread, and the flow goes on when they return.
class FlowReporter
{
public:
    FlowReporter() = default;
    FlowReporter(const FlowReporter&) = delete;
    FlowReporter& operator=(const FlowReporter&) = delete;
    virtual ~FlowReporter() = default;

    virtual void started(const FlowStart& start) = 0;
    virtual void stepStarted(Step step) = 0; ///< the step before it is done
    virtual void progressed(std::int32_t done, std::int32_t total) = 0; ///< bytes of this step
    virtual void finished(const FlowResult& result) = 0;                ///< the hub is still open
    virtual void closed() = 0; ///< the hub is closed; the flow's last word
};

} // namespace vornadel
