#include <ros/console.h>
#include <ros/init.h>
#include <ros/node_handle.h>
#include <ros/spinner.h>

#include <cstdlib>
#include <opencv2/core.hpp>

#include "room_server.h"
#include "vorund/debugger.h"

int main(int argc, char** argv) {
    ros::init(argc, argv, "vorund");
    // One thread: the rest of the machine is for the robot.
    cv::setNumThreads(1);
    // What some stages print is no log.
    vorund::setPlainOutput(nullptr);
    // Outlives the server: the last handle to go shuts the console down.
    const ros::NodeHandle node;
    try {
        const vorund_ros::RoomServer server(node, ros::NodeHandle("~"));
        ros::spin();
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        ROS_FATAL("%s", error.what());
        return EXIT_FAILURE;
    }
}
