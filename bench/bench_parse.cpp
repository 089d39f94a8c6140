// Looking for the descriptor block in an image of a whole flash.

#include "bench/Table.h"
#include "firmware/FwImage.h"
#include "sim/DemoImage.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace vornadel;
using bench::Row;
using bench::Series;

constexpr double kTargetMicroseconds = 50;
constexpr std::size_t kBlockSize = 256;

using Bytes = std::vector<std::uint8_t>;

Bytes blockAtTheStart()
{
    const Bytes demo = demoImage();
    Bytes image(demo.size(), 0xFF);
    std::copy(demo.end() - 2 * kBlockSize, demo.end() - kBlockSize, image.begin());
    return image;
}

void parse(benchmark::State& state, const Bytes& bytes, bool holdsBlock)
{
    FwImage image;
    for (auto _ : state) {
        if (FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())) != holdsBlock) {
            state.SkipWithError("the image was read wrongly");
            break;
        }
        benchmark::DoNotOptimize(image.descriptor);
        benchmark::ClobberMemory();
    }
}

/// Shows the runs as our tables do.
class TableReporter final : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                GetErrorStream() << run.benchmark_name() << ": " << run.error_message << '\n';
                m_failed = true;
            } else if (run.run_type == Run::RT_Iteration) {
                m_series[run.run_name.function_name].add(run.GetAdjustedRealTime());
            }
        }
    }

    void Finalize() override
    {
        std::vector<Row> rows;
        for (const auto& [name, series] : m_series) {
            rows.push_back(rowOf(name, series, kTargetMicroseconds));
        }
        bench::printTable("Reading an image of 32 KiB", "microseconds", rows);
    }

    bool failed() const { return m_failed; }

private:
    std::map<std::string, Series> m_series;
    bool m_failed = false;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const std::pair<const char*, Bytes> images[] = {
        {"the demo image, block near the end", demoImage()},
        {"block at the very start", blockAtTheStart()},
        {"no block at all", Bytes(demoImage().size(), 0xFF)},
    };
    for (const auto& [name, bytes] : images) {
        const bool holdsBlock =
            std::any_of(bytes.begin(), bytes.end(), [](auto byte) { return byte != 0xFF; });
        benchmark::RegisterBenchmark(name, parse, bytes, holdsBlock)
            ->Unit(benchmark::kMicrosecond)
            ->MinTime(0.02)
            ->Repetitions(15);
    }
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.failed() ? 1 : 0;
}
