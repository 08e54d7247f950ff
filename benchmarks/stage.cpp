#include "stage.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace vorund::bench {
namespace {

constexpr double kMostSeconds = 30.0;  // By default.
constexpr char kMostSecondsVariable[] = "VORUND_BENCHMARK_SECONDS";

double mostSeconds() {
    const char* const text = std::getenv(kMostSecondsVariable);
    return text == nullptr ? kMostSeconds : std::atof(text);
}

/// Foretells how long a larger map takes, so that a step that grows with the square of the map
/// does not keep everybody waiting.
class Forecast {
 public:
    void add(int side, double seconds) {
        times_[side] = times_.count(side) > 0 ? std::min(times_[side], seconds) : seconds;
    }

    /// From the two largest maps so far: 0 while there are none below that side.
    double secondsOf(int side) const {
        const auto next = times_.lower_bound(side);
        if (next == times_.begin()) return 0.0;
        const auto last = std::prev(next);
        double exponent = 2.0;  // Of the side: linear in pixels.
        if (last != times_.begin()) {
            const auto before = std::prev(last);
            exponent = std::log(last->second / before->second) /
                       std::log(static_cast<double>(last->first) / before->first);
        }
        const double growth = static_cast<double>(side) / last->first;
        return last->second * std::pow(growth, std::clamp(exponent, 2.0, 4.0));
    }

 private:
    std::map<int, double> times_;  ///< By side. [s]
};

double cpuSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void skip(benchmark::State& state, const std::string& reason) {
    state.SkipWithError(reason.c_str());
}

void count(benchmark::State& state, int side) {
    const std::int64_t pixels = state.iterations() * std::int64_t{side} * side;
    state.SetItemsProcessed(pixels);
    state.counters["cpu_per_pixel"] = benchmark::Counter(
        static_cast<double>(pixels), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void measure(benchmark::State& state, const Preparation& preparation, int side, Kind kind,
             Forecast& forecast) {
    const double expected = forecast.secondsOf(side);
    if (expected > mostSeconds()) {
        skip(state, "would take about " + std::to_string(std::lround(expected)) + " s (" +
                        kMostSecondsVariable + " allows more)");
        return;
    }
    try {
        const Work work = preparation(side, kind);
        for (auto _ : state) {
            if (work.prepare) {
                state.PauseTiming();
                work.prepare();
                state.ResumeTiming();
            }
            const double start = cpuSeconds();
            work.run();
            forecast.add(side, cpuSeconds() - start);
        }
        count(state, side);
    } catch (const std::exception& error) {
        skip(state, error.what());
    }
}

void add(const std::string& name, const Preparation& preparation, Kind kind) {
    const auto forecast = std::make_shared<Forecast>();
    for (const int side : kSides) {
        const std::string full_name = name + "/" + nameOf(kind) + "/" + std::to_string(side);
        benchmark::RegisterBenchmark(full_name.c_str(), [=](benchmark::State& state) {
            measure(state, preparation, side, kind, *forecast);
        })->Unit(benchmark::kMillisecond);
    }
}

}  // namespace

void addStage(const char* stage, const Preparation& library, const Preparation& plain) {
    for (const Kind kind : kKinds) {
        add(std::string(stage) + "/library", library, kind);
        if (plain) add(std::string(stage) + "/plain", plain, kind);
    }
}

}  // namespace vorund::bench
