#include <opencv2/core.hpp>

#include "families/plan_families.h"
#include "plan_writer.h"

namespace vorund::test {
namespace {

constexpr char kWho[] = "writeFamilyPlan";

// Of the two sides of a border, the lower number gives way.
bool besideHigherRoom(const cv::Mat& rooms, int row, int col) {
    const int own = rooms.at<std::uint16_t>(row, col);
    for (int r = std::max(0, row - 1); r <= std::min(rooms.rows - 1, row + 1); ++r) {
        for (int c = std::max(0, col - 1); c <= std::min(rooms.cols - 1, col + 1); ++c) {
            if (rooms.at<std::uint16_t>(r, c) > own) return true;
        }
    }
    return false;
}

}  // namespace

cv::Mat drawnTruth(const cv::Mat& rooms) {
    cv::Mat truth = cv::Mat::zeros(rooms.size(), CV_8UC1);
    for (int row = 0; row < rooms.rows; ++row) {
        for (int col = 0; col < rooms.cols; ++col) {
            const bool room = rooms.at<std::uint16_t>(row, col) > 0;
            if (room && !besideHigherRoom(rooms, row, col)) truth.at<std::uint8_t>(row, col) = 255;
        }
    }
    return truth;
}

void writeFamilyPlan(const FamilyPlan& plan, const std::string& directory,
                     const std::string& name) {
    checkFileName(kWho, name);
    Plan files{plan.map, plan.rooms, plan.doors, {}};
    files.options.resolution_um = plan.resolution_um;
    const std::string stem = directory + "/" + name;
    const auto writePng = [&](const cv::Mat& image, const std::string& suffix) {
        writeFile(kWho, stem + suffix, pngOf(kWho, image, stem + suffix));
    };
    writePng(plan.map, ".png");
    writeFile(kWho, stem + ".yaml", yamlOf(files, name + ".png"));
    writePng(drawnTruth(plan.rooms), "_gt_segmentation.png");
    writePng(plan.rooms, "_rooms.png");
    writeFile(kWho, stem + "_doors.json", doorsOf(files));
}

}  // namespace vorund::test
