// What a lidar makes of a clean plan. Private to the plan generator.
#pragma once

#include "plan_building.h"
#include "plan_frame.h"
#include "plan_generator.h"

namespace vorund::test {

/// A plan in the making.
struct Scene {
    const Building& building;
    const PlanFrame& frame;
    cv::Mat ground;  ///< CV_16UC1: the room of each pixel up to the middle of its walls; 0 outside.
    Plan plan;
};

/// The wall's thickness as drawn, half of it on either side. [micrometre]
std::int64_t drawnHalf(const Wall& wall, const PlanFrame& frame);

/// Makes walls ragged and porous, and speckles the floor. Doorways keep their width.
/// Walls lose their core where a laser can't have seen it, if the outside is unknown.
/// A wall pixel that becomes free joins the room whose half of the wall it is in.
void addNoise(Scene& scene);

/// Lets rays out of windows in outer walls.
void addFans(Scene& scene);

}  // namespace vorund::test
