#include <nlohmann/json.hpp>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Json = nlohmann::json;

constexpr int kSide = 30;

/// Two squares side by side, 30 x 30 pixels of each value.
cv::Mat halves(int left, int right) {
    cv::Mat pixels(kSide, 2 * kSide, CV_8UC1, cv::Scalar(left));
    pixels.colRange(kSide, 2 * kSide) = right;
    return pixels;
}

class ScorePicture : public CliTest {
 protected:
    Outcome score(const std::vector<std::string>& options) const {
        std::vector<std::string> arguments{"score"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runProgram(arguments);
    }

    /// Maps "a" and "b" with predictions, bare and of the variant "chairs".
    void makeFolders() const {
        std::filesystem::create_directories(folder_.file("maps"));
        std::filesystem::create_directories(folder_.file("results"));
        for (const std::string name : {"a", "b"}) {
            for (const std::string variant : {"", "_chairs"}) {
                image("maps/" + name + variant + ".png", halves(255, 255));
                image("results/" + name + variant + ".png", halves(1, 1));
            }
            image("maps/" + name + "_gt_segmentation.png", halves(255, 255));
        }
    }
};

TEST_F(ScorePicture, IsWrittenWithItsFolder) {
    const std::string predicted = image("rooms.png", halves(1, 1));
    const std::string truth = image("truth.png", halves(1, 2));
    const std::string picture = folder_.file("pictures/errors.png");
    const Outcome outcome = score({predicted, truth, "--truth", "labels", "--picture", picture});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const cv::Mat drawn = cv::imread(picture, cv::IMREAD_UNCHANGED);
    EXPECT_EQ(drawn.type(), CV_8UC3);
    EXPECT_GE(drawn.cols, 2 * kSide);
    EXPECT_GT(drawn.rows, kSide);
    EXPECT_THAT(names(folder_.file("pictures")), ElementsAre("errors.png"));
}

TEST_F(ScorePicture, IsOneForEachMapOfABatch) {
    makeFolders();
    const std::string pictures = folder_.file("pictures");
    const std::vector<std::string> batch{"--batch", folder_.file("results"), folder_.file("maps"),
                                         "--picture", pictures};
    EXPECT_EQ(score(batch).status, 0);
    EXPECT_THAT(names(pictures), ElementsAre("a.png", "b.png"));
    std::vector<std::string> variant = batch;
    variant.insert(variant.end(), {"--variant", "chairs"});
    EXPECT_EQ(score(variant).status, 0);
    EXPECT_THAT(names(pictures), ElementsAre("a.png", "a_chairs.png", "b.png", "b_chairs.png"));
}

TEST_F(ScorePicture, IsNotLeftBehindByAFailure) {
    const std::string truth = image("truth.png", halves(1, 2));
    const std::string picture = folder_.file("pictures/errors.png");
    EXPECT_EQ(score({folder_.file("missing.png"), truth, "--picture", picture}).status, 1);
    EXPECT_FALSE(exists(folder_.file("pictures")));
}

TEST_F(ScorePicture, MustBeAPng) {
    const Outcome outcome = score({"a.png", "b.png", "--picture", "errors.jpg"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("--picture must name a PNG file (.png)"));
}

TEST_F(ScorePicture, HasItsWordsInTheJson) {
    const std::string predicted = image("rooms.png", halves(4, 4));
    const std::string truth = image("truth.png", halves(1, 2));
    const Json one = Json::parse(score({predicted, truth, "--truth", "labels", "--json"}).out);
    ASSERT_EQ(one["rooms"].size(), 2U);
    EXPECT_EQ(one["rooms"][0]["joined"], Json::parse(R"({"in": 4, "with": [2]})"));

    makeFolders();
    const Json all = Json::parse(
        score({"--batch", folder_.file("results"), folder_.file("maps"), "--json"}).out);
    ASSERT_EQ(all["maps"]["b"]["rooms"].size(), 1U);
    EXPECT_EQ(all["maps"]["b"]["rooms"][0]["iou"], 1.0);
    EXPECT_THAT(all["maps"]["b"]["rooms"][0]["split"], IsEmpty());
}

}  // namespace
}  // namespace vorund::test
