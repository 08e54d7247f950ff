#include "cleaning/clutter.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "vorund/rooms/grid_map.h"

namespace vorund::rooms {
namespace {

/// Partitions are thinner, most furniture is thicker. [m]
constexpr double kThicknessOfBlocks = 0.5;

struct Parts {
    cv::Mat labels;
    cv::Mat stats;
    int count;

    Parts(const cv::Mat& mask, int connectivity) {
        cv::Mat centroids;
        count =
            cv::connectedComponentsWithStats(mask, labels, stats, centroids, connectivity, CV_32S);
    }
    double area(int part) const {
        return stats.at<int>(part, cv::CC_STAT_AREA) * kWorkingResolution * kWorkingResolution;
    }
    double largerSide(int part) const {
        return std::max(stats.at<int>(part, cv::CC_STAT_WIDTH),
                        stats.at<int>(part, cv::CC_STAT_HEIGHT)) *
               kWorkingResolution;
    }
};

/// Sets the pixels of the chosen parts.
void setParts(cv::Mat& mask, const Parts& parts, const std::vector<std::uint8_t>& chosen,
              std::uint8_t value) {
    for (int row = 0; row < mask.rows; ++row) {
        const std::int32_t* const label = parts.labels.ptr<std::int32_t>(row);
        std::uint8_t* const pixel = mask.ptr<std::uint8_t>(row);
        for (int col = 0; col < mask.cols; ++col) {
            if (chosen[static_cast<std::size_t>(label[col])] != 0) pixel[col] = value;
        }
    }
}

void closeSmallFloor(cv::Mat& walls, double least_area) {
    const Parts floors(walls == 0, 4);
    std::vector<std::uint8_t> chosen(static_cast<std::size_t>(floors.count), 0);
    for (int part = 1; part < floors.count; ++part) {
        chosen[static_cast<std::size_t>(part)] = floors.area(part) < least_area ? 1 : 0;
    }
    setParts(walls, floors, chosen, 255);
}

/// For each part, whether a square of the given side, in pixels, fits into it.
std::vector<std::uint8_t> partsThatHold(const cv::Mat& walls, const Parts& parts, int side) {
    cv::Mat cores;
    cv::erode(walls, cores, cv::Mat::ones(side, side, CV_8U), cv::Point(-1, -1), 1,
              cv::BORDER_CONSTANT, cv::Scalar(0));
    std::vector<std::uint8_t> hold(static_cast<std::size_t>(parts.count), 0);
    for (int row = 0; row < cores.rows; ++row) {
        const std::uint8_t* const core = cores.ptr<std::uint8_t>(row);
        const std::int32_t* const label = parts.labels.ptr<std::int32_t>(row);
        for (int col = 0; col < cores.cols; ++col) {
            if (core[col] != 0) hold[static_cast<std::size_t>(label[col])] = 1;
        }
    }
    return hold;
}

void takeOutLooseParts(cv::Mat& walls, const RoomsConfig& config) {
    const Parts parts(walls, 8);
    const std::vector<std::uint8_t> thick =
        partsThatHold(walls, parts, cvRound(kThicknessOfBlocks / kWorkingResolution));
    std::vector<std::uint8_t> chosen(static_cast<std::size_t>(parts.count), 0);
    for (int part = 1; part < parts.count; ++part) {
        const auto index = static_cast<std::size_t>(part);
        const double limit =
            thick[index] != 0 ? std::max(config.loose_block, config.loose_part) : config.loose_part;
        chosen[index] = parts.largerSide(part) <= limit + 1e-9 ? 1 : 0;
    }
    setParts(walls, parts, chosen, 0);
}

}  // namespace

cv::Mat withoutClutter(const cv::Mat& values, double threshold, const RoomsConfig& config) {
    const cv::Mat before = values > threshold;
    cv::Mat walls = before.clone();
    closeSmallFloor(walls, config.closed_floor);
    takeOutLooseParts(walls, config);
    cv::Mat cleaned = values.clone();
    cleaned.setTo(0.0, before & ~walls);
    cleaned.setTo(1.0, walls & ~before);
    return cleaned;
}

}  // namespace vorund::rooms
