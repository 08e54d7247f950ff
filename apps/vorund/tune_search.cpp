#include "tune_search.h"

#include <exception>
#include <nlopt.hpp>
#include <stdexcept>

namespace vorund::app {
namespace {

constexpr double kFirstStep = 0.15;   // Of the box, as below.
constexpr double kLastStep = 0.0025;  // Less changes no digit of most values.

struct Progress {
    const Merit& merit;
    int left;
    TuneValues best;
    double most = 0.0;
    std::exception_ptr error;
};

double evaluate(const TunePoint& point, TunePoint&, void* data) {
    Progress& progress = *static_cast<Progress*>(data);
    // The optimiser may ask once more than it was allowed to.
    if (progress.left == 0) throw nlopt::forced_stop();
    --progress.left;
    try {
        const TuneValues values = valuesAt(point);
        const double merit = progress.merit(values);
        if (progress.best.empty() || merit > progress.most) {
            progress.best = values;
            progress.most = merit;
        }
        return merit;
    } catch (...) {
        // The optimiser would turn it into an error of its own.
        progress.error = std::current_exception();
        throw nlopt::forced_stop();
    }
}

}  // namespace

TuneValues searchBest(const TunePoint& start, int evaluations, const Merit& merit) {
    Progress progress{merit, evaluations, {}, 0.0, nullptr};
    nlopt::opt optimizer(nlopt::LN_SBPLX, static_cast<unsigned>(start.size()));
    optimizer.set_max_objective(evaluate, &progress);
    optimizer.set_lower_bounds(0.0);
    optimizer.set_upper_bounds(1.0);
    optimizer.set_initial_step(kFirstStep);
    optimizer.set_xtol_abs(kLastStep);
    optimizer.set_maxeval(evaluations);
    TunePoint point = start;
    double most = 0.0;
    try {
        optimizer.optimize(point, most);
    } catch (const nlopt::forced_stop&) {
        if (progress.error) std::rethrow_exception(progress.error);
    } catch (const nlopt::roundoff_limited&) {
        // No better point can be told from the best one.
    }
    return progress.best;
}

}  // namespace vorund::app
