// Binary maps of many kinds for the tests of the scale space.
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "support/plan_generator.h"
#include "support/random_images.h"

namespace vorund::test {

struct BinaryMap {
    std::string name;
    cv::Mat walls;  ///< `CV_32FC1`, 1 = wall, 0 = floor.
};

inline cv::Mat wallsOfPlan(std::uint64_t seed, int furniture, int noise, int rotation) {
    PlanOptions options;
    options.seed = seed;
    options.width_mm = 14000;
    options.height_mm = 9000;
    options.furniture_percent = furniture;
    options.noise_percent = noise;
    options.rotation_tenths_deg = rotation;
    cv::Mat walls;
    cv::Mat(makePlan(options).map != kMapFree).convertTo(walls, CV_32F, 1.0 / 255.0);
    return walls;
}

/// Patches of wall on floor, or of floor on wall.
inline cv::Mat randomPatches(RandomImages& random, const cv::Size& size) {
    const bool inverted = random.below(2) == 1;
    cv::Mat walls;
    cv::Mat(random.patches(size, 1 + random.below(6), 0) != 0)
        .convertTo(walls, CV_32F, 1.0 / 255.0);
    return inverted ? cv::Mat(1.0 - walls) : walls;
}

/// One wall pixel among `one_in`, and the corners of the image on both sides of its edge.
inline cv::Mat noise(RandomImages& random, const cv::Size& size, int one_in) {
    cv::Mat_<float> walls(size);
    for (float& pixel : walls) pixel = random.below(one_in) == 0 ? 1.0F : 0.0F;
    return walls;
}

inline std::vector<BinaryMap> binaryMaps() {
    RandomImages random(20);
    std::vector<BinaryMap> maps{{"bare plan", wallsOfPlan(1, 0, 0, 0)},
                                {"furnished plan", wallsOfPlan(2, 60, 40, 0)},
                                {"turned plan", wallsOfPlan(3, 30, 20, 170)},
                                {"sparse noise", noise(random, {150, 130}, 60)},
                                {"dense noise", noise(random, {120, 90}, 2)},
                                {"one row", noise(random, {90, 1}, 9)},
                                {"one column", noise(random, {1, 70}, 9)},
                                {"one pixel", cv::Mat::zeros(1, 1, CV_32FC1)},
                                {"all wall", cv::Mat::ones(40, 50, CV_32FC1)},
                                {"a straight wall", cv::Mat::zeros(120, 160, CV_32FC1)}};
    maps.back().walls.rowRange(60, 64) = 1.0F;
    for (int i = 0; i < 6; ++i) {
        maps.push_back({"patches " + std::to_string(i),
                        randomPatches(random, {20 + random.below(140), 20 + random.below(140)})});
    }
    return maps;
}

}  // namespace vorund::test
