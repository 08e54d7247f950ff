// Publishes a map file once, latched, until it is stopped: for a try without a map server.
#include <ros/console.h>
#include <ros/init.h>
#include <ros/node_handle.h>
#include <ros/spinner.h>

#include <cstdlib>
#include <string>

#include "map_message.h"
#include "publish_latched.h"
#include "vorund/rooms/map_reader.h"

int main(int argc, char** argv) {
    ros::init(argc, argv, "map_publisher");
    if (argc != 2) {
        ROS_FATAL("Usage: map_publisher MAP (a map_server YAML file, or an image at 5 cm a pixel)");
        return EXIT_FAILURE;
    }
    // Outlives the attempt: the last handle to go shuts the console down.
    ros::NodeHandle node;
    try {
        nav_msgs::OccupancyGrid map = vorund_ros::toMessage(vorund::rooms::readMap(argv[1]));
        ros::NodeHandle("~").param<std::string>("frame_id", map.header.frame_id, "map");
        map.header.stamp = map.info.map_load_time = ros::Time::now();
        const ros::Publisher publisher = node.advertise<nav_msgs::OccupancyGrid>("map", 1, true);
        vorund_ros::publishLatched(publisher, map);
        ros::spin();
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        ROS_FATAL("%s", error.what());
        return EXIT_FAILURE;
    }
}
