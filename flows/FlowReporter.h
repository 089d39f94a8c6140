#pragma once

#include "hub/HubFailure.h"

#include <cstdint>
#include <string>

namespace vornadel
{

/// What is done to a hub.
enum class FlowKind { Update, Read, Erase };

/// The steps of the flows, in order. Only the update has all of them.
enum class Step { Open, Erase, Write, Read, Verify, Restart };

/// Why a flow failed.
enum class Cause {
    None,          ///< it succeeded
    WrongImage,    ///< no image to write; nothing was sent to a hub
    NotOpened,     ///< the hub could not be opened, or restarted into its ROM code
    RequestFailed, ///< the hub did not confirm an erase, a write or a read
    Different,     ///< the data read back differs from the data written
    NotRestarted,  ///< the hub refused the restart, or did not come back from it

    // Only in strict flows:
    NotErased,    ///< the hub confirmed the erase, but its flash is not blank
    Unstable,     ///< two reads of the flash differ
    NotConfirmed, ///< the hub came back, but does not run the firmware in its flash

    Interrupted, ///< the flow was asked to stop
};

/// What a flow will do.
struct FlowStart {
    FlowKind flow = FlowKind::Update;
    std::string imageName = {}; ///< Update: the caller's name for the image
    std::int32_t imageSize{};   ///< Update: bytes; 0 if no image was loaded
};

/// How a flow ended.
struct FlowResult {
    Step step = Step::Restart; ///< the step that failed; the last one after a success
    Cause cause = Cause::None;
    /// In the flash. Write and Read: of the piece that failed; Different, NotErased and Unstable:
    /// of the first wrong byte.
    std::uint32_t address = 0;
    std::uint32_t wrongBytes{};            ///< Different, NotErased, Unstable: how many
    HubFailure failure = HubFailure::None; ///< what the hub did, if that is the reason
    std::int64_t owner{}; ///< Busy: the process whose flow has the hub; 0 if not known

    bool succeeded() const { return cause == Cause::None; }
    bool operator==(const FlowResult&) const = default;
};

/// Receives a flow's reports: started() once, stepStarted() for each step that it reaches,
/// progressed() after each piece of a Write or Read step, finished() once, closed() once. All are
/// called on the flow's thread, and the flow goes on when they return.
class FlowReporter
{
public:
    FlowReporter() = default;
    FlowReporter(const FlowReporter&) = delete;
    FlowReporter& operator=(const FlowReporter&) = delete;
    virtual ~FlowReporter() = default;

    virtual void started(const FlowStart& start) = 0;
    virtual void stepStarted(Step step) = 0; ///< the previous step is done
    virtual void progressed(std::int32_t done, std::int32_t total) = 0; ///< bytes of this step
    virtual void finished(const FlowResult& result) = 0; ///< an open hub is not closed yet
    virtual void closed() = 0;                           ///< the hub is closed; the last report
};

} // namespace vornadel
