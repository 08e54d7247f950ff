#include <signal.h>
#include <unistd.h>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

constexpr char kTitles[] = "map +rooms +seconds";

class Batch : public CliTest {
 protected:
    Batch() { std::filesystem::create_directories(maps()); }

    std::string maps() const { return folder_.file("maps"); }

    std::string map(const std::string& name, const cv::Mat& pixels = twoRooms()) const {
        return image("maps/" + name, pixels);
    }

    std::string resultOf(const std::string& name, const std::string& file) const {
        return readFile(out() + "/" + name + "/" + file);
    }
};

TEST_F(Batch, WritesTheResultsOfAFolderByTheNamesOfItsMaps) {
    map("lab.png");
    map("office.PNG");
    const Outcome outcome = segment(maps());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(splitLines(outcome.out),
                ElementsAre(MatchesRegex(kTitles), MatchesRegex("lab +2 +[0-9.]+"),
                            MatchesRegex("office +2 +[0-9.]+")));
    EXPECT_THAT(names(out()), ElementsAre("lab", "office"));
    EXPECT_TRUE(exists(out() + "/lab/rooms.json"));
    EXPECT_TRUE(exists(out() + "/office/segments.png"));
}

TEST_F(Batch, HasTheResultsOfASingleRun) {
    const std::string lab = map("lab.png");
    ASSERT_EQ(segment(maps()).status, 0);
    const std::string single = folder_.file("single");
    ASSERT_EQ(runProgram({"segment", lab, "--out", single}).status, 0);
    ASSERT_EQ(names(out() + "/lab"), names(single));
    for (const std::string& name : names(single)) {
        EXPECT_TRUE(resultOf("lab", name) == readFile(single + "/" + name)) << name;
    }
}

TEST_F(Batch, TakesAMapFileAndItsImageForOneMap) {
    map("scan.png");
    folder_.write("maps/flat.yaml",
                  "image: scan.png\nresolution: 0.05\norigin: [0, 0, 0]\nnegate: 0\n"
                  "occupied_thresh: 0.65\nfree_thresh: 0.196\n");
    ASSERT_EQ(segment(maps()).status, 0);
    EXPECT_THAT(names(out()), ElementsAre("flat"));
    const std::string other = folder_.file("other");
    ASSERT_EQ(
        runProgram({"segment", maps() + "/scan.png", maps() + "/flat.yaml", "--out", other}).status,
        0);
    EXPECT_THAT(names(other), ElementsAre("flat"));
}

TEST_F(Batch, LeavesOutWhatIsNoMap) {
    map("lab.png");
    map("lab_gt_segmentation.png");
    map(".hidden.png");
    folder_.write("maps/notes.txt", "no map\n");
    folder_.write("maps/settings.yaml", "dilate_binary: {iterations: 1}\n");
    std::filesystem::create_directories(maps() + "/folder.png");
    EXPECT_EQ(segment(maps()).status, 0);
    EXPECT_THAT(names(out()), ElementsAre("lab"));
}

TEST_F(Batch, TakesFilesAndFoldersTogether) {
    map("lab.png");
    const Outcome outcome =
        runProgram({"segment", maps(), image("attic.png", twoRooms()), "--out", out()});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(names(out()), ElementsAre("attic", "lab"));
}

TEST_F(Batch, GivesTheSameBytesWhateverTheNumberOfJobs) {
    for (const char* name : {"a.png", "b.png", "c.png"}) map(name);
    ASSERT_EQ(segment(maps(), {"--jobs", "1"}).status, 0);
    const std::string two_jobs = folder_.file("two_jobs");
    ASSERT_EQ(runProgram({"segment", maps(), "--out", two_jobs, "--jobs", "2"}).status, 0);
    ASSERT_EQ(names(two_jobs), names(out()));
    for (const std::string& name : names(two_jobs)) {
        ASSERT_EQ(names(two_jobs + "/" + name), names(out() + "/" + name));
        for (const std::string& file : names(two_jobs + "/" + name)) {
            EXPECT_TRUE(resultOf(name, file) == readFile(two_jobs + "/" + name + "/" + file))
                << name << "/" << file;
        }
    }
}

