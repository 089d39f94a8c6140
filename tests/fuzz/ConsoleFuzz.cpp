// The commands that the virtual hub takes on standard input.
//
// An input is a byte with how many bytes arrive at a time less one, and what arrives.

#include "standins/sim/DemoImage.h"
#include "standins/virtual_hub/Console.h"
#include "standins/virtual_hub/LineReader.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/support/VirtualClock.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

namespace
{

/// A bus that takes whatever is put onto it.
class EasyBus final : public HubHost
{
public:
    bool attach(const VirtualDevice& device, std::string& /*error*/) override
    {
        const std::lock_guard lock(m_mutex);
        m_there[{device.hub, device.half}] = true;
        return true;
    }
    void beginDetach(unsigned hub, HubSpeed half) override
    {
        const std::lock_guard lock(m_mutex);
        m_there[{hub, half}] = false;
    }
    void finishDetach(unsigned /*hub*/, HubSpeed /*half*/) override {}
    std::string busId(unsigned hub, HubSpeed half) override
    {
        const std::lock_guard lock(m_mutex);
        return m_there[{hub, half}] ? "1-" + std::to_string(hub) : std::string();
    }

private:
    std::mutex m_mutex;
    std::map<std::pair<unsigned, HubSpeed>, bool> m_there;
};

/// Two hubs with their console, and what it answers.
class Bench
{
public:
    Bench()
    {
        static const std::vector<std::uint8_t> demo = demoImage();
        for (unsigned number = 1; number <= 2; ++number) {
            SimulatedHubOptions options;
            options.initialFlash = demo;
            options.keepInMemory = true;
            options.latency = SimulatedLatency::None;
            std::string error;
            m_sims.push_back(SimulatedHub::create(options, m_clock, error));
            m_hubs.push_back(
                std::make_unique<VirtualHub>(number, m_sims.back(), m_bus, [](const std::string&) {
                    require(false, "a hub finds its bus");
                }));
            require(m_hubs.back()->start(error), "a hub starts");
        }
    }

    std::vector<std::string> answers(std::span<const std::uint8_t> bytes, std::size_t atATime)
    {
        std::vector<std::string> all;
        LineReader lines;
        for (std::size_t at = 0; at < bytes.size(); at += atATime) {
            const auto piece = bytes.subspan(at, std::min(atATime, bytes.size() - at));
            lines.add({reinterpret_cast<const char*>(piece.data()), piece.size()});
            takeLines(lines, all);
        }
        lines.end();
        takeLines(lines, all);
        return all;
    }

private:
    void takeLines(LineReader& lines, std::vector<std::string>& all)
    {
        while (const auto line = lines.next()) {
            require(line->text.size() <= LineReader::kLongestLine, "no line is longer than it may");
            require(line->text.find('\n') == std::string::npos, "a line is one line");
            if (line->tooLong) {
                all.emplace_back("too long");
                continue;
            }
            const bool quit = m_console.quit();
            const std::string answer = m_console.answer(line->text);
            const bool ok = answer == "ok" || answer.rfind("ok ", 0) == 0;
            require(ok || answer.rfind("error: ", 0) == 0, "a line is carried out or refused");
            require(ok || m_console.quit() == quit, "what is refused has no effect");
            for (const auto& sim : m_sims) {
                const std::size_t on = sim->attachedHalves().size();
                require(on == 0 || on == 2, "a hub is on the bus with both halves, or not at all");
            }
            all.push_back(answer);
        }
    }

    VirtualClock m_clock;
    EasyBus m_bus;
    std::vector<std::shared_ptr<SimulatedHub>> m_sims;
    std::vector<std::unique_ptr<VirtualHub>> m_hubs;
    Console m_console{m_hubs};
};

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel::test;
    FuzzInput input(data, size);
    const std::size_t atATime = input.byte() + std::size_t{1};
    const std::span<const std::uint8_t> bytes = input.rest();
    const std::vector<std::string> torn = Bench().answers(bytes, atATime);
    const std::vector<std::string> whole =
        Bench().answers(bytes, std::max<std::size_t>(bytes.size(), 1));
    require(torn == whole, "it does not matter how bytes arrive");
    return 0;
}
