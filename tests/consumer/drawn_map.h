#pragma once

#include <opencv2/core.hpp>

/// A map of two rooms of 3 m x 3 m with a door of 0.9 m between them, at 0.05 m per pixel.
namespace drawn_map {

constexpr double kWall = 1.0;
constexpr int kSide = 60;
const cv::Rect kLeft(12, 12, kSide, kSide);
const cv::Rect kRight(76, 12, kSide, kSide);
const cv::Rect kDoor(72, 33, 4, 18);

inline cv::Mat draw() {
    cv::Mat map(84, 148, CV_32FC1, cv::Scalar(kWall));
    for (const cv::Rect& floor : {kLeft, kRight, kDoor}) map(floor).setTo(0.0);
    return map;
}

inline cv::Point centre(const cv::Rect& room) {
    return (room.tl() + room.br()) / 2;
}

}  // namespace drawn_map
