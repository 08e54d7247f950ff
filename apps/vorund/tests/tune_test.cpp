#include <signal.h>
#include <unistd.h>

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

constexpr char kState[] = "tuned.yaml.state.json";

/// Two rooms of 3 m x 3.2 m with a door of that height. [pixels]
cv::Mat roomsWithDoor(int height) {
    cv::Mat map(80, 140, CV_8UC1, cv::Scalar(0));
    map(cv::Rect(8, 8, 60, 64)) = 254;
    map(cv::Rect(72, 8, 60, 64)) = 254;
    map(cv::Rect(68, 40 - height / 2, 4, height)) = 254;
    return map;
}

/// At these every door counts as open, and both rooms are one: nothing agrees.
const std::vector<std::string> kTooCoarse{"--set", "rooms/narrow_ratio=0.15",
                                          "--set", "rooms/open_ratio=0.15",
                                          "--set", "rooms/doorways=false"};

class Tune : public CliTest {
 protected:
    void SetUp() override {
        std::filesystem::create_directories(maps());
        for (const int height : {14, 16, 18}) {
            const std::string name = "maps/door" + std::to_string(height);
            const cv::Mat map = roomsWithDoor(height);
            cv::Mat truth = map.clone();
            truth.colRange(69, 71) = 0;
            truth.setTo(255, truth == 254);
            image(name + ".png", map);
            image(name + "_gt_segmentation.png", truth);
        }
    }

    std::string maps() const { return folder_.file("maps"); }
    std::string tuned(const std::string& folder) const {
        return folder_.file(folder) + "/tuned.yaml";
    }

