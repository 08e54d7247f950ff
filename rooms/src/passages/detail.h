#pragma once

#include "vorund/rooms/room_settings.h"

namespace vorund::rooms {

/// The settings of merging with `detail` worked into them, which is then 0. At a higher detail the
/// ratios are larger and the least area is smaller; at 0 all are as they were.
///
/// The odds of a ratio r are r / (1 - r): multiplied by a factor they stay those of a ratio, and 0
/// and 1 remain what they are. Only basic arithmetic, for equal results on all machines.
///
/// Rooms at a higher detail need not lie within those at a lower one, nor be more of them in every
/// conceivable map. Were there one ratio, they would: merging takes the most open passage first,
/// whatever the limit, so that a higher limit only ends the same sequence sooner. But narrow and
/// wide passages have limits of their own, and pieces of a room, each too small, may go to
/// different neighbours.
RoomsConfig atDetail(const RoomsConfig& config);

}  // namespace vorund::rooms
