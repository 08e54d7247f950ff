// Rooms of maps that somebody asks for, by the service `segment_map` or the action `find_rooms`.
#pragma once

#include <actionlib/server/action_server.h>
#include <ros/callback_queue.h>
#include <ros/node_handle.h>
#include <ros/spinner.h>
#include <vorund_msgs/FindRoomsAction.h>
#include <vorund_msgs/SegmentMap.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "newest_worker.h"
#include "segmentation.h"

namespace vorund_ros {

/// Offers both below a node handle's name. Nothing that is published changes.
///
/// A call of the service lasts as long as the run: it is served by a thread of its own, so that
/// everything else goes on, and calls wait for each other. The worker must be stopped before this
/// goes.
class MapRequests {
 public:
    MapRequests(const ros::NodeHandle& own, NewestWorker& worker, std::function<Choices()> choices,
                std::string debug_directory);
    ~MapRequests();
    MapRequests(const MapRequests&) = delete;
    MapRequests& operator=(const MapRequests&) = delete;

 private:
    using Server = actionlib::ActionServer<vorund_msgs::FindRoomsAction>;

    bool serve(vorund_msgs::SegmentMap::Request& request,
               vorund_msgs::SegmentMap::Response& response);
    void takeGoal(Server::GoalHandle goal);
    void cancelGoal(Server::GoalHandle goal);
    void runGoal(Server::GoalHandle goal, const std::atomic<bool>& cancelled);
    void endGoal(Server::GoalHandle& goal, const Outcome& outcome);

    NewestWorker& worker_;
    const std::function<Choices()> choices_;
    const std::string debug_directory_;

    std::mutex mutex_;                                     ///< Guards the tickets.
    std::map<std::string, NewestWorker::Ticket> tickets_;  ///< Of the goals that have not ended.

    ros::CallbackQueue service_queue_;
    ros::AsyncSpinner service_spinner_;
    Server server_;
    ros::ServiceServer service_;
};

}  // namespace vorund_ros