    std::vector<std::string> command(const std::string& folder, int evaluations,
                                     const std::vector<std::string>& options = {}) const {
        std::vector<std::string> words{"tune",        maps(),          "--out",
                                       tuned(folder), "--evaluations", std::to_string(evaluations)};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    Outcome tune(const std::string& folder, int evaluations,
                 const std::vector<std::string>& options = {}) const {
        return runProgram(command(folder, evaluations, options));
    }

    /// The number of a line NAME: VALUE.
    double figure(const Outcome& outcome, const std::string& name) const {
        for (const std::string& line : splitLines(outcome.out)) {
            if (line.rfind(name + ": ", 0) == 0) return std::stod(line.substr(name.size() + 2));
        }
        ADD_FAILURE() << name << " is not in " << outcome.out << outcome.err;
        return -1.0;
    }

    std::string state(const std::string& folder) const {
        return readFile(folder_.file(folder) + "/" + kState);
    }
};

TEST_F(Tune, FindsBetterSettingsAndWritesThem) {
    const Outcome outcome = tune("a", 12, kTooCoarse);
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(figure(outcome, "maps"), 3.0);
    EXPECT_EQ(figure(outcome, "before"), 0.0);
    EXPECT_GT(figure(outcome, "after"), 0.9);
    // What parts the rooms of a wider door does so with a narrower one: of each part that was left
    // out but the one with the widest door, all.
    EXPECT_GT(figure(outcome, "unseen"), 0.6);
    EXPECT_THAT(splitLines(outcome.out),
                AllOf(Contains(StartsWith("search, 12 of 12: ")),
                      Contains(StartsWith("without part 2 of 2, 1 of 12: 0.000000")),
                      Contains(StartsWith("rooms/narrow_ratio="))));
    EXPECT_THAT(names(folder_.file("a")), ElementsAre("tuned.yaml", kState));

    // With the file every map has its two rooms.
    const std::string map = maps() + "/door16.png";
    ASSERT_EQ(segment(map, {"--config", tuned("a")}).status, 0);
    double most = 0.0;
    cv::minMaxLoc(result("rooms.png"), nullptr, &most);
    EXPECT_EQ(most, 2.0);
    EXPECT_EQ(runProgram({"config", "--config", tuned("a")}).err, "");
    EXPECT_THAT(readFile(tuned("a")), HasSubstr("\n# before: 0.000000\n"));
}

TEST_F(Tune, NeverGivesWorseSettingsThanItStartedWith) {
    const Outcome outcome = tune("a", 3);
    EXPECT_GT(figure(outcome, "before"), 0.9);
    EXPECT_GE(figure(outcome, "after"), figure(outcome, "before"));
}

TEST_F(Tune, GoesOnToTheSameEndAsWithoutABreak) {
    ASSERT_EQ(tune("a", 4, kTooCoarse).status, 0);
    const std::size_t done = Json::parse(state("a")).at("evaluations").size();
    EXPECT_GE(done, 4U);
    ASSERT_EQ(tune("a", 9, kTooCoarse).status, 0);
    ASSERT_EQ(tune("b", 9, kTooCoarse).status, 0);
    EXPECT_GT(Json::parse(state("a")).at("evaluations").size(), done);
    EXPECT_EQ(readFile(tuned("a")), readFile(tuned("b")));
}

TEST_F(Tune, KeepsWhatIsDoneWhenItIsInterrupted) {
    Program program(command("a", 100000, {"--folds", "0"}));
    // The first evaluations are short; the search itself is not over by then.
    const std::string path = folder_.file("a") + "/" + kState;
    for (int i = 0; i < 3000 && !program.hasEnded(); ++i) {
        if (exists(path) && Json::parse(readFile(path)).at("evaluations").size() > 2) break;
        ::usleep(10'000);
    }
    program.send(SIGINT);
    const Outcome outcome = program.wait();
    EXPECT_EQ(outcome.status, 130);
    EXPECT_THAT(splitLines(outcome.err),
                ElementsAre(AllOf(HasSubstr("interrupted"), HasSubstr(kState))));
    EXPECT_THAT(names(folder_.file("a")), ElementsAre(kState));

    ASSERT_EQ(tune("a", 6, {"--folds", "0"}).status, 0);
    ASSERT_EQ(tune("b", 6, {"--folds", "0"}).status, 0);
    EXPECT_EQ(readFile(tuned("a")), readFile(tuned("b")));
}

TEST_F(Tune, DoesNotRunAnythingTwice) {
    ASSERT_EQ(tune("a", 5).status, 0);
    const std::string before = state("a");
    // Scores that no run gives: what is taken from the file shows.
    Json json = Json::parse(before);
    for (auto& entry : json["evaluations"]) {
        for (auto& score : entry["scores"]) score = 0.25;
    }
    folder_.write("a/" + std::string(kState), json.dump());
    const Outcome outcome = tune("a", 1);
    EXPECT_EQ(figure(outcome, "before"), 0.25);
    EXPECT_EQ(figure(outcome, "after"), 0.25);
}

TEST_F(Tune, WarnsOfSettingsThatFitOnlyTheirMaps) {
    ASSERT_EQ(tune("a", 2).err, "");
    // As if the second values were better on both maps of one part, and useless on the third.
    Json json = Json::parse(state("a"));
    const std::string start = "rooms/open_ratio=0.5";
    for (auto& entry : json["evaluations"]) {
        const bool is_start = entry["values"][0] == start;
        entry["scores"] = {{"door14", is_start ? 0.9 : 1.0},
                           {"door16", is_start ? 0.9 : 0.0},
                           {"door18", is_start ? 0.9 : 1.0}};
    }
    folder_.write("a/" + std::string(kState), json.dump());
    const Outcome outcome = tune("a", 2);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(figure(outcome, "after"), 0.9);
    EXPECT_EQ(figure(outcome, "unseen"), 0.6);
    EXPECT_THAT(outcome.err, HasSubstr("warning: " + tuned("a") + ": on maps that a search"));
}

TEST_F(Tune, LeavesOneMapOutIfThereAreAsManyFolds) {
    const Outcome outcome = tune("a", 2, {"--folds", "50"});
    EXPECT_THAT(splitLines(outcome.out), Contains(StartsWith("without part 3 of 3, 2 of 2: ")));
    EXPECT_THAT(tune("b", 2, {"--folds", "0"}).out, ::testing::Not(HasSubstr("unseen")));
}

TEST_F(Tune, TellsOfAStateThatIsOfSomethingElse) {
    ASSERT_EQ(tune("a", 2).status, 0);
    const std::string before = state("a");
    const std::string path = folder_.file("a") + "/" + kState;
    const Outcome other = tune("a", 2, {"--set", "rooms/clear_clutter=false"});
    EXPECT_EQ(other.status, 1);
    EXPECT_THAT(other.err, HasSubstr(path + ": is of a search over other maps"));
    EXPECT_EQ(state("a"), before);
    // Where the search starts is free.
    EXPECT_EQ(tune("a", 2, {"--set", "rooms/open_ratio=0.4"}).status, 0);

    image("maps/door16.png", roomsWithDoor(20));
    EXPECT_THAT(tune("a", 2).err, HasSubstr("is of a search over other maps"));
    folder_.write("a/" + std::string(kState), "{");
    EXPECT_EQ(tune("a", 2).err, "vorund: " + path + ": is no state of a search\n");
}

TEST_F(Tune, TellsWhatIsWrongBeforeItSearches) {
    const std::string missing = folder_.file("missing");
    expectFailure(runProgram({"tune", missing, "--out", out() + "/a.yaml"}), missing,
                  "No such file or directory");
    const std::string empty = folder_.file("empty");
    std::filesystem::create_directory(empty);
    expectFailure(runProgram({"tune", empty, "--out", out() + "/a.yaml"}), empty, "no map");
    const std::string file = folder_.write("file", "");
    const Outcome outcome = tune("file", 2);
    EXPECT_EQ(outcome.err, "vorund: " + file + ": Not a directory\n");
    EXPECT_EQ(outcome.out, "");
    for (const std::vector<std::string>& wrong :
         {std::vector<std::string>{"--evaluations", "0"}, {"--folds", "-1"}, {"--set", "a=1"}}) {
        std::vector<std::string> words{"tune", maps()};
        words.insert(words.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(runProgram(words).status, 2) << wrong.front();
    }
}

}  // namespace
}  // namespace vorund::test
