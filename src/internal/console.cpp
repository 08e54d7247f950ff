#include "internal/console.h"

// The one place that knows the robot's logging: its macros cost half a second of compile time.
#include <ros/console.h>

namespace vorund::internal {

void consoleLine(LogLevel level, const std::string& text) {
    // One statement per level: each keeps its level in a static variable of its own.
    switch (level) {
        case LogLevel::DEBUG:
            ROS_LOG(::ros::console::levels::Debug, "ros.vorund", "%s", text.c_str());
            break;
        case LogLevel::INFO:
            ROS_LOG(::ros::console::levels::Info, "ros.vorund", "%s", text.c_str());
            break;
        case LogLevel::WARN:
            ROS_LOG(::ros::console::levels::Warn, "ros.vorund", "%s", text.c_str());
            break;
        case LogLevel::ERROR:
            ROS_LOG(::ros::console::levels::Error, "ros.vorund", "%s", text.c_str());
            break;
    }
}

}  // namespace vorund::internal
