#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using Json = nlohmann::json;

constexpr double kRounding = 0.5e-6;  // Of every number. [s]

class Timings : public CliTest {
 protected:
    std::string timesFile() const { return folder_.file("times.json"); }

    Json times() const { return Json::parse(readFile(timesFile())); }

    Outcome segmentWithTimes(const std::string& map) const {
        return segment(map, {"--timings", timesFile()});
    }
};

std::vector<std::string> stagesOf(const Json& times) {
    std::vector<std::string> names;
    for (const Json& stage : times["stages"]) names.push_back(stage["name"]);
    return names;
}

TEST_F(Timings, AreThoseOfTheStagesInTheirOrder) {
    ASSERT_EQ(segmentWithTimes(image("map.png", twoRooms())).status, 0);
    EXPECT_THAT(stagesOf(times()),
                ElementsAre("read", "prepare", "denoise", "dilate", "ridges", "scales",
                            "over-segment", "fill", "restore", "separate", "islands",
                            "merge-passages", "cuts", "records", "write"));
}

TEST_F(Timings, AddUpToTheWhole) {
    ASSERT_EQ(segmentWithTimes(image("map.png", twoRooms())).status, 0);
    const Json document = times();
    EXPECT_EQ(document["format"], 1);
    EXPECT_EQ(document["megapixels"], 0.0112);
    for (const char* clock : {"wall_s", "cpu_s"}) {
        double sum = 0.0;
        for (const Json& stage : document["stages"]) {
            EXPECT_GE(stage[clock].get<double>(), 0.0) << stage << clock;
            sum += stage[clock].get<double>();
        }
        const double rounding = kRounding * static_cast<double>(document["stages"].size() + 1);
        EXPECT_NEAR(sum, document["total"][clock].get<double>(), rounding) << clock;
    }
    // Reading and blurring take CPU time on any clock.
    EXPECT_GT(document["total"]["cpu_s"].get<double>(), 0.0);
}

TEST_F(Timings, LeaveOutStagesThatDoNotRun) {
    // A map that is all floor is one room without a run.
    const cv::Mat hall(80, 80, CV_8UC1, cv::Scalar(254));
    ASSERT_EQ(segmentWithTimes(image("hall.png", hall)).status, 0);
    EXPECT_THAT(stagesOf(times()),
                ElementsAre("read", "prepare", "separate", "islands", "merge-passages", "cuts", "records", "write"));
}

TEST_F(Timings, ChangeNoResult) {
    const std::string map = image("map.png", twoRooms());
    ASSERT_EQ(segmentWithTimes(map).status, 0);
    const std::string without = folder_.file("without");
    ASSERT_EQ(runProgram({"segment", map, "--out", without}).status, 0);
    ASSERT_EQ(names(without), names(out()));
    for (const std::string& name : names(without)) {
        EXPECT_TRUE(readFile(without + "/" + name) == readFile(out() + "/" + name)) << name;
    }
}

TEST_F(Timings, MayStandAmongTheResultsOrInADirectoryOfTheirOwn) {
    const std::string map = image("map.png", twoRooms());
    ASSERT_EQ(segment(map, {"--timings", out() + "/times.json"}).status, 0);
    EXPECT_THAT(names(out()), AllOf(Contains("times.json"), Contains("rooms.json")));
    const std::string deep = folder_.file("a/b/times.json");
    ASSERT_EQ(segment(map, {"--timings", deep}).status, 0);
    EXPECT_EQ(Json::parse(readFile(deep))["format"], 1);
    EXPECT_THAT(names(folder_.file("a/b")), ElementsAre("times.json"));
}

TEST_F(Timings, ReplaceOlderOnes) {
    folder_.write("times.json", "former");
    ASSERT_EQ(segmentWithTimes(image("map.png", twoRooms())).status, 0);
    EXPECT_EQ(times()["format"], 1);
}

TEST_F(Timings, AreNotWrittenWhenTheRunFails) {
    folder_.write("times.json", "former");
    EXPECT_EQ(segmentWithTimes(folder_.write("broken.png", "no image\n")).status, 1);
    EXPECT_EQ(readFile(timesFile()), "former");
    const cv::Mat walls(80, 80, CV_8UC1, cv::Scalar(0));
    expectFailure(segment(image("walls.png", walls), {"--timings", folder_.file("a/b/times.json")}),
                  folder_.file("walls.png"), "no free floor found");
    EXPECT_FALSE(exists(folder_.file("a")));
    EXPECT_THAT(folder_.names(), ElementsAre("broken.png", "times.json", "walls.png"));
}

