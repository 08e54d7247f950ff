// Compares with an independent script that has the same definitions and the same JSON, over a
// folder of maps; both stand outside of this project.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "support/captures.h"
#include "vorund/rooms/score_files.h"

namespace vorund::rooms {
namespace {

namespace fs = std::filesystem;

using Json = nlohmann::json;
using Predict = std::function<cv::Mat(const cv::Mat& map)>;

constexpr double kAgreement = 1e-9;

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

cv::Mat oneRoom(const cv::Mat& map) {
    return map >= kLeastFreeGrey;
}

cv::Mat freeAreas(const cv::Mat& map) {
    cv::Mat areas;
    cv::connectedComponents(map >= kLeastFreeGrey, areas, 4, CV_16U);
    return areas;
}

/// Squares of equal area, so that many overlaps are equal.
cv::Mat squares(const cv::Mat& map, int side) {
    cv::Mat labels(map.size(), CV_16UC1);
    const int in_row = map.cols / side + 1;
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            labels.at<std::uint16_t>(row, col) =
                static_cast<std::uint16_t>(row / side * in_row + col / side + 1);
        }
    }
    return labels;
}

cv::Mat colours(const cv::Mat& map) {
    cv::Mat bands;
    squares(map, 60).convertTo(bands, CV_8U, 0.5);
    cv::Mat picture;
    cv::applyColorMap(bands, picture, cv::COLORMAP_JET);
    return picture;
}

/// Every value by its path.
void expectSame(const Json& script, const Json& ours) {
    const Json expected = script.flatten();
    const Json actual = ours.flatten();
    EXPECT_EQ(expected.size(), actual.size());
    for (const auto& [path, value] : expected.items()) {
        ASSERT_TRUE(actual.contains(path)) << path;
        if (!value.is_number()) continue;  // The errors have other words.
        EXPECT_NEAR(value.get<double>(), actual[path].get<double>(), kAgreement) << path;
    }
}

class ScoreAgainstScript : public ::testing::Test {
 protected:
    void SetUp() override {
        if (script_.empty() || maps_.empty()) {
            GTEST_SKIP() << "VORUND_SCORE_SCRIPT and VORUND_MAPS do not name a script and a folder";
        }
    }

    /// Predicts every image of the folder, the truths included, which nobody reads.
    void predict(const Predict& predictor) const {
        for (const auto& entry : fs::directory_iterator(maps_)) {
            if (entry.path().extension() != ".png") continue;
            const cv::Mat map = cv::imread(entry.path().string(), cv::IMREAD_GRAYSCALE);
            const std::string path = results_.file(entry.path().filename().string());
            ASSERT_TRUE(cv::imwrite(path, predictor(map))) << path;
        }
    }

    bool hasVariant(const std::string& variant) const {
        const std::string ending = "_" + variant + ".png";
        for (const auto& entry : fs::directory_iterator(maps_)) {
            const std::string name = entry.path().filename().string();
            if (name.size() > ending.size() &&
                name.compare(name.size() - ending.size(), ending.size(), ending) == 0) {
                return true;
            }
        }
        return variant == kBareVariant;
    }

    void expectAgreement(const std::string& variant, bool keep_detached) const {
        if (!hasVariant(variant)) return;
        SCOPED_TRACE(variant);
        const std::string output = output_.file("script.json");
        const std::string command = "/usr/bin/python3 '" + script_ + "' --batch '" +
                                    results_.path() + "' '" + maps_ + "' --variant " + variant +
                                    " --json '" + output + "'" +
                                    (keep_detached ? " --keep-detached" : "") + " > /dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        const Json script = Json::parse(test::readFile(output));
        ScoreOptions options;
        options.keep_detached = keep_detached;
        const auto scores = scoreBatch(results_.path(), maps_, variant, options);
        expectSame(script, Json::parse(scoreJson(scores)));
    }

    const std::string script_ = environment("VORUND_SCORE_SCRIPT");
    const std::string maps_ = environment("VORUND_MAPS");
    test::TempDir results_;
    test::TempDir output_;
};

TEST_F(ScoreAgainstScript, AgreesOnSeveralKindsOfPrediction) {
    const std::vector<Predict> predictors{
        oneRoom,
        freeAreas,
        [](const cv::Mat& map) { return squares(map, 20); },
        colours,
        [](const cv::Mat& map) { return cv::Mat(cv::Mat::zeros(map.size(), CV_8UC1)); },
        [](const cv::Mat& map) { return cv::Mat(cv::Mat::ones(map.rows, 7, CV_8UC1)); }};
    for (std::size_t i = 0; i < predictors.size(); ++i) {
        SCOPED_TRACE(i);
        predict(predictors[i]);
        for (const char* const variant : {"bare", "furnitures", "trashbins"}) {
            expectAgreement(variant, false);
        }
        expectAgreement("bare", true);
    }
}

TEST_F(ScoreAgainstScript, AgreesOnMissingPredictions) {
    expectAgreement("bare", false);
}

}  // namespace
}  // namespace vorund::rooms
