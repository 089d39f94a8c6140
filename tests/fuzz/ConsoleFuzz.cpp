// The commands that the virtual hub takes on standard input.
//
// An input is a byte with how many bytes arrive at a time less one, and what arrives.

#include "standins/virtual_hub/LineReader.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/virtual_hub/RecordingHost.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

/// Two hubs with their console, and what it answers.
class Bench
{
public:
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
            const bool quit = m_two.console.quit();
            const std::string answer = m_two.console.answer(line->text);
            const bool ok = answer == "ok" || answer.rfind("ok ", 0) == 0;
            require(ok || answer.rfind("error: ", 0) == 0, "a line is carried out or refused");
            require(ok || m_two.console.quit() == quit, "what is refused has no effect");
            for (const auto& sim : m_two.sims) {
                const std::size_t on = sim->attachedHalves().size();
                require(on == 0 || on == 2, "a hub is on the bus with both halves, or not at all");
            }
            all.push_back(answer);
        }
    }

    TwoHubs m_two;
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
