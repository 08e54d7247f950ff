#include "maps/core_errors.h"

#include <algorithm>
#include <array>
#include <string>

namespace vorund::rooms {
namespace {

/// What the core says when it finds no seed, and what its user has to know.
struct CoreError {
    const char* message;
    NoRoom kind;
    const char* cause;
};

constexpr std::array<CoreError, 4> kNoRoom{{
    {"cropSingleInfo expects a non-empty image.", NoRoom::kNothing,
     "no room found: the map is all floor or all wall at the threshold of generate_denoised_alone"},
    {"removeSmallConnectedComponents expects a non-empty image.", NoRoom::kNothing,
     "no room found: the map's content is all floor or all wall at the threshold of "
     "generate_denoised_alone"},
    {"findConsistentGlobalLabels: labels_map_list_in.size() == 1", NoRoom::kNothing,
     "no room found: the free floor is too small or too narrow for a seed at the first scale (see "
     "sigma_start and threshold in compute_labels_list, components_out in "
     "generate_denoised_alone), or only one scale is set"},
    {"findConsistentGlobalLabels: last_frame_labels.size() > 2", NoRoom::kScalesEnded,
     "no room found: the floor is wider than the scales reach; raise max_iter or sigma_step in "
     "compute_labels_list"},
}};

const CoreError* find(const std::exception& error) {
    const auto known = std::find_if(
        kNoRoom.begin(), kNoRoom.end(),
        [&](const CoreError& candidate) { return error.what() == std::string(candidate.message); });
    return known == kNoRoom.end() ? nullptr : &*known;
}

}  // namespace

NoRoom kindOf(const std::exception& error) {
    const CoreError* const known = find(error);
    return known == nullptr ? NoRoom::kOther : known->kind;
}

const char* causeOfNoRoom(const std::exception& error) {
    const CoreError* const known = find(error);
    return known == nullptr ? nullptr : known->cause;
}

}  // namespace vorund::rooms
