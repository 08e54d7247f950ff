#include "room_server.h"

#include <ros/console.h>

#include <cstdlib>

#include "live_settings.h"
#include "publish_latched.h"

namespace vorund_ros {
namespace {

// A map every second, on which a run takes two: after so many runs for nothing one is let through.
constexpr int kMostCancelledInRow = 5;
constexpr double kDiagnosticsPeriod = 0.2;  // [s], after which a change is told at the latest.

/// The node's own name without the leading slash, fit for a file's name.
std::string fileNameOf(const ros::NodeHandle& own) {
    std::string name = own.getNamespace();
    name.erase(0, name.find_first_not_of('/'));
    for (char& letter : name) {
        if (letter == '/') letter = '_';
    }
    return name;
}

/// Where ROS keeps what belongs to the user: $ROS_HOME, else ~/.ros.
std::string homeFolder() {
    const char* const ros_home = std::getenv("ROS_HOME");
    if (ros_home != nullptr && *ros_home != '\0') return ros_home;
    const char* const home = std::getenv("HOME");
    return (home != nullptr ? std::string(home) : std::string("/tmp")) + "/.ros";
}

Choices readOwnChoices(const ros::NodeHandle& own) {
    XmlRpc::XmlRpcValue parameters;
    own.getParam(own.getNamespace(), parameters);
    std::vector<std::string> warnings;
    const Choices choices = readChoices(parameters, warnings);
    for (const std::string& warning : warnings) ROS_WARN("%s", warning.c_str());
    return choices;
}

}  // namespace

RoomServer::RoomServer(const ros::NodeHandle& node, const ros::NodeHandle& own)
    : node_(node),
      own_(own),
      worker_(kMostCancelledInRow),
      diagnostics_(node, own, own.getNamespace()) {
    const Choices choices = readOwnChoices(own_);
    const std::string folder = homeFolder() + "/vorund/" + fileNameOf(own_);
    RoomKeeper::Options options;
    own_.param<std::string>(kSavePathParameter, options.save_path, folder + ".rooms");
    own_.param<std::string>(kDebugDirectoryParameter, options.debug_directory, folder + "_debug");
    options.publish = [this](const RoomOutput& output) { publish(output); };
    const std::string debug_directory = options.debug_directory;

    advertise();
    keeper_ = std::make_unique<RoomKeeper>(worker_, choices, std::move(options));
    requests_ = std::make_unique<MapRequests>(
        own_, worker_, [this] { return keeper_->choices(); }, debug_directory);
    startLiveSettings();
    services_ = {own_.advertiseService("room_at", &RoomServer::tellRoom, this),
                 own_.advertiseService("save_rooms", &RoomServer::save, this),
                 own_.advertiseService("load_rooms", &RoomServer::load, this)};
    diagnostics_.setHardwareID("none");
    diagnostics_.add("rooms", [this](auto& status) { diagnose(status); });
    diagnostics_timer_ = node_.createWallTimer(ros::WallDuration(kDiagnosticsPeriod),
                                               [this](const auto&) { updateDiagnostics(); });
    map_subscriber_ = node_.subscribe<nav_msgs::OccupancyGrid>(
        "map", 1, [this](const nav_msgs::OccupancyGrid::ConstPtr& map) { keeper_->takeMap(map); });
}

RoomServer::~RoomServer() {
    // First, since callbacks may wait for it.
    worker_.stop();
    map_subscriber_.shutdown();
    for (ros::ServiceServer& service : services_) service.shutdown();
    diagnostics_timer_.stop();
}

void RoomServer::advertise() {
    constexpr bool kLatched = true;
    cells_publisher_ = node_.advertise<nav_msgs::OccupancyGrid>("rooms", 1, kLatched);
    image_publisher_ = node_.advertise<sensor_msgs::Image>("rooms/image", 1, kLatched);
    graph_publisher_ = node_.advertise<vorund_msgs::RoomGraph>("room_graph", 1, kLatched);
    marker_publisher_ =
        node_.advertise<visualization_msgs::MarkerArray>("room_markers", 1, kLatched);
}

void RoomServer::publish(const RoomOutput& output) {
    publishLatched(cells_publisher_, output.cells);
    publishLatched(image_publisher_, output.rooms.found.labels);
    publishLatched(graph_publisher_, output.rooms.found.graph);
    publishLatched(marker_publisher_, output.markers);
}

void RoomServer::startLiveSettings() {
    // In a group of its own: what an earlier node left there does not count.
    live_ = std::make_unique<LiveServer>(live_mutex_, ros::NodeHandle(own_, kLiveGroup));
    live_->updateConfig(toLive(keeper_->choices()));
    live_->setCallback([this](const LiveSettingsConfig& live, std::uint32_t) {
        Choices choices = keeper_->choices();
        applyLive(live, choices);
        keeper_->setChoices(choices);
    });
}

bool RoomServer::tellRoom(vorund_msgs::RoomAt::Request& request,
                          vorund_msgs::RoomAt::Response& response) {
    const auto output = keeper_->inForce();
    if (!output) {
        response.message = "there are no rooms yet";
        return true;
    }
    const FoundRooms& found = output->rooms.found;
    const std::string& frame = request.point.header.frame_id;
    if (!frame.empty() && frame != found.graph.header.frame_id) {
        response.message = "the point is in the frame " + frame + ", the rooms are in " +
                           found.graph.header.frame_id;
        return true;
    }
    response.success = true;
    response.label = roomAt(found, request.point.point);
    if (response.label > 0) {
        response.room = found.graph.rooms[static_cast<std::size_t>(response.label - 1)];
    }
    return true;
}

bool RoomServer::save(vorund_msgs::SaveRooms::Request& request,
                      vorund_msgs::SaveRooms::Response& response) {
    try {
        response.message = keeper_->save(request.path);
        response.success = true;
    } catch (const SaveError& error) {
        response.message = error.what();
    }
    return true;
}

bool RoomServer::load(vorund_msgs::LoadRooms::Request& request,
                      vorund_msgs::LoadRooms::Response& response) {
    try {
        response.message = keeper_->load(request.path);
        response.success = true;
    } catch (const SaveError& error) {
        response.message = error.what();
    }
    return true;
}

void RoomServer::diagnose(diagnostic_updater::DiagnosticStatusWrapper& status) const {
    using diagnostic_msgs::DiagnosticStatus;
    const KeeperStatus now = keeper_->status();
    status.summary(DiagnosticStatus::OK, now.has_rooms ? "rooms found" : "no map yet");
    if (now.is_busy) status.summary(DiagnosticStatus::OK, "finding rooms");
    if (!now.save_problem.empty()) {
        status.summary(DiagnosticStatus::WARN, "rooms are not saved: " + now.save_problem);
    }
    if (!now.problem.empty()) {
        status.summary(DiagnosticStatus::ERROR, "no rooms found: " + now.problem);
    }
    status.add("rooms", now.rooms);
    status.add("borders", now.borders);
    status.add("map", now.map);
    status.add("runs finished", now.finished);
    status.add("runs cancelled", now.cancelled);
    status.add("runs failed", now.failed);
    status.add("seconds of the last run", now.seconds);
}

void RoomServer::updateDiagnostics() {
    const int version = keeper_->status().version;
    if (version == diagnosed_version_) return diagnostics_.update();
    diagnosed_version_ = version;
    diagnostics_.force_update();
}

}  // namespace vorund_ros
