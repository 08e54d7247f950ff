#include "live_settings.h"

namespace vorund_ros {
namespace {

/// Hands every live value and its place among the choices to `pass`.
template <class Live, class ChoicesType, class Pass>
void forEach(Live& live, ChoicesType& choices, const Pass& pass) {
    auto& core = choices.settings.core;
    auto& rooms = choices.settings.rooms;
    pass(live.occupied_threshold, choices.occupied_threshold);
    pass(live.min_size,
         core.generate_denoised_alone.components_in_remove_small_connected_components.min_size);
    pass(live.seed_threshold, core.compute_labels_list.generate_gaussian_seeds_skimage.threshold);
    pass(live.detail, rooms.detail);
    pass(live.open_ratio, rooms.open_ratio);
    pass(live.narrow_ratio, rooms.narrow_ratio);
    pass(live.least_area, rooms.least_area);
    pass(live.loose_part, rooms.loose_part);
    pass(live.straight_borders, rooms.straight_borders);
    pass(live.simplify, rooms.simplify);
}

}  // namespace

LiveSettingsConfig toLive(const Choices& choices) {
    LiveSettingsConfig live = LiveSettingsConfig::__getDefault__();
    forEach(live, choices, [](auto& to, const auto& from) { to = from; });
    return live;
}

void applyLive(const LiveSettingsConfig& live, Choices& choices) {
    forEach(live, choices, [](const auto& from, auto& to) { to = from; });
}

}  // namespace vorund_ros
