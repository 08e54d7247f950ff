#include "runs/run_components.h"

#include <algorithm>
#include <numeric>

namespace vorund::internal {
namespace {

/// Sets of run indices; each is named after its smallest, which comes first in raster order.
class RunSets {
 public:
    explicit RunSets(std::size_t count) : parent_(count) {
        std::iota(parent_.begin(), parent_.end(), std::size_t{0});
    }

    std::size_t find(std::size_t run) {
        while (parent_[run] != run) {
            parent_[run] = parent_[parent_[run]];
            run = parent_[run];
        }
        return run;
    }

    void join(std::size_t a, std::size_t b) {
        const std::size_t of_a = find(a);
        const std::size_t of_b = find(b);
        parent_[std::max(of_a, of_b)] = std::min(of_a, of_b);
    }

 private:
    std::vector<std::size_t> parent_;
};

/// @param reach  1 where runs meet at their corners, too, else 0.
void joinWithRowAbove(const PixelRuns& runs, int row, int reach, RunSets& sets) {
    std::size_t above = runs.rowBegin(row - 1);
    std::size_t below = runs.rowBegin(row);
    while (above < runs.rowBegin(row) && below < runs.rowBegin(row + 1)) {
        if (runs[above].begin < runs[below].end + reach &&
            runs[below].begin < runs[above].end + reach) {
            sets.join(above, below);
        }
        // The one that ends first can meet nothing further.
        if (runs[above].end < runs[below].end) {
            ++above;
        } else {
            ++below;
        }
    }
}

}  // namespace

RunComponents connectRuns(const PixelRuns& runs, int connectivity) {
    RunSets sets(runs.size());
    for (int row = 1; row < runs.rows(); ++row)
        joinWithRowAbove(runs, row, connectivity == 8 ? 1 : 0, sets);

    RunComponents components;
    components.label_of_run.resize(runs.size());
    for (std::size_t run = 0; run < runs.size(); ++run) {
        const std::size_t first = sets.find(run);
        components.label_of_run[run] =
            first == run ? ++components.count : components.label_of_run[first];
    }
    return components;
}

std::vector<int> areasOf(const PixelRuns& runs, const RunComponents& components) {
    std::vector<int> areas(static_cast<std::size_t>(components.count), 0);
    for (std::size_t run = 0; run < runs.size(); ++run) {
        areas[static_cast<std::size_t>(components.label_of_run[run]) - 1] +=
            runs[run].end - runs[run].begin;
    }
    return areas;
}

}  // namespace vorund::internal
