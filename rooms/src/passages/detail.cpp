#include "passages/detail.h"

namespace vorund::rooms {
namespace {

double withOdds(double ratio, double factor) {
    return ratio * factor / (ratio * factor + (1.0 - ratio));
}

}  // namespace

RoomsConfig atDetail(const RoomsConfig& config) {
    RoomsConfig scaled = config;
    scaled.detail = 0.0;
    const bool is_finer = config.detail > 0.0;
    const bool is_coarser = config.detail < 0.0;
    if (!is_finer && !is_coarser) return scaled;  // To the last bit what was set.
    const double factor = is_finer ? 1.0 + config.detail : 1.0 / (1.0 - config.detail);
    scaled.open_ratio = withOdds(config.open_ratio, factor);
    scaled.narrow_ratio = withOdds(config.narrow_ratio, factor);
    scaled.least_area = config.least_area / factor;
    return scaled;
}

}  // namespace vorund::rooms
