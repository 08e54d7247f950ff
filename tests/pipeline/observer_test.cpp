#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "support/captures.h"
#include "support/drawn_plans.h"
#include "support/mat_matchers.h"
#include "vorund/floorplan_segmenter.h"

namespace vorund {
namespace {

using test::ConsoleCapture;
using test::MatEq;
using test::PlainCapture;
using test::TempDir;

/// One call of an observer.
struct Call {
    std::string stage;
    int done;
    int total;
};

bool operator==(const Call& a, const Call& b) {
    return a.stage == b.stage && a.done == b.done && a.total == b.total;
}

std::ostream& operator<<(std::ostream& stream, const Call& call) {
    return stream << call.stage << " " << call.done << "/" << call.total;
}

class StageObserverTest : public ::testing::Test {
 protected:
    StageObserverTest() {
        DebuggerConfig config;
        config.output_dir = dir_.path();
        debugger_ = Debugger::create(config);
    }

    /// All calls of one run.
    std::vector<Call> callsOf(const Config& config) {
        std::vector<Call> calls;
        FloorplanSegmenter(config, debugger_)
            .doSegment(map_, [&](const std::string& stage, int done, int total) {
                calls.push_back({stage, done, total});
                return true;
            });
        return calls;
    }

    /// How many scales the last run had, by its lines.
    int scalesLogged() const {
        int scales = 0;
        for (const std::string& text : console_.texts()) {
            if (text.rfind("[computeLabelsList] iter: ", 0) == 0) ++scales;
        }
        return scales;
    }

    TempDir dir_;
    ConsoleCapture console_;
    PlainCapture plain_;
    std::shared_ptr<Debugger> debugger_;
    const cv::Mat map_ = test::twoRooms().map;
};

TEST_F(StageObserverTest, HearsOfEveryStageAndScaleInOrder) {
    Config config;
    config.compute_labels_list.max_iter = 77;
    const std::vector<Call> calls = callsOf(config);
    const int scales = scalesLogged();
    ASSERT_GT(scales, 1);
    std::vector<Call> expected = {
        {"denoise", 0, 1}, {"dilate", 0, 1}, {"ridges", 0, 1}, {"scales", 0, 77}};
    for (int scale = 1; scale <= scales; ++scale) expected.push_back({"scales", scale, 77});
    for (const std::string stage : {"over-segment", "fill", "restore"}) {
        expected.push_back({stage, 0, 1});
    }
    expected.push_back({"finished", 1, 1});
    EXPECT_EQ(calls, expected);
}

TEST_F(StageObserverTest, NamesItsStages) {
    const std::vector<std::string> names = {kStageDenoise, kStageDilate,      kStageRidges,
                                            kStageScales,  kStageOverSegment, kStageFill,
                                            kStageRestore, kStageFinished};
    EXPECT_THAT(names, testing::ElementsAre("denoise", "dilate", "ridges", "scales", "over-segment",
                                            "fill", "restore", "finished"));
}

TEST_F(StageObserverTest, HearsOfASingleScaleWithoutAStep) {
    // One scale gives nothing to track, so the run ends with the next stage.
    Config config;
    config.compute_labels_list.sigma_step = 0.0;
    std::vector<Call> calls;
    FloorplanSegmenter segmenter(config, debugger_);
    EXPECT_THROW(segmenter.doSegment(map_,
                                     [&](const std::string& stage, int done, int total) {
                                         calls.push_back({stage, done, total});
                                         return true;
                                     }),
                 std::runtime_error);
    const std::vector<Call> expected = {{"denoise", 0, 1}, {"dilate", 0, 1},
                                        {"ridges", 0, 1},  {"scales", 0, 1},
                                        {"scales", 1, 1},  {"over-segment", 0, 1}};
    EXPECT_EQ(calls, expected);
}

TEST_F(StageObserverTest, IsCalledOnTheThreadOfTheCaller) {
    FloorplanSegmenter segmenter(Config(), debugger_);
    segmenter.doSegment(map_, [caller = std::this_thread::get_id()](const std::string&, int, int) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        return true;
    });
}

TEST_F(StageObserverTest, DoesNotChangeTheResult) {
    FloorplanSegmenter segmenter(Config(), debugger_);
    const cv::Mat plain = segmenter.doSegment(map_);
    const auto lines = console_.lines();
    console_.clear();
    EXPECT_THAT(segmenter.doSegment(map_, [](const std::string&, int, int) { return true; }),
                MatEq(plain));
    EXPECT_EQ(console_.lines(), lines);
    console_.clear();
    EXPECT_THAT(segmenter.doSegment(map_, StageObserver()), MatEq(plain));
    EXPECT_THAT(segmenter.doSegment(map_, nullptr), MatEq(plain));
}

TEST_F(StageObserverTest, CancelsAtEveryCallAndLeavesNothingBehind) {
    const std::size_t count = callsOf(Config()).size();
    FloorplanSegmenter segmenter(Config(), debugger_);
    const cv::Mat before = map_.clone();
    const cv::Mat expected = segmenter.doSegment(map_);
    for (std::size_t last = 1; last <= count; ++last) {
        std::size_t calls = 0;
        EXPECT_THROW(
            segmenter.doSegment(map_, [&](const std::string&, int, int) { return ++calls < last; }),
            Cancelled)
            << last;
        EXPECT_EQ(calls, last);
        EXPECT_EQ(debugger_.use_count(), 2);
    }
    EXPECT_THAT(map_, MatEq(before));
    EXPECT_THAT(segmenter.doSegment(map_), MatEq(expected));
    EXPECT_THAT(dir_.names(), testing::IsEmpty());
}

TEST_F(StageObserverTest, RunsNoStageAfterItsCancelling) {
    FloorplanSegmenter segmenter(Config(), debugger_);
    EXPECT_THROW(segmenter.doSegment(map_, [](const std::string& stage, int,
                                              int) { return stage != kStageOverSegment; }),
                 Cancelled);
    EXPECT_GT(scalesLogged(), 1);
    EXPECT_THAT(console_.texts(), testing::Not(testing::Contains("Completed over-segmentation")));
    console_.clear();
    EXPECT_THROW(segmenter.doSegment(map_, [](const std::string&, int, int) { return false; }),
                 Cancelled);
    EXPECT_THAT(console_.texts(),
                testing::Not(testing::Contains(testing::StartsWith("crop_info"))));
}

TEST_F(StageObserverTest, CancelsWithARuntimeErrorThatSaysSomething) {
    EXPECT_TRUE((std::is_base_of<std::runtime_error, Cancelled>::value));
    FloorplanSegmenter segmenter(Config(), debugger_);
    try {
        segmenter.doSegment(map_, [](const std::string&, int, int) { return false; });
        FAIL() << "not cancelled";
    } catch (const Cancelled& cancelled) {
        EXPECT_STRNE(cancelled.what(), "");
    }
}

TEST_F(StageObserverTest, LetsItsOwnExceptionPass) {
    struct Own {
        int number;
    };
    FloorplanSegmenter segmenter(Config(), debugger_);
    const cv::Mat expected = segmenter.doSegment(map_);
    for (const std::string at : {kStageDenoise, kStageScales, kStageFinished}) {
        try {
            segmenter.doSegment(map_, [&](const std::string& stage, int, int) {
                if (stage == at) throw Own{42};
                return true;
            });
            FAIL() << at;
        } catch (const Own& own) {
            EXPECT_EQ(own.number, 42);
        }
    }
    EXPECT_THAT(segmenter.doSegment(map_), MatEq(expected));
}

}  // namespace
}  // namespace vorund
