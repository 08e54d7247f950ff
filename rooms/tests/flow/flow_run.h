#pragma once

#include <gtest/gtest.h>

#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "support/captures.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::rooms {

/// All that a run tells.
struct Told {
    cv::Mat segmented;
    std::vector<std::string> steps;
    std::vector<RoomGraph> intermediate;
    std::map<std::string, cv::Mat> pictures;
};

inline FlowObserver observerOf(Told& told) {
    FlowObserver observer;
    observer.segmented = [&told](const cv::Mat& labels) { told.segmented = labels.clone(); };
    observer.intermediate = [&told](const std::string& step, const RoomGraph& rooms) {
        told.steps.push_back(step);
        told.intermediate.push_back(
            {rooms.labels.clone(), rooms.borders.clone(), rooms.border_ids, rooms.graph});
    };
    observer.picture = [&told](const std::string& name, const cv::Mat& picture) {
        told.pictures[name] = picture.clone();
    };
    return observer;
}

/// A map from walls: 255 in an image of bytes, 1 in one of floats.
inline GridMap mapOf(const cv::Mat& walls, double resolution = kWorkingResolution) {
    GridMap map;
    walls.convertTo(map.values, CV_32F, walls.depth() == CV_8U ? 1.0 / 255.0 : 1.0);
    map.picture = cv::Mat(walls.size(), CV_8UC1, cv::Scalar(0));
    map.picture.setTo(254, map.values == 0.0);
    map.resolution = resolution;
    return map;
}

/// Merging by the core's two passes, on the map as it is.
inline Settings byPasses() {
    Settings settings;
    settings.rooms.merging = "passes";
    settings.rooms.clear_clutter = false;
    return settings;
}

/// Runs with all that they say caught.
class FindRooms : public ::testing::Test {
 protected:
    Rooms find(const GridMap& map, const Settings& settings = {},
               const FlowObserver& observer = {}) const {
        DebuggerConfig debug;
        debug.output_dir = dir_.path();
        return findRooms(map, settings, Debugger::create(debug), observer);
    }

    test::ConsoleCapture console_;
    test::PlainCapture plain_;
    test::TempDir dir_;
};

}  // namespace vorund::rooms
