#pragma once

#include "platform/Clock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornadel
{

/// The kinds of control requests, as the simulated hub decodes them.
enum class RequestKind {
    OpenTime,
    Status,  ///< reads the status block
    Rom,     ///< restarts into ROM code
    Flash,   ///< restarts into flash code
    Erase,   ///< erases the flash
    Write,   ///< programs the flash
    Read,    ///< reads the flash
    Mode00,  ///< acknowledged without effect
    Unknown, ///< anything else
};
inline constexpr std::size_t kRequestKindCount = 9;

/// What can go wrong with a hub.
///
/// | written | happens to | what happens |
/// |---|---|---|
/// | `stall` | a request | it fails without effect |
/// | `vanish-before` | a request | the hub is unplugged before the request takes effect; it fails |
/// | `vanish-after` | a request | the request takes effect, then the hub is unplugged; it fails |
/// | `torn:BYTES` | a write | only the first BYTES bytes are programmed, then it fails |
/// | `flip:OFFSET` | a write or read | succeeds with one bit of the byte at OFFSET changed |
/// | `ignore` | a request | it succeeds without effect; a buffer to fill is left alone |
/// | `open-refused:COUNT` | opens | COUNT exclusive opens in a row fail |
/// | `ignored` | a restart | it is confirmed, and the hub stays on the bus |
/// | `never` | a restart | the hub does not come back |
/// | `late:SECONDS` | a restart | the hub comes back after that time, decimals allowed |
/// | `same-mode` | a restart | the hub comes back running the kind of code that it ran before |
/// | `bounce` | a restart | the hub comes back, leaves after 100 ms and comes back once more |
/// | `swapped` | a restart | the next hub comes back at this one's place, and this one at its place
/// | | `moved` | a restart | the hub comes back at a place where no hub has been | | `refused:MS` |
/// a restart | the hub comes back, and all opens fail for so many milliseconds |
///
/// The next hub is hub K+1, or hub 1 after the last. If it was attached, it leaves and arrives at
/// the moment of the return, with the code that it ran. Without a second hub, nothing is swapped.
///
/// The OFFSET of a flip counts from 0 in the data of that request. Without it, it is 0; beyond the
/// end it means the last byte. A write changes bit 0 and a read bit 1, so two never cancel out.
enum class FaultKind {
    Stall,
    VanishBefore,
    VanishAfter,
    Torn,
    Flip,
    Ignore,
    OpenRefused,
    Never,
    Late,
    SameMode,
    Bounce,
    Ignored,
    Swapped,
    Moved,
    Refused
};

/// One thing that goes wrong once. Positions count from 1 at the hub's creation: requests that
/// reach the hub (all, or those of the kind `on`), opens of an attached device, or restarts.
struct Fault {
    FaultKind kind = FaultKind::Stall;
    std::optional<RequestKind> on = std::nullopt; ///< request faults only: count only this kind
    unsigned position = 0;                        ///< 0: the next one after the fault was added
    unsigned amount = 0;      ///< Torn: bytes programmed; Flip: offset; OpenRefused: opens refused
    Clock::Duration delay{0}; ///< Late: absence from the bus; Refused: how long opens fail
};

/// Reads `KIND[:ARGUMENT][@POSITION]`. For request faults POSITION is `N`, the N-th request, or
/// `REQUEST#N`, the N-th of `open-time`, `status`, `rom`, `flash`, `erase`, `write`, `read`;
/// `REQUEST` alone is the first. Request faults need a POSITION, except `torn`, whose default is
/// the first write. A `torn` at another request than a write, or a `flip` at neither a write nor a
/// read, has no effect. For open and restart faults POSITION is `N`, by default the first. False
/// and a sentence in `error` if the text is wrong.
bool parseFault(std::string_view text, Fault& fault, std::string& error);

/// The effects of the faults on one request. Several may apply, in the order of the members.
struct RequestEffects {
    bool vanishBefore = false;
    bool stall = false;
    bool ignore = false;
    std::optional<std::size_t> torn; // bytes programmed
    std::optional<std::size_t> flip; // offset
    bool vanishAfter = false;
};

/// The effects of the faults on one restart.
struct RestartEffects {
    bool never = false;
    std::optional<Clock::Duration> late;
    bool sameMode = false;
    bool bounce = false;
    bool ignored = false;
    bool swapped = false;
    bool moved = false;
    Clock::Duration refused{0};
};

/// The pending faults, and the counters for their positions. Not thread-safe.
class FaultList
{
public:
    void add(const Fault& fault);

    /// Counts one request, open attempt or restart and returns the effects of the faults on it.
    RequestEffects countRequest(RequestKind kind);
    bool countOpen(); ///< true if the open must be refused
    RestartEffects countRestart();

    unsigned requests() const { return m_requests; }
    unsigned triggered() const { return m_triggered; } ///< faults that have happened

private:
    std::vector<Fault> m_faults; // positions resolved; finished faults are removed
    std::array<unsigned, kRequestKindCount> m_requestsOfKind{};
    unsigned m_requests = 0;
    unsigned m_opens = 0;
    unsigned m_restarts = 0;
    unsigned m_triggered = 0;
};

} // namespace vornadel
