// The search for the descriptor block in an image of a whole flash.

#include "bench/Table.h"
#include "firmware/FwImage.h"
#include "standins/sim/DemoImage.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace
{

using namespace vornadel;
using bench::Row;
using bench::Series;

constexpr double kTargetMicroseconds = 50;
constexpr std::size_t kBlockSize = 256;

using Bytes = std::vector<std::uint8_t>;

Bytes demo() { return demoImage(); }

Bytes noBlock() { return Bytes(demoImage().size(), 0xFF); }

Bytes blockAtTheStart()
{
    const Bytes whole = demo();
    Bytes image(whole.size(), 0xFF);
    std::copy(whole.end() - 2 * kBlockSize, whole.end() - kBlockSize, image.begin());
    return image;
}

void parse(benchmark::State& state, const char* what, Bytes (*makeImage)(), bool holdsBlock)
{
    state.SetLabel(what);
    const Bytes bytes = makeImage();
    FwImage image;
    while (state.KeepRunning()) {
        if (FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())) !=
            holdsBlock) {
            state.SkipWithError("the image was read wrongly");
            break;
        }
        benchmark::DoNotOptimize(image.descriptor);
        benchmark::ClobberMemory();
    }
}

void manyTimes(benchmark::internal::Benchmark* each)
{
    each->Unit(benchmark::kMicrosecond)->MinTime(0.02)->Repetitions(15);
}

BENCHMARK_CAPTURE(parse, demo, "the demo image, block near the end", demo, true)->Apply(manyTimes);
BENCHMARK_CAPTURE(parse, start, "block at the very start", blockAtTheStart, true)->Apply(manyTimes);
BENCHMARK_CAPTURE(parse, none, "no block at all", noBlock, false)->Apply(manyTimes);

/// Prints the runs as one of our tables.
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
                m_series[run.report_label].add(run.GetAdjustedRealTime());
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
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.failed() ? 1 : 0;
}
