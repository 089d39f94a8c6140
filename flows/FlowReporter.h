#pragma once

#include "hub/HubFailure.h"
#include "platform/Clock.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vornadel
{

/// What is done to a hub.
enum class FlowKind { Update, Read, Erase, Restore, Verify, Restart };

/// The steps of the flows, in order. Only an update has all of them.
enum class Step {
    Open,
    Save, ///< the flash is read twice, before it is changed, and handed over
    Erase,
    Write,
    Read,
    Verify,
    Restart
};

/// Why a flow failed.
enum class Cause {
    None,          ///< it succeeded
    WrongImage,    ///< no image for a flash; nothing was sent to a hub
    NotOpened,     ///< the hub could not be opened, or restarted into its ROM code
    RequestFailed, ///< the hub did not confirm an erase, a write or a read
    Different,     ///< the flash differs from the image
    NotRestarted,  ///< the hub refused the restart, or did not come back from it

    // Only in strict flows:
    NotErased,    ///< the hub confirmed the erase, but its flash is not blank
    Unstable,     ///< two reads of the flash differ
    NotConfirmed, ///< the hub came back, but does not run the code that it should
    NotSaved,     ///< the flash could not be saved, and was not changed

    Interrupted, ///< the flow was asked to stop
};

/// What a flow knows of the hub's flash.
enum class FlashState {
    Untouched,  ///< no request that changes it was sent
    Erased,     ///< read, and blank
    Incomplete, ///< it was changed, and may hold anything
    Written,    ///< the hub confirmed every write of the image; not compared yet
    Verified,   ///< read, and equal to the image
};

/// What a flow knows of the hub itself.
enum class HubState {
    Unknown,
    Flash,  ///< it runs its firmware
    Rom,    ///< it runs its ROM code
    Absent, ///< it is not at its place
};

/// What a flow will do.
struct FlowStart {
    FlowKind flow = FlowKind::Update;
    std::string imageName = {}; ///< Update, Restore, Verify: the caller's name for the image
    std::int32_t imageSize{};   ///< of that, in bytes; 0 if no image was loaded
};

/// How a flow ended.
struct FlowResult {
    Step step = Step::Restart; ///< the step that failed; the last one after a success
    Cause cause = Cause::None;
    /// In the flash. RequestFailed: of the piece that failed; Different, NotErased and Unstable: of
    /// the first wrong byte.
    std::uint32_t address = 0;
    std::uint32_t wrongBytes{};            ///< Different, NotErased, Unstable: how many
    HubFailure failure = HubFailure::None; ///< what the hub did, if that is the reason
    std::int64_t owner{}; ///< Busy: the process whose flow has the hub; 0 if not known

    bool changed = false; ///< a request that changes the flash was sent
    FlashState flash = FlashState::Untouched;

    // Of the hub at the end. Only strict flows look:
    HubState hub = HubState::Unknown;
    std::optional<std::uint16_t> version{}; ///< of its firmware
    std::string serialNumber{};             ///< the last that it told; may be empty

    bool succeeded() const { return cause == Cause::None; }
    bool operator==(const FlowResult&) const = default;
};

/// Receives a flow's reports: started() once, stepStarted() for each step that it reaches,
/// progressed() after each piece of a Save, Write or Read step, finished() once, closed() once. All
/// are called on the flow's thread, and the flow goes on when they return.
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
    /// About once a second while a strict flow waits for the hub, with the time waited so far.
    virtual void waiting(Clock::Duration /*sofar*/) {}
    virtual void finished(const FlowResult& result) = 0; ///< an open hub is not closed yet
    virtual void closed() = 0;                           ///< the hub is closed; the last report
};

} // namespace vornadel
