#include <gmock/gmock.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <cstdlib>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <set>
#include <string>
#include <vector>

#include "cli_fixture.h"

namespace vorund::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kTwoRoomsSummary[] = "2 rooms, 140 x 80 pixels \\(7.0 m x 4.0 m\\), [0-9.]+ s\n";

using CliUsage = CliTest;
using CliConfig = CliTest;
using CliSegment = CliTest;
using CliBadInput = CliTest;

TEST_F(CliUsage, PrintsTheVersion) {
    const Outcome outcome = runProgram({"--version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "vorund 1.0.0\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(CliUsage, PrintsHelpOfTheProgramAndOfItsCommands) {
    const Outcome program = runProgram({"--help"});
    EXPECT_EQ(program.status, 0);
    EXPECT_THAT(program.out, AllOf(HasSubstr("segment"), HasSubstr("score"), HasSubstr("config")));
    const Outcome command = runProgram({"segment", "--help"});
    EXPECT_EQ(command.status, 0);
    for (const char* option :
         {"MAP", "--out", "--config", "--set", "--free", "--values", "--save-images",
          "--show-images", "--straight-borders", "--jobs", "--resume", "--verbose", "--quiet"}) {
        EXPECT_THAT(command.out, HasSubstr(option));
    }
    EXPECT_EQ(program.err + command.err, "");
}

struct WrongUsage {
    std::vector<std::string> arguments;
    std::string cause;
};

TEST_F(CliUsage, TellsWhatIsWrongWithStatusTwo) {
    const std::string map = image("map.png", twoRooms());
    const std::vector<WrongUsage> cases{
        {{}, "a command is needed"},
        {{"paint"}, "paint"},
        {{"segment"}, "MAP"},
        {{"segment", map}, "--out"},
        {{"segment", map, "--out", ""}, "--out"},
        {{"segment", "", "--out", out()}, "MAP"},
        {{"segment", map, map, "--out", out()}, map},
        {{"segment", map, "--out", out(), "--unknown"}, "--unknown"},
        {{"segment", map, "--out", out(), "--config"}, "--config"},
        {{"segment", map, "--out", out(), "--free", "red"}, "--free"},
        {{"segment", map, "--out", out(), "--values", "grey"}, "--values"},
        {{"segment", map, "--out", out(), "--values", "raw", "--free", "black"}, "--free"},
        {{"segment", map, "--out", out(), "--verbose", "--quiet"}, "excludes"},
        {{"segment", map, "--out", out(), "--set", "dilate_binary/iterations"}, "KEY=VALUE"},
        {{"segment", map, "--out", out(), "--set", "unknown=1"}, "unknown: no such setting"},
        {{"segment", map, "--out", out(), "--set", "dilate_binary/iterations=-1"},
         "dilate_binary/iterations: is -1 (permitted: a whole number from 0 to 100)"},
        {{"config", "--set", "unknown=1"}, "unknown: no such setting"},
        {{"config", map}, map},
    };
    for (const WrongUsage& wrong : cases) {
        const Outcome outcome = runProgram(wrong.arguments);
        EXPECT_EQ(outcome.status, 2) << wrong.cause;
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(splitLines(outcome.err),
                    ElementsAre(AllOf(StartsWith("vorund: "), HasSubstr(wrong.cause))));
    }
    EXPECT_THAT(folder_.names(), ElementsAre("map.png"));
}

TEST_F(CliConfig, PrintsTheDefaults) {
    const Outcome outcome = runProgram({"config"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(YAML::Load(outcome.out)["dilate_binary"]["kernel_size"].as<int>(), 3);
    EXPECT_FALSE(YAML::Load(outcome.out)["rooms"]["straight_borders"].as<bool>());
    const Outcome again = runProgram({"config", "--config", VORUND_DEFAULT_YAML});
    EXPECT_EQ(again.out, outcome.out);
    EXPECT_EQ(again.err, "");
}

TEST_F(CliConfig, PutsSingleSettingsOverTheFile) {
    const std::string file =
        folder_.write("settings.yaml", "dilate_binary: {kernel_size: 5, iterations: 2}");
    const Outcome outcome =
        runProgram({"config", "--config", file, "--set", "dilate_binary/iterations=4", "--set",
                    "generate_ridge_map_meijering/sigmas=[1.5, 3]"});
    ASSERT_EQ(outcome.status, 0);
    const YAML::Node settings = YAML::Load(outcome.out);
    EXPECT_EQ(settings["dilate_binary"]["kernel_size"].as<int>(), 5);
    EXPECT_EQ(settings["dilate_binary"]["iterations"].as<int>(), 4);
    EXPECT_THAT(settings["generate_ridge_map_meijering"]["sigmas"].as<std::vector<double>>(),
                ElementsAre(1.5, 3.0));
}

TEST_F(CliConfig, WarnsOnStandardErrorOfKeysThatNobodyReads) {
    const std::string file = folder_.write("settings.yaml", "sigma_strt: 2");
    const Outcome outcome = runProgram({"config", "--config", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "vorund: warning: " + file +
                               ": sigma_strt: no such setting, not read; did you mean "
                               "\"sigma_start\"?\n");
}

TEST_F(CliConfig, FailsWhereStandardOutputIsFull) {
    const std::string redirected = std::string(VORUND_PROGRAM) + " config > /dev/full 2> ";
    const int status = std::system((redirected + folder_.file("err")).c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(readFile(folder_.file("err")), "vorund: standard output: cannot be written to\n");
}

TEST_F(CliSegment, WritesLabelsAndAPictureAndOneLine) {
    const Outcome outcome = segment(image("map.png", twoRooms()));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, MatchesRegex(kTwoRoomsSummary));
    EXPECT_EQ(outcome.err, "");

    const cv::Mat labels = result("segments.png");
    ASSERT_EQ(labels.type(), CV_8UC1);
    ASSERT_EQ(labels.size(), cv::Size(140, 80));
    const int left = labels.at<std::uint8_t>(40, 38);
    const int right = labels.at<std::uint8_t>(40, 102);
    EXPECT_NE(left, right);
    EXPECT_THAT((std::set<int>{left, right}), Not(Contains(::testing::AnyOf(0, 255))));
    EXPECT_EQ(labels.at<std::uint8_t>(2, 2), 0);

    const cv::Mat picture = result("segments_color.png");
    EXPECT_EQ(picture.type(), CV_8UC3);
    EXPECT_EQ(picture.size(), cv::Size(140, 80));
}

TEST_F(CliSegment, GivesTheSameBytesOnEveryRun) {
    const std::string map = image("map.png", twoRooms());
    ASSERT_EQ(segment(map).status, 0);
    const std::string labels = readFile(out() + "/segments.png");
    const std::string picture = readFile(out() + "/segments_color.png");
    ASSERT_EQ(segment(map).status, 0);
    EXPECT_EQ(readFile(out() + "/segments.png"), labels);
    EXPECT_EQ(readFile(out() + "/segments_color.png"), picture);
}

TEST_F(CliSegment, TakesOtherKindsOfImages) {
    cv::Mat wide;
    twoRooms().convertTo(wide, CV_16U, 257.0);
    cv::Mat four_channels;
    cv::cvtColor(twoRooms(), four_channels, cv::COLOR_GRAY2BGRA);
    const cv::Mat two_levels = twoRooms() > 0;
    for (const cv::Mat& map : {wide, four_channels, two_levels}) {
        const Outcome outcome = segment(image("map.png", map));
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.out, MatchesRegex(kTwoRoomsSummary));
    }
}

TEST_F(CliSegment, TakesAMapThatIsAllFree) {
    const Outcome outcome = segment(image("map.png", cv::Mat(20, 20, CV_8UC1, cv::Scalar(255))));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out,
                MatchesRegex("1 room, 20 x 20 pixels \\(1.0 m x 1.0 m\\), [0-9.]+ s\n"));
}

TEST_F(CliSegment, ReadsTheResolutionOfAMapFile) {
    cv::Mat finer;
    cv::resize(twoRooms(), finer, {}, 2.0, 2.0, cv::INTER_NEAREST);
    image("map.png", finer);
    const Outcome outcome = segment(mapYaml("map.png", "resolution: 0.025\n"));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out,
                MatchesRegex("2 rooms, 280 x 160 pixels \\(7.0 m x 4.0 m\\), [0-9.]+ s\n"));
}

TEST_F(CliSegment, TakesDarkFloorAndRawValuesWhenTold) {
    const cv::Mat inverted = 255 - twoRooms();
    const std::string map = image("map.png", inverted);
    EXPECT_THAT(segment(map, {"--free", "black"}).out, MatchesRegex(kTwoRoomsSummary));
    // 1 / 255, as the floor is in the inverted image, is below the threshold of 0.1.
    EXPECT_THAT(segment(map, {"--values", "raw"}).out, MatchesRegex(kTwoRoomsSummary));
}

TEST_F(CliSegment, TakesTheMapAfterTheOptions) {
    const std::string map = image("map.png", twoRooms());
    const Outcome outcome =
        runProgram({"segment", "--out", out(), "--set", "dilate_binary/iterations=2", map});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST_F(CliSegment, UsesTheSettings) {
    const std::string map = image("map.png", twoRooms());
    // Walls that grow by 40 pixels leave nothing of rooms that are 60 wide.
    const std::vector<std::string> thick{"--set", "dilate_binary/kernel_size=81"};
    expectFailure(segment(map, thick), map, "no room found");
    const std::string file = folder_.write("settings.yaml", "dilate_binary: {kernel_size: 81}");
    expectFailure(segment(map, {"--config", file}), map, "no room found");
}

TEST_F(CliSegment, SaysNothingButErrorsWhenQuiet) {
    const std::string map = image("map.png", twoRooms());
    const Outcome normal = segment(map, {"--set", "alignment=true"});
    EXPECT_THAT(splitLines(normal.err), ::testing::Each(StartsWith("vorund: warning: ")));
    EXPECT_THAT(normal.err, HasSubstr("alignment: changes no result"));
    const Outcome quiet = segment(map, {"--set", "alignment=true", "--quiet"});
    EXPECT_EQ(quiet.status, 0);
    EXPECT_EQ(quiet.err, "");
    EXPECT_THAT(quiet.out, MatchesRegex(kTwoRoomsSummary));
}

TEST_F(CliSegment, TellsWhatTheLibrarySaysWhenVerbose) {
    const Outcome outcome = segment(image("map.png", twoRooms()), {"--verbose"});
    EXPECT_EQ(outcome.status, 0);
    // A line of the robot's console and a plain one.
    EXPECT_THAT(outcome.err, HasSubstr("[INFO] Starting floor plan segmentation\n"));
    EXPECT_THAT(outcome.err, HasSubstr("removeSmallConnectedComponents: threshold_area: 100\n"));
    EXPECT_THAT(outcome.out, MatchesRegex(kTwoRoomsSummary));
}

TEST_F(CliSegment, IsNotDisturbedByTheSetUpOfTheRobotsConsole) {
    const std::string map = image("map.png", twoRooms());
    const std::string console = folder_.write(
        "console.config",
        "log4j.rootLogger=DEBUG, screen\nlog4j.logger.ros=DEBUG\nlog4j.logger.ros.vorund=DEBUG\n"
        "log4j.appender.screen=org.apache.log4j.ConsoleAppender\n"
        "log4j.appender.screen.layout=org.apache.log4j.SimpleLayout\n");
    for (const std::string& file : {console, folder_.file("missing.config")}) {
        const Outcome outcome =
            runProgram({"segment", map, "--out", out()}, {{"ROSCONSOLE_CONFIG_FILE", file}});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, MatchesRegex(kTwoRoomsSummary));
        // log4cxx tells of a missing file by itself, before the program starts.
        EXPECT_THAT(outcome.err, Not(HasSubstr("vorund: ")));
        EXPECT_THAT(outcome.err, Not(HasSubstr("segmentation")));
    }
}

TEST_F(CliSegment, KeepsTheImagesOfTheStagesAndALog) {
    const std::string map = image("map.png", twoRooms());
    ASSERT_EQ(segment(map, {"--save-images"}).status, 0);
    EXPECT_TRUE(exists(out() + "/debug/90cpp_final_segmented_map.png"));
    EXPECT_THAT(readFile(out() + "/debug/vorund.log"),
                AllOf(HasSubstr("Session Started"), HasSubstr("Segment finish with 2 regions"),
                      HasSubstr("Session Ended")));
    EXPECT_THAT(names(out()), AllOf(Contains("debug"), Contains("rooms.json")));
}

TEST_F(CliSegment, KeepsTheImagesWhenTheFileOfSettingsSaysSo) {
    const std::string file = folder_.write("settings.yaml", "debug: {save_images: true}");
    ASSERT_EQ(segment(image("map.png", twoRooms()), {"--config", file}).status, 0);
    EXPECT_TRUE(exists(out() + "/debug/90cpp_final_segmented_map.png"));
}

TEST_F(CliSegment, GoesOnWithoutWindowsWhereThereIsNoDisplay) {
    const Outcome outcome =
        runProgram({"segment", image("map.png", twoRooms()), "--out", out(), "--show-images"},
                   {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", ""}});
    EXPECT_EQ(outcome.status, 0);
    const std::string cause =
        VORUND_WITH_WINDOWS ? "no display can be had" : "this program is built without windows";
    EXPECT_EQ(outcome.err, "vorund: warning: " + cause + ": no images are shown\n");
    EXPECT_THAT(outcome.out, MatchesRegex(kTwoRoomsSummary));
}

TEST_F(CliSegment, ShowsProgressOnATerminalAndTakesItBack) {
    Program program({"segment", image("map.png", twoRooms()), "--out", out()}, {}, true);
    const Outcome outcome = program.wait();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, HasSubstr("scales 1 ..."));
    // Every text is followed by as many blanks over it.
    const std::string& err = outcome.err;
    ASSERT_THAT(err, EndsWith("\r"));
    const std::size_t before = err.rfind('\r', err.size() - 2);
    EXPECT_THAT(err.substr(before + 1, err.size() - before - 2), MatchesRegex(" +"));
    EXPECT_THAT(outcome.out, MatchesRegex(kTwoRoomsSummary));
}

TEST_F(CliSegment, WorksWithItsStandardStreamsClosed) {
    const std::string map = image("map.png", twoRooms());
    const std::string command =
        std::string(VORUND_PROGRAM) + " segment " + map + " --out " + out() + " <&- >&- 2>&-";
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(result("segments.png").size(), cv::Size(140, 80));
}

TEST_F(CliSegment, LeavesNothingWhenInterrupted) {
    const std::string map = image("map.png", manyRooms());
    for (const int signal : {SIGINT, SIGTERM}) {
        Program program({"segment", map, "--out", out(), "--save-images", "--set",
                         "compute_labels_list/sigma_step=0.1"});
        // The directory is made once the map is read.
        while (!exists(out()) && !program.hasEnded()) ::usleep(1000);
        program.send(signal);
        const Outcome outcome = program.wait();
        EXPECT_EQ(outcome.status, 128 + signal);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "vorund: " + map + ": interrupted, nothing is written\n");
        EXPECT_FALSE(exists(out()));
    }
}

TEST_F(CliBadInput, AFileThatIsMissing) {
    const std::string map = folder_.file("missing.png");
    expectFailure(segment(map), map, "No such file or directory");
}

TEST_F(CliBadInput, ADirectoryWithoutMaps) {
    expectFailure(segment(folder_.path()), folder_.path(), "it holds no map");
}

TEST_F(CliBadInput, AnEmptyFile) {
    const std::string map = folder_.write("map.png", "");
    expectFailure(segment(map), map, "empty");
}

TEST_F(CliBadInput, APngThatIsCutOff) {
    const std::string whole = readFile(image("map.png", twoRooms()));
    // Within the signature, the header and the pixels.
    for (const std::size_t size : {std::size_t{5}, std::size_t{20}, whole.size() / 2}) {
        const std::string map = folder_.write("map.png", whole.substr(0, size));
        const Outcome outcome = segment(map);
        expectFailure(outcome, map, "");
        EXPECT_THAT(outcome.err, ::testing::AnyOf(HasSubstr("cut off"), HasSubstr("decoded")));
    }
}

TEST_F(CliBadInput, APngWithAWrongByteInItsPixels) {
    std::string bytes = readFile(image("map.png", twoRooms()));
    const std::size_t pixels = bytes.find("IDAT") + 10;
    bytes[pixels] = static_cast<char>(bytes[pixels] ^ 0x55);
    const std::string map = folder_.write("map.png", bytes);
    expectFailure(segment(map), map, "decoded");
}

TEST_F(CliBadInput, ATextThatIsCalledPng) {
    const std::string map = folder_.write("map.png", "no image\n");
    expectFailure(segment(map), map, "cannot be decoded as an image");
}

TEST_F(CliBadInput, AFileNameWithALineBreak) {
    const Outcome outcome = segment(folder_.file("two\nlines.png"));
    expectFailure(outcome, folder_.file("two lines.png"), "No such file or directory");
}

TEST_F(CliBadInput, AMapOfOnePixel) {
    const std::string map = image("map.png", cv::Mat(1, 1, CV_8UC1, cv::Scalar(255)));
    expectFailure(segment(map), map, "smaller than 1 m^2");
}

TEST_F(CliBadInput, AMapThatIsAllWall) {
    const std::string map = image("map.png", cv::Mat(80, 80, CV_8UC1, cv::Scalar(0)));
    expectFailure(segment(map), map, "no free floor found");
}

TEST_F(CliBadInput, AMapFileWhoseImageIsMissing) {
    const std::string map = mapYaml("gone.png", "resolution: 0.05\n");
    const Outcome outcome = segment(map);
    expectFailure(outcome, map, "No such file or directory");
    EXPECT_THAT(outcome.err, HasSubstr("gone.png"));
}

TEST_F(CliBadInput, AMapFileThatIsNoYaml) {
    const std::string map = folder_.write("map.yaml", "image: [map.png\n");
    expectFailure(segment(map), map, "YAML");
}

TEST_F(CliBadInput, AMapFileWithoutResolution) {
    image("map.png", twoRooms());
    const std::string map = mapYaml("map.png", "");
    expectFailure(segment(map), map, "'resolution' is missing");
}

TEST_F(CliBadInput, AMapFileWithAResolutionThatIsNone) {
    image("map.png", twoRooms());
    for (const char* value : {".nan", ".inf", "-.inf", "0", "-0.05", "coarse", "[0.05]", ""}) {
        const std::string map = mapYaml("map.png", std::string("resolution: ") + value + "\n");
        expectFailure(segment(map), map, "resolution");
    }
}

TEST_F(CliBadInput, AMapFileWithAResolutionFarFromAnyMap) {
    image("map.png", twoRooms());
    const std::string fine = mapYaml("map.png", "resolution: 1e-9\n");
    expectFailure(segment(fine), fine, "smaller than 1 m^2");
    const std::string coarse = mapYaml("map.png", "resolution: 1e6\n");
    expectFailure(segment(coarse), coarse, "too large");
}

TEST_F(CliBadInput, SettingsThatDoNotLoad) {
    const std::string map = image("map.png", twoRooms());
    expectFailure(segment(map, {"--config", folder_.path()}), folder_.path(), "Is a directory");
    const std::string missing = folder_.file("missing.yaml");
    expectFailure(segment(map, {"--config", missing}), missing, "No such file or directory");
    const std::string broken = folder_.write("broken.yaml", "dilate_binary: [1");
    expectFailure(segment(map, {"--config", broken}), broken, "is no YAML");
    const std::string wrong = folder_.write("wrong.yaml", "dilate_binary: {kernel_size: 0}");
    expectFailure(segment(map, {"--config", wrong}), wrong,
                  "dilate_binary/kernel_size: is 0 (permitted: a whole number from 1 to 101)");
}

TEST_F(CliBadInput, ADirectoryThatCannotBeMade) {
    const std::string map = image("map.png", twoRooms());
    const std::string file = folder_.write("file", "content");
    const Outcome outcome = runProgram({"segment", map, "--out", file + "/out"});
    expectFailure(outcome, file, "Not a directory");
    EXPECT_EQ(readFile(file), "content");
}

TEST_F(CliBadInput, LeavesFormerResultsAsTheyWere) {
    const std::string map = image("map.png", twoRooms());
    ASSERT_EQ(segment(map).status, 0);
    const std::string former = readFile(out() + "/segments.png");
    const std::string wall = image("wall.png", cv::Mat(80, 80, CV_8UC1, cv::Scalar(0)));
    EXPECT_EQ(segment(wall, {"--save-images"}).status, 1);
    EXPECT_EQ(readFile(out() + "/segments.png"), former);
    EXPECT_FALSE(exists(out() + "/debug"));
}

/// A file system of a single page, for as long as it lives: a second file finds no place.
class SmallDisk {
 public:
    explicit SmallDisk(const std::string& path) : path_(path) {
        ::mkdir(path.c_str(), 0755);
        mounted_ = ::mount("none", path.c_str(), "tmpfs", 0, "size=4k") == 0;
    }
    ~SmallDisk() {
        if (mounted_) ::umount(path_.c_str());
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return mounted_; }

 private:
    std::string path_;
    bool mounted_;
};

TEST_F(CliBadInput, AFullDisk) {
    const std::string map = image("map.png", twoRooms());
    const SmallDisk disk(folder_.file("disk"));
    if (!disk.isMounted()) GTEST_SKIP() << "mounting a small disk is not allowed here";
    const std::string directory = folder_.file("disk") + "/out";
    for (const std::vector<std::string>& option :
         {std::vector<std::string>{}, std::vector<std::string>{"--save-images"}}) {
        std::vector<std::string> arguments{"segment", map, "--out", directory};
        arguments.insert(arguments.end(), option.begin(), option.end());
        const Outcome outcome = runProgram(arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(splitLines(outcome.err), ElementsAre(StartsWith("vorund: " + directory)));
        EXPECT_FALSE(exists(directory));
    }
}

}  // namespace
}  // namespace vorund::test
