#include "live_settings.h"

namespace vorund_ros {
namespace {

/// Hands every live value and its place among the choices to `pass`.
template <class Live, class ChoicesType, class Pass>
void forEach(Live& live, ChoicesType& choices, const Pass& pass) {
    auto& core = choices.settings.core;
    pass(live.occupied_threshold, choices.occupied_threshold);
    pass(live.min_size,
         core.generate_denoised_alone.components_in_remove_small_connected_components.min_size);
    pass(live.seed_threshold, core.compute_labels_list.generate_gaussian_seeds_skimage.threshold);
    pass(live.filter_threshold, core.over_segment.generate_map_initial_seeds.filter_threshold);
    pass(live.area_threshold, core.merge_nodes_in_place.area_threshold);
    pass(live.length_threshold, core.merge_edges_in_place.length_threshold);
    pass(live.straight_borders, choices.settings.rooms.straight_borders);
    pass(live.simplify, choices.settings.rooms.simplify);
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