TEST_F(Timings, NameTheFileThatCannotBeWritten) {
    const std::string map = image("map.png", twoRooms());
    const std::string file = folder_.write("file", "");
    expectFailure(segment(map, {"--timings", file + "/times.json"}), file, "Not a directory");
    expectFailure(segment(map, {"--timings", folder_.path()}), folder_.path(), "Is a directory");
}

TEST_F(Timings, AreNoneOfTheResults) {
    const std::string map = image("map.png", twoRooms());
    for (const char* name : {"rooms.json", "rooms.geojson", "segments.png", "debug"}) {
        const Outcome outcome = segment(map, {"--timings", out() + "/../out/" + name});
        EXPECT_EQ(outcome.status, 2) << name;
        EXPECT_THAT(outcome.err, AllOf(StartsWith("vorund: --timings: "),
                                       HasSubstr(std::string(name) + " is one of the results")));
        EXPECT_FALSE(exists(out()));
    }
    // Elsewhere a file may be called so.
    EXPECT_EQ(segment(map, {"--timings", folder_.file("rooms.json")}).status, 0);
}

TEST_F(Timings, NeedTheNameOfAFile) {
    const std::string map = image("map.png", twoRooms());
    for (const char* name : {"", "times/", ".", "times/.."}) {
        const Outcome outcome = segment(map, {std::string("--timings=") + name});
        EXPECT_EQ(outcome.status, 2) << name;
        EXPECT_THAT(splitLines(outcome.err), ElementsAre(HasSubstr("--timings")));
        EXPECT_FALSE(exists(out()));
    }
}

class TimingsOfABatch : public CliTest {
 protected:
    TimingsOfABatch() { std::filesystem::create_directories(folder_.file("maps")); }

    std::string maps() const { return folder_.file("maps"); }
    std::string timesFolder() const { return folder_.file("times"); }
};

TEST_F(TimingsOfABatch, AreAFileForEachMapThatWasRun) {
    image("maps/lab.png", twoRooms());
    image("maps/office.png", twoRooms()(cv::Rect(0, 0, 140, 76)));
    folder_.write("maps/broken.png", "no image\n");
    EXPECT_EQ(segment(maps(), {"--timings", timesFolder(), "--jobs", "2"}).status, 1);
    EXPECT_THAT(names(timesFolder()), ElementsAre("lab.json", "office.json"));
    EXPECT_EQ(Json::parse(readFile(timesFolder() + "/lab.json"))["megapixels"], 0.0112);
    EXPECT_EQ(Json::parse(readFile(timesFolder() + "/office.json"))["megapixels"], 0.01064);
}

TEST_F(TimingsOfABatch, StayThoseOfTheRunThatMadeTheResults) {
    image("maps/a.png", twoRooms());
    image("maps/b.png", twoRooms());
    std::filesystem::create_directories(out() + "/a");
    std::filesystem::create_directories(timesFolder());
    folder_.write("out/a/rooms.json", "former");
    folder_.write("times/a.json", "former");
    ASSERT_EQ(segment(maps(), {"--timings", timesFolder(), "--resume"}).status, 0);
    EXPECT_EQ(readFile(timesFolder() + "/a.json"), "former");
    EXPECT_EQ(Json::parse(readFile(timesFolder() + "/b.json"))["format"], 1);
}

TEST_F(TimingsOfABatch, LeaveNoFolderWhereAllMapsFail) {
    folder_.write("maps/broken.png", "no image\n");
    EXPECT_EQ(segment(maps(), {"--timings", timesFolder()}).status, 1);
    EXPECT_FALSE(exists(timesFolder()));
}

TEST_F(TimingsOfABatch, TellOfAPlaceThatIsNoFolder) {
    image("maps/lab.png", twoRooms());
    const std::string file = folder_.write("times", "");
    expectFailure(segment(maps(), {"--timings", file}), file, "Not a directory");
}

}  // namespace
}  // namespace vorund::test