TEST_F(Batch, GoesOnAfterAMapThatFails) {
    const std::string broken = folder_.write("maps/a.png", "no image\n");
    map("b.png");
    const std::string missing = folder_.file("gone.png");
    for (const char* jobs : {"1", "2"}) {
        const Outcome outcome =
            runProgram({"segment", maps(), missing, "--out", out(), "--jobs", jobs});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "vorund: " + out() + ": 2 of 3 maps failed\n");
        const std::vector<std::string> lines = splitLines(outcome.out);
        ASSERT_EQ(lines.size(), 4U);
        EXPECT_THAT(lines[1],
                    AllOf(MatchesRegex("a +- +-  .*"),
                          EndsWith("  " + broken + ": it cannot be decoded as an image")));
        EXPECT_THAT(lines[2], MatchesRegex("b +2 +[0-9.]+"));
        EXPECT_THAT(lines[3], AllOf(MatchesRegex("gone +- +-  .*"),
                                    EndsWith("  " + missing + ": No such file or directory")));
        EXPECT_THAT(names(out()), ElementsAre("b"));
    }
}

TEST_F(Batch, LeavesNoDirectoryWhereAllMapsFail) {
    folder_.write("maps/a.png", "no image\n");
    EXPECT_EQ(segment(maps()).status, 1);
    EXPECT_FALSE(exists(out()));
}

TEST_F(Batch, RefusesEqualNamesBeforeItStarts) {
    map("lab.png");
    map("office.png");
    const Outcome outcome =
        runProgram({"segment", maps(), image("lab.pgm", twoRooms()), "--out", out()});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(
        splitLines(outcome.err),
        ElementsAre(AllOf(StartsWith("vorund: two maps are called lab: "),
                          HasSubstr(maps() + "/lab.png"), HasSubstr(folder_.file("lab.pgm")))));
    EXPECT_FALSE(exists(out()));
}

TEST_F(Batch, LeavesOutMapsWithResultsWhenItResumes) {
    map("a.png");
    map("b.png");
    std::filesystem::create_directories(out() + "/a");
    folder_.write("out/a/rooms.json", "former");
    const Outcome resumed = segment(maps(), {"--resume"});
    EXPECT_EQ(resumed.status, 0);
    EXPECT_THAT(
        splitLines(resumed.out),
        ElementsAre(MatchesRegex(kTitles), MatchesRegex("a +- +-  left out, its results are there"),
                    MatchesRegex("b +2 +[0-9.]+")));
    EXPECT_EQ(resultOf("a", "rooms.json"), "former");
    EXPECT_TRUE(exists(out() + "/b/rooms.json"));

    ASSERT_EQ(segment(maps()).status, 0);
    EXPECT_EQ(resultOf("a", "rooms.json"), resultOf("b", "rooms.json"));
}

TEST_F(Batch, PassesTheOptionsOn) {
    map("a.png", 255 - twoRooms());
    const std::string file = folder_.write("settings.yaml", "rooms: {simplify: 0.1}");
    const Outcome outcome =
        segment(maps(), {"--free", "black", "--config", file, "--set", "dilate_binary/iterations=2",
                         "--straight-borders", "--save-images"});
    EXPECT_EQ(outcome.status, 0) << outcome.out;
    EXPECT_THAT(resultOf("a", "rooms.json"),
                AllOf(HasSubstr("\"simplify\": 0.1"), HasSubstr("\"iterations\": 2"),
                      HasSubstr("\"straight_borders\": true")));
    EXPECT_TRUE(exists(out() + "/a/debug/vorund.log"));
}

