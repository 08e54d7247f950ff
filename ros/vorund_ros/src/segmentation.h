// One run of the library over one map.
#pragma once

#include <nav_msgs/OccupancyGrid.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "choices.h"
#include "room_messages.h"

namespace vorund_ros {

/// What a run is doing.
struct Progress {
    std::string stage;  ///< What begins now.
    int number = 0;     ///< 1 to `stages`.
    int stages = 0;
    int done = 0;  ///< Steps within the stage, and the most there can be.
    int total = 0;
};

struct Outcome {
    std::shared_ptr<const FoundRooms> found;  ///< Empty if there are none.
    std::string cause;                        ///< Why not; one line.
    bool cancelled = false;                   ///< That is why.
};

/// Runs on the caller's thread; what goes wrong is in the outcome. Stops soon once the flag is set
/// or the node shuts down.
/// @param debug_directory  For the images of the stages, if the setting debug/save_images is on.
/// @param tell             May be empty.
Outcome segment(const nav_msgs::OccupancyGrid& map, const Choices& choices,
                const std::string& debug_directory, const std::atomic<bool>& cancelled,
                const std::function<void(const Progress&)>& tell = {});

/// 1 for the first stage of a run; 0 for what is no stage.
int stageNumber(const std::string& stage);
int stageCount();

}  // namespace vorund_ros
