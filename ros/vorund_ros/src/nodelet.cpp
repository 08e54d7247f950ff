#include <nodelet/nodelet.h>
#include <pluginlib/class_list_macros.hpp>

#include <exception>
#include <memory>

#include "room_server.h"
#include "vorund/debugger.h"

namespace vorund_ros {

class RoomsNodelet : public nodelet::Nodelet {
 private:
    void onInit() override {
        vorund::setPlainOutput(nullptr);  // What some stages print is no log.
        try {
            server_ = std::make_unique<RoomServer>(getNodeHandle(), getPrivateNodeHandle());
        } catch (const std::exception& error) {
            NODELET_FATAL("%s", error.what());  // The manager says only that it failed.
            throw;
        }
    }

    std::unique_ptr<RoomServer> server_;
};

}  // namespace vorund_ros

PLUGINLIB_EXPORT_CLASS(vorund_ros::RoomsNodelet, nodelet::Nodelet)
