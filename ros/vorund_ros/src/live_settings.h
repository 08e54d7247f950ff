// The choices that dynamic_reconfigure turns while the node runs.
#pragma once

#include <vorund_ros/LiveSettingsConfig.h>

#include "choices.h"

namespace vorund_ros {

/// The values in force, for a client to start from.
LiveSettingsConfig toLive(const Choices& choices);

/// Sets what is live; the rest stays.
void applyLive(const LiveSettingsConfig& live, Choices& choices);

}  // namespace vorund_ros