TEST_F(Batch, TellsWarningsOfTheSettingsOnceAndThoseOfMapsWithTheirName) {
    map("a.png");
    map("b.png");
    const std::vector<std::string> options{"--set", "sigma_start=2", "--set", "alignment=true"};
    EXPECT_THAT(
        splitLines(segment(maps(), options).err),
        ElementsAre("vorund: warning: --set: sigma_start: changes no result: set "
                    "compute_labels_list/sigma_start instead",
                    "vorund: warning: --set: alignment: changes no result: maps are not aligned",
                    "vorund: warning: a: Map alignment is configured but not implemented.",
                    "vorund: warning: b: Map alignment is configured but not implemented."));
    EXPECT_THAT(segment(maps(), {"--set", "alignment=true", "--quiet"}).err, IsEmpty());
}

TEST_F(Batch, TellsWhatTheLibrarySaysOfWhichMapWhenVerbose) {
    map("a.png");
    EXPECT_THAT(segment(maps(), {"--verbose"}).err,
                HasSubstr("a: [INFO] Starting floor plan segmentation\n"));
}

TEST_F(Batch, ShowsProgressOnATerminalAndTakesItBack) {
    map("a.png");
    map("b.png");
    Program program({"segment", maps(), "--out", out()}, {}, true);
    const Outcome outcome = program.wait();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, AllOf(StartsWith("0 of 2 maps done ..."),
                                   HasSubstr("1 of 2 maps done ..."), EndsWith("\r")));
}

TEST_F(Batch, KeepsFinishedMapsWhenInterrupted) {
    map("a.png");
    map("b.png", manyRooms());
    for (const int signal : {SIGINT, SIGTERM}) {
        Program program(
            {"segment", maps(), "--out", out(), "--set", "compute_labels_list/sigma_step=0.1"});
        // The second map is begun when the first one is done.
        while (!exists(out() + "/b") && !program.hasEnded()) ::usleep(1000);
        program.send(signal);
        const Outcome outcome = program.wait();
        EXPECT_EQ(outcome.status, 128 + signal);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "vorund: " + out() + ": interrupted, 1 of 2 maps are done\n");
        EXPECT_THAT(names(out()), ElementsAre("a"));
    }
}

TEST_F(Batch, TellsWhatIsWrongWithStatusTwo) {
    const std::string lab = map("lab.png");
    struct Wrong {
        std::vector<std::string> options;
        std::string cause;
    };
    const std::vector<Wrong> cases{
        {{maps(), "--jobs", "0"}, "--jobs"},
        {{maps(), "--jobs", "-1"}, "--jobs"},
        {{maps(), "--jobs", "many"}, "--jobs"},
        {{maps(), "--jobs"}, "--jobs"},
        {{maps(), "--show-images"}, "--show-images"},
        {{maps(), "--set", "unknown=1"}, "unknown: no such setting"},
        {{lab, "--resume"}, "--resume"},
        {{lab, ""}, "MAP"},
    };
    for (const Wrong& wrong : cases) {
        std::vector<std::string> arguments{"segment", "--out", out()};
        arguments.insert(arguments.end(), wrong.options.begin(), wrong.options.end());
        const Outcome outcome = runProgram(arguments);
        EXPECT_EQ(outcome.status, 2) << wrong.cause;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(splitLines(outcome.err),
                    ElementsAre(AllOf(StartsWith("vorund: "), HasSubstr(wrong.cause))));
        EXPECT_FALSE(exists(out()));
    }
}

TEST_F(Batch, FailsAtOnceWhereNoMapIsOrNoResultCanBe) {
    expectFailure(segment(maps()), maps(), "it holds no map");
    map("a.png");
    const std::string file = folder_.write("file", "content");
    const Outcome outcome = runProgram({"segment", maps(), "--out", file + "/out"});
    expectFailure(outcome, file, "Not a directory");
}

}  // namespace
}  // namespace vorund::test
