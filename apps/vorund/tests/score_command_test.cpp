#include <cstdint>
#include <nlohmann/json.hpp>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using Json = nlohmann::json;

constexpr int kSide = 30;

/// Two squares side by side: 30 x 30 pixels of each value.
cv::Mat halves(int left, int right, int type = CV_8UC1) {
    cv::Mat pixels(kSide, 2 * kSide, type, cv::Scalar(left));
    pixels.colRange(kSide, 2 * kSide) = right;
    return pixels;
}

/// Two white rooms, 900 and 840 pixels, that a wall of two columns keeps apart.
cv::Mat apart() {
    cv::Mat pixels = halves(255, 255);
    pixels.colRange(kSide, kSide + 2) = 0;
    return pixels;
}

class ScoreCommand : public CliTest {
 protected:
    Outcome score(const std::vector<std::string>& options) const {
        std::vector<std::string> arguments{"score"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runProgram(arguments);
    }

    std::vector<std::string> lines(const std::vector<std::string>& options) const {
        const Outcome outcome = score(options);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        return splitLines(outcome.out);
    }

    /// Maps "a" and "b", of which "a" alone has a prediction, the true one.
    void makeFolders() const {
        std::filesystem::create_directories(folder_.file("maps"));
        std::filesystem::create_directories(folder_.file("results/a"));
        for (const char* name : {"a", "b"}) {
            image(std::string("maps/") + name + ".png", apart());
            image(std::string("maps/") + name + "_gt_segmentation.png", apart());
        }
        cv::Mat rooms = halves(1, 2);
        rooms.setTo(0, apart() == 0);
        image("results/a/rooms.png", rooms);
    }
};

TEST_F(ScoreCommand, GivesTheTruthItselfTheBestFigures) {
    const std::string truth = image("truth.png", halves(1, 2));
    EXPECT_THAT(lines({truth, truth, "--truth", "labels"}),
                AllOf(Contains("n_gt: 2"), Contains("n_pred: 2"), Contains("mcc_1to1: 1.000000"),
                      Contains("unlabelled: 0.000000")));
}

TEST_F(ScoreCommand, CountsAMissingRoomAsNothing) {
    // One room is as it should be, a correlation of 1, the other is missing: their mean is 0.5.
    const std::string predicted = image("rooms.png", halves(1, 0));
    const std::string truth = image("truth.png", halves(1, 2));
    EXPECT_THAT(lines({predicted, truth, "--truth", "labels"}),
                AllOf(Contains("mcc_1to1: 0.500000"), Contains("n_pred: 1"),
                      Contains("unlabelled: 0.500000")));
}

TEST_F(ScoreCommand, PrintsTheSameFiguresAsJson) {
    cv::Mat shifted = halves(1, 2);
    shifted.colRange(kSide, kSide + 7) = 1;
    const std::string predicted = image("rooms.png", shifted);
    const std::string truth = image("truth.png", halves(1, 2));
    const std::vector<std::string> text = lines({predicted, truth, "--truth", "labels"});
    const Json json = Json::parse(score({predicted, truth, "--truth", "labels", "--json"}).out);
    ASSERT_EQ(text.size() + 1, json.size());  // Of "rooms" only JSON tells.
    for (const std::string& line : text) {
        const std::size_t colon = line.find(": ");
        EXPECT_NEAR(std::stod(line.substr(colon + 2)), json.at(line.substr(0, colon)).get<double>(),
                    0.51e-6)
            << line;
    }
    EXPECT_LT(json["mcc_1to1"].get<double>(), 1.0);
}

TEST_F(ScoreCommand, TakesTheLabel255ForNoRoomInSegmentsOfEightBitsAlone) {
    const std::string truth = image("truth.png", halves(1, 2));
    const auto linesOf = [&](const std::string& predicted) {
        return lines({predicted, truth, "--truth", "labels"});
    };
    EXPECT_THAT(linesOf(image("segments.png", halves(1, 255))), Contains("n_pred: 1"));
    EXPECT_THAT(linesOf(image("rooms.png", halves(1, 255))), Contains("n_pred: 2"));
    EXPECT_THAT(linesOf(image("segments.png", halves(1, 255, CV_16UC1))), Contains("n_pred: 2"));
}

TEST_F(ScoreCommand, CountsTheFreePixelsOfTheMapThatIsNamed) {
    const std::string truth = image("truth.png", halves(1, 2));
    const std::string map = image("map.png", halves(255, 0));
    EXPECT_THAT(lines({truth, truth, "--truth", "labels", "--map", map}), Contains("n_gt: 1"));
}

TEST_F(ScoreCommand, LeavesOutDetachedRoomsUnlessTheyAreKept) {
    const std::string predicted = image("rooms.png", halves(1, 2));
    image("a.png", apart());
    const std::string truth = image("a_gt_segmentation.png", apart());
    EXPECT_THAT(lines({predicted, truth}), Contains("n_gt: 1"));
    EXPECT_THAT(lines({predicted, truth, "--keep-detached"}), Contains("n_gt: 2"));
    EXPECT_THAT(lines({predicted, truth, "--truth", "drawing"}), Contains("n_gt: 1"));
}

TEST_F(ScoreCommand, ScoresTheRoomsThatWereFound) {
    const std::string map = image("a.png", twoRooms());
    cv::Mat drawing = twoRooms();
    drawing(cv::Rect(69, 33, 2, 14)) = 0;
    drawing.setTo(255, drawing == 254);
    const std::string truth = image("a_gt_segmentation.png", drawing);
    ASSERT_EQ(segment(map).status, 0);
    EXPECT_THAT(lines({out() + "/rooms.png", truth}),
                AllOf(Contains("n_gt: 2"), Contains("n_pred: 2"), Contains("f1_75: 1.000000")));
}

TEST_F(ScoreCommand, TellsWhatCannotBeScored) {
    const std::string truth = image("truth.png", halves(1, 2));
    const std::string missing = folder_.file("missing.png");
    expectFailure(score({missing, truth}), missing, "No such file or directory");
    expectFailure(score({truth, missing}), missing, "No such file or directory");
    const std::string small = image("small.png", cv::Mat(3, 4, CV_8UC1, cv::Scalar(1)));
    expectFailure(score({small, truth}), small, "4 x 3 pixels");
    expectFailure(score({"--batch", folder_.path(), missing}), missing,
                  "No such file or directory");
}

TEST_F(ScoreCommand, ScoresAFolder) {
    makeFolders();
    std::filesystem::copy(folder_.file("results/a"), folder_.file("results/b"));
    const std::vector<std::string> text =
        lines({"--batch", folder_.file("results"), folder_.file("maps"), "--keep-detached"});
    EXPECT_THAT(text, ElementsAre(StartsWith("map "), StartsWith("a "), StartsWith("b "),
                                  StartsWith("mean "), StartsWith("std "), "mcc_1to1: 1.000000"));
}

TEST_F(ScoreCommand, CountsAMapWithoutPredictionAsNothingAndFails) {
    makeFolders();
    const std::string results = folder_.file("results");
    const std::vector<std::string> batch{"--batch", results, folder_.file("maps"),
                                         "--keep-detached"};
    const Outcome outcome = score(batch);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vorund: " + results + ": 1 of 2 maps could not be scored\n");
    EXPECT_THAT(
        splitLines(outcome.out),
        Contains(AllOf(StartsWith("b "), EndsWith("neither b/rooms.png nor b.png is there"))));
    EXPECT_THAT(outcome.out, EndsWith("\nmcc_1to1: 0.500000\n"));

    std::vector<std::string> as_json = batch;
    as_json.emplace_back("--json");
    const Json json = Json::parse(score(as_json).out);
    EXPECT_EQ(json["summary"]["maps"], 2);
    EXPECT_EQ(json["summary"]["missing"], 1);
    EXPECT_EQ(json["maps"]["a"]["mcc_1to1"], 1.0);
    EXPECT_EQ(json["maps"]["b"]["mcc_1to1"], 0.0);
}

TEST_F(ScoreCommand, ScoresAVariantOfTheMaps) {
    makeFolders();
    image("maps/a_chairs.png", apart());
    std::filesystem::rename(folder_.file("results/a"), folder_.file("results/a_chairs"));
    EXPECT_THAT(lines({"--batch", folder_.file("results"), folder_.file("maps"), "--variant",
                       "chairs", "--keep-detached"}),
                AllOf(Contains(StartsWith("a ")), Contains("mcc_1to1: 1.000000")));
}

TEST_F(ScoreCommand, TellsWhatIsWrongWithStatusTwo) {
    struct Wrong {
        std::vector<std::string> options;
        std::string cause;
    };
    const std::vector<Wrong> cases{
        {{}, "PREDICTED"},
        {{"a.png"}, "TRUTH"},
        {{"a.png", ""}, "TRUTH"},
        {{"a.png", "b.png", "c.png"}, "c.png"},
        {{"a.png", "b.png", "--truth", "photo"}, "--truth"},
        {{"a.png", "b.png", "--variant", "chairs"}, "--variant has no meaning without --batch"},
        {{"--batch", "a", "b", "--map", "c.png"}, "--map has no meaning with --batch"},
        {{"--batch", "a", "b", "--truth", "labels"}, "--truth has no meaning with --batch"},
        {{"--batch", "a"}, "TRUTH"},
        {{"a.png", "b.png", "--out", "c"}, "--out"},
    };
    for (const Wrong& wrong : cases) {
        const Outcome outcome = score(wrong.options);
        EXPECT_EQ(outcome.status, 2) << wrong.cause;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(splitLines(outcome.err),
                    ElementsAre(AllOf(StartsWith("vorund: "), HasSubstr(wrong.cause))));
    }
}

TEST_F(ScoreCommand, TellsInItsHelpWhat255Means) {
    EXPECT_THAT(score({"--help"}).out, AllOf(HasSubstr("--batch"), HasSubstr("The label 255")));
}

}  // namespace
}  // namespace vorund::test
