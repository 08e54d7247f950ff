// The node: topics, services, action, parameters and diagnostics around the library.
#pragma once

#include <diagnostic_updater/diagnostic_updater.h>
#include <dynamic_reconfigure/server.h>
#include <ros/node_handle.h>
#include <vorund_msgs/LoadRooms.h>
#include <vorund_msgs/RoomAt.h>
#include <vorund_msgs/SaveRooms.h>
#include <vorund_ros/LiveSettingsConfig.h>

#include <boost/thread/recursive_mutex.hpp>
#include <memory>
#include <string>
#include <vector>

#include "map_requests.h"
#include "newest_worker.h"
#include "room_keeper.h"

namespace vorund_ros {

/// The node's and the nodelet's one implementation. Runs what takes long on a thread of its own;
/// the destructor stops and joins it.
class RoomServer {
 public:
    /// @param node  For the topics.
    /// @param own   For parameters, services and the action.
    /// @throws vorund::rooms::SettingError  if the settings cannot be used.
    RoomServer(const ros::NodeHandle& node, const ros::NodeHandle& own);
    ~RoomServer();
    RoomServer(const RoomServer&) = delete;
    RoomServer& operator=(const RoomServer&) = delete;

 private:
    using LiveServer = dynamic_reconfigure::Server<LiveSettingsConfig>;

    void advertise();
    void publish(const RoomOutput& output);
    void startLiveSettings();
    bool tellRoom(vorund_msgs::RoomAt::Request& request, vorund_msgs::RoomAt::Response& response);
    bool save(vorund_msgs::SaveRooms::Request& request, vorund_msgs::SaveRooms::Response& response);
    bool load(vorund_msgs::LoadRooms::Request& request, vorund_msgs::LoadRooms::Response& response);
    void diagnose(diagnostic_updater::DiagnosticStatusWrapper& status) const;
    void updateDiagnostics();

    ros::NodeHandle node_;
    ros::NodeHandle own_;
    ros::Publisher cells_publisher_;
    ros::Publisher image_publisher_;
    ros::Publisher graph_publisher_;
    ros::Publisher marker_publisher_;

    NewestWorker worker_;
    std::unique_ptr<RoomKeeper> keeper_;
    std::unique_ptr<MapRequests> requests_;

    boost::recursive_mutex live_mutex_;
    std::unique_ptr<LiveServer> live_;
    diagnostic_updater::Updater diagnostics_;
    int diagnosed_version_ = -1;
    ros::WallTimer diagnostics_timer_;
    std::vector<ros::ServiceServer> services_;
    ros::Subscriber map_subscriber_;
};

}  // namespace vorund_ros
