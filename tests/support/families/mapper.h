// What a grid mapper makes of a robot's scans. Private to the families of plans.
#pragma once

#include <vector>

#include "families/drive.h"
#include "families/rays.h"
#include "random.h"

namespace vorund::test::families {

struct LidarOptions {
    int beams = 720;
    int field_of_view = 36000;  ///< About the heading. [0.01 degree]
    int range_mm = 12000;
    int noise_mm = 20;          ///< Standard deviation of a range.
    int stray_permille = 2;     ///< Ranges that are anything.
    int lost_permille = 5;      ///< Beams that come back from nothing.
    int dark_percent = 3;       ///< Things that give no echo.
    int frame_percent = 15;     ///< Of a pane: frames, posters, dirt that give an echo.
    int people = 4;             ///< Who walk or stand about, each for some scans.
    int drift_mm = 40;          ///< How far the believed place may be off.
    int drift_hundredths = 40;  ///< How far the believed heading may be off. [0.01 degree]
    int drift_length = 25;      ///< Scans over which the error stays much the same.
    int hit_percent = 25;       ///< A pixel is occupied if that part of its rays ended in it.
    int least_rays = 1;         ///< Fewer, and a pixel stays unknown.
};

/// A map and where its floor really was.
struct MappedSite {
    cv::Mat map;     ///< CV_8UC1, pixels twice as large as those of the field's canvas.
    cv::Mat ground;  ///< CV_16UC1: for free pixels the room that most rays through them were in.
};

/// Casts the scans through the true site and counts them in a grid where the robot believes to be.
/// A pane lets a beam pass unless it meets it squarely or hits a frame.
MappedSite mapSite(const RayField& field, const std::vector<Station>& stations,
                   const LidarOptions& options, Random& random);

}  // namespace vorund::test::families
