#pragma once

#include "firmware/FwImage.h"
#include "flows/FlowOptions.h"
#include "flows/FlowReporter.h"

#include <cstdint>
#include <functional>
#include <optional>
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
    ~FlowRun(); ///< closes the hub, also after an exception

    bool open(); ///< whatever code the hub runs
    bool openRom();
    bool erase();
    bool write(std::span<const std::uint8_t> bytes); ///< from address 0 on
    bool read(std::span<std::uint8_t> bytes);        ///< from address 0 on
    bool verify(std::span<const std::uint8_t> image, std::span<const std::uint8_t> readBack);
    bool restart();        ///< into its firmware
    bool restartIntoRom(); ///< unless it runs its ROM code already

    // In a strict flow; otherwise they do nothing and return true:

    /// Reads the flash and hands it over before it is changed, if the options ask for that. If it
    /// is not to be changed and begins with the `wanted` bytes, its state is `whenEqual`.
    bool save(std::span<const std::uint8_t> wanted, FlashState whenEqual);
    bool readAgain(std::span<const std::uint8_t> bytes); ///< compares with the first read
    bool eraseIsDone();                                  ///< whether the flash is blank
    bool runs(HubState code);        ///< whether the hub runs Flash or Rom code, after a restart
    bool runs(const FwImage& image); ///< whether the hub runs this firmware, after restart();
                                     ///< true if the image holds none

    bool isUpToDate() const { return m_isUpToDate; } ///< after save(): change nothing

    /// Restarts the hub into its firmware if this run has restarted it; a second call does nothing.
    /// Call it last, in a run that has not changed the flash. Returns why it failed.
    HubFailure sendBack();

    bool isStrict() const { return m_session.isStrict(); }
    HubSession& session() { return m_session; }

    /// Records a failure and returns false.
    bool fail(const FlowResult& result);

    /// Reports the result, closes the hub, and returns whether the flow succeeded. Call it on every
    /// path out.
    bool end();

private:
    struct Progress;

    template <typename Byte, typename Transfer>
    bool transferAll(Step step, std::span<Byte> bytes, Transfer transfer, Progress progress);
    bool readTwice(std::span<std::uint8_t> flash);
    HubFailure look();
    void lookAtTheEnd();
    bool switchMode(std::uint8_t mode);
    bool failByHub(Step step, Cause cause, std::uint32_t address = 0);
    bool check(const FlowResult& result);
    bool isAskedToStop() const;
    bool stop(Step step);

    FlowReporter& m_reporter;
    const std::atomic<bool>* m_stop;
    std::function<BeforeChange(std::span<const std::uint8_t>)> m_beforeChange;
    HubSession m_session;
    FlowResult m_result;
    bool m_isUpToDate = false;
    bool m_isSentBack = false;

    // What is known by now, for the result:
    bool m_changed = false;
    FlashState m_flash = FlashState::Untouched;
    HubState m_hub = HubState::Unknown; // since its last restart
    std::optional<std::uint16_t> m_version;
};

} // namespace vornadel
