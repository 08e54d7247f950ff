#include "vorund/rooms/map_reader.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"
#include "vorund/image_utils.h"

namespace vorund::rooms {
namespace {

using test::labels;
using test::MatEq;
using test::values;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::StartsWith;
using ::testing::Throws;
using ::testing::ThrowsMessage;

constexpr char kGreys[] = "0 100 128 204 205 206 254 255";

/// The text of a PGM file with a grid of decimal numbers.
std::string textPgm(int width, int height, const std::string& numbers, int most = 255) {
    return "P2\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
           std::to_string(most) + "\n" + numbers + "\n";
}

std::string encoded(const std::string& ending, const cv::Mat& image) {
    std::vector<std::uint8_t> bytes;
    cv::imencode(ending, image, bytes);
    return std::string(bytes.begin(), bytes.end());
}

class ReadMap : public ::testing::Test {
 protected:
    /// A map of the greys above, beside a YAML file with these lines.
    std::string yamlWith(const std::string& lines) const {
        dir_.write("map.pgm", textPgm(8, 1, kGreys));
        return dir_.write("map.yaml", "image: map.pgm\nresolution: 0.1\n" + lines);
    }

    /// Expects an error "PATH: cause".
    void expectError(const std::string& path, const std::string& cause) const {
        EXPECT_THAT([&] { readMap(path); }, ThrowsMessage<MapError>(path + ": " + cause));
    }

    void expectYamlError(const std::string& lines, const std::string& cause) const {
        SCOPED_TRACE(lines);
        dir_.write("map.pgm", textPgm(8, 1, kGreys));
        expectError(dir_.write("bad.yaml", lines), cause);
    }

    /// What is said in place of the values of a map that can be read.
    void expectYamlErrorWith(const std::string& line, const std::string& cause) const {
        expectYamlError("image: map.pgm\nresolution: 0.05\n" + line + "\n", cause);
    }

    test::TempDir dir_;
};

TEST_F(ReadMap, TakesABareImageWithTheDefaults) {
    const GridMap map = readMap(dir_.write("map.pgm", textPgm(8, 1, kGreys)));
    // 205 is unknown: 50 / 255 = 0.19608 lies above 0.196. 206 is free: 0.19216.
    EXPECT_THAT(map.values, MatEq(values("1 1 1 1 1 0 0 0")));
    EXPECT_THAT(map.picture, MatEq(labels(kGreys)));
    EXPECT_EQ(map.resolution, 0.05);
    EXPECT_EQ(map.origin.x, 0.0);
    EXPECT_EQ(map.origin.y, 0.0);
    EXPECT_EQ(map.origin.yaw, 0.0);
    EXPECT_FALSE(map.raw);
}

TEST_F(ReadMap, TakesDarkForFreeOnDemandAndPaintsItLight) {
    const std::string path = dir_.write("map.pgm", textPgm(6, 1, "0 1 49 50 51 255"));
    const GridMap map = readMap(path, {FreeColour::kBlack, PixelValues::kMap});
    EXPECT_THAT(map.values, MatEq(values("0 0 0 1 1 1")));
    EXPECT_THAT(map.picture, MatEq(labels("255 254 206 205 204 0")));
}

TEST_F(ReadMap, ReadsEveryFormatAlike) {
    const cv::Mat grey = labels(
        "0 205 254\n"
        "9 255 100");
    for (const char* ending : {".png", ".pgm", ".bmp", ".tiff"}) {
        const GridMap map = readMap(dir_.write(std::string("map") + ending, encoded(ending, grey)));
        EXPECT_THAT(map.values, MatEq(values("1 1 0\n"
                                             "1 0 1")))
            << ending;
        EXPECT_THAT(map.picture, MatEq(grey)) << ending;
    }
}

TEST_F(ReadMap, AveragesColours) {
    cv::Mat image(1, 4, CV_8UC3);
    image.at<cv::Vec3b>(0, 0) = {205, 205, 205};
    image.at<cv::Vec3b>(0, 1) = {205, 205, 206};  // 149 / 765 = 0.19477
    image.at<cv::Vec3b>(0, 2) = {255, 255, 0};
    image.at<cv::Vec3b>(0, 3) = {255, 255, 107};  // 148 / 765
    const GridMap map = readMap(dir_.write("map.png", encoded(".png", image)));
    EXPECT_THAT(map.values, MatEq(values("1 0 1 0")));
    // 205.33, 170, 205.67, each rounded.
    EXPECT_THAT(map.picture, MatEq(labels("205 205 170 206")));
}

TEST_F(ReadMap, IgnoresAlphaButInModeScale) {
    cv::Mat image(1, 3, CV_8UC4);
    image.at<cv::Vec4b>(0, 0) = {254, 254, 254, 0};
    image.at<cv::Vec4b>(0, 1) = {254, 254, 254, 255};
    image.at<cv::Vec4b>(0, 2) = {0, 0, 0, 128};
    dir_.write("alpha.png", encoded(".png", image));
    const std::string start = "image: alpha.png\nresolution: 0.05\nmode: ";

    const GridMap trinary = readMap(dir_.write("trinary.yaml", start + "trinary\n"));
    EXPECT_THAT(trinary.values, MatEq(values("0 0 1")));
    EXPECT_THAT(trinary.picture, MatEq(labels("254 254 0")));

    const GridMap scale = readMap(dir_.write("scale.yaml", start + "scale\n"));
    EXPECT_THAT(scale.values, MatEq(values("1 0 1")));
    EXPECT_THAT(scale.picture, MatEq(labels("205 254 205")));
}

TEST_F(ReadMap, ScalesSixteenBitsByTheirOwnRange) {
    cv::Mat image(1, 5, CV_16UC1);
    image.at<std::uint16_t>(0, 0) = 0;
    image.at<std::uint16_t>(0, 1) = 52690;  // 12845 / 65535 = 0.196002
    image.at<std::uint16_t>(0, 2) = 52691;  // 12844 / 65535 = 0.195987
    image.at<std::uint16_t>(0, 3) = 65535;
    image.at<std::uint16_t>(0, 4) = 205 * 257;
    const GridMap map = readMap(dir_.write("map.png", encoded(".png", image)));
    EXPECT_THAT(map.values, MatEq(values("1 1 0 0 1")));
    EXPECT_THAT(map.picture, MatEq(labels("0 205 205 255 205")));
}

TEST_F(ReadMap, ScalesAPgmByItsOwnMaximum) {
    const std::string grey("\x64\x51\x50\x00", 4);  // 100, 81, 80, 0 of 100
    const GridMap binary = readMap(dir_.write("map.pgm", "P5\n# a comment\n4 1\n100\n" + grey));
    EXPECT_THAT(binary.values, MatEq(values("0 0 1 1")));
    EXPECT_THAT(binary.picture, MatEq(labels("255 207 204 0")));
    // As text, and with the last number at the very end of the file.
    const GridMap text = readMap(dir_.write("text.pgm", "P2\n4 1\n4095\n4095 3300 3200 0"));
    EXPECT_THAT(text.values, MatEq(values("0 0 1 1")));  // 0.19414, 0.21856
}

TEST_F(ReadMap, ReadsTheKeysOfAYamlFile) {
    const GridMap map =
        readMap(yamlWith("origin: [-30.125, 4.5, 0.25]\nnegate: 0\noccupied_thresh: 0.9\n"
                         "free_thresh: 0.5\nunknown_key: [1, 2]\n"));
    EXPECT_EQ(map.resolution, 0.1);
    EXPECT_EQ(map.origin.x, -30.125);
    EXPECT_EQ(map.origin.y, 4.5);
    EXPECT_EQ(map.origin.yaw, 0.25);
    // 127 / 255 = 0.498
    EXPECT_THAT(map.values, MatEq(values("1 1 0 0 0 0 0 0")));
}

TEST_F(ReadMap, HasMapServersDefaultsForMissingKeys) {
    const GridMap map = readMap(yamlWith(""));
    EXPECT_THAT(map.values, MatEq(values("1 1 1 1 1 0 0 0")));
    EXPECT_EQ(map.origin.x, 0.0);
    EXPECT_EQ(map.origin.yaw, 0.0);
}

TEST_F(ReadMap, ComparesWithTheThresholdExactly) {
    // 51 / 255 is 0.2 and not below it.
    EXPECT_THAT(readMap(yamlWith("free_thresh: 0.2\n")).values, MatEq(values("1 1 1 1 0 0 0 0")));
    EXPECT_THAT(readMap(yamlWith("free_thresh: 0.200001\n")).values,
                MatEq(values("1 1 1 0 0 0 0 0")));
    EXPECT_THAT(readMap(yamlWith("free_thresh: 0\n")).values, MatEq(values("1 1 1 1 1 1 1 1")));
}

TEST_F(ReadMap, NegatesOnDemand) {
    for (const char* yes : {"1", "true", "True"}) {
        const GridMap map = readMap(yamlWith(std::string("negate: ") + yes + "\n"));
        EXPECT_THAT(map.values, MatEq(values("0 1 1 1 1 1 1 1"))) << yes;
        EXPECT_THAT(map.picture, MatEq(labels("255 155 127 51 50 49 1 0"))) << yes;
    }
    for (const char* no : {"0", "false"}) {
        EXPECT_THAT(readMap(yamlWith(std::string("negate: ") + no + "\n")).values,
                    MatEq(values("1 1 1 1 1 0 0 0")))
            << no;
    }
}

TEST_F(ReadMap, LetsTheOptionOverrideNegate) {
    const std::string path = yamlWith("negate: 1\n");
    EXPECT_THAT(readMap(path, {FreeColour::kWhite, PixelValues::kMap}).values,
                MatEq(values("1 1 1 1 1 0 0 0")));
}

TEST_F(ReadMap, TakesPixelsForPercentInModeRaw) {
    dir_.write("raw.pgm", textPgm(7, 1, "0 19 20 50 100 101 255"));
    const GridMap map =
        readMap(dir_.write("raw.yaml", "image: raw.pgm\nresolution: 0.05\nmode: raw\n"));
    EXPECT_THAT(map.values, MatEq(values("0 0 1 1 1 1 1")));
    // 255 less 255 * 19 / 100 = 48.45 and so on; the unknown as map_server paints it.
    EXPECT_THAT(map.picture, MatEq(labels("255 207 204 128 0 205 205")));
}

TEST_F(ReadMap, FindsTheImageFromTheYamlFilesFolderOrByItsWholePath) {
    std::filesystem::create_directory(dir_.file("images"));
    dir_.write("images/map.pgm", textPgm(8, 1, kGreys));
    const std::string near = dir_.write("near.YML", "image: images/map.pgm\nresolution: 0.05\n");
    EXPECT_EQ(readMap(near).values.cols, 8);
    const std::string absolute = dir_.write(
        "absolute.yaml", "image: " + dir_.file("images/map.pgm") + "\nresolution: 0.05\n");
    EXPECT_EQ(readMap(absolute).values.cols, 8);
}

TEST_F(ReadMap, GivesRawValuesAsTheCoreLoadsThem) {
    cv::Mat grey(16, 16, CV_8UC1);
    for (int i = 0; i < 256; ++i) grey.at<std::uint8_t>(i / 16, i % 16) = static_cast<uchar>(i);
    const std::string path = dir_.write("map.png", encoded(".png", grey));
    const GridMap map = readMap(path, {{}, PixelValues::kRaw});
    EXPECT_TRUE(map.raw);
    EXPECT_THAT(map.values, MatEq(ImageUtils::loadGrayMapFromFile(path)));
    EXPECT_THAT(map.picture, MatEq(255 - grey)) << "walls are high, and painted dark";
}

TEST_F(ReadMap, ScalesRawValuesOfSixteenBitsByTheirOwnRange) {
    cv::Mat image(1, 3, CV_16UC1);
    image.at<std::uint16_t>(0, 0) = 0;
    image.at<std::uint16_t>(0, 1) = 13107;  // a fifth
    image.at<std::uint16_t>(0, 2) = 65535;
    const GridMap map =
        readMap(dir_.write("map.png", encoded(".png", image)), {{}, PixelValues::kRaw});
    EXPECT_FLOAT_EQ(map.values.at<float>(0, 0), 0.0F);
    EXPECT_FLOAT_EQ(map.values.at<float>(0, 1), 0.2F);
    EXPECT_FLOAT_EQ(map.values.at<float>(0, 2), 1.0F);
    EXPECT_THAT(map.picture, MatEq(labels("255 204 0")));
}

TEST_F(ReadMap, KeepsResolutionAndOriginOfAYamlFileForRawValues) {
    const GridMap map =
        readMap(yamlWith("origin: [1, 2, 3]\nnegate: 1\n"), {{}, PixelValues::kRaw});
    EXPECT_EQ(map.resolution, 0.1);
    EXPECT_EQ(map.origin.y, 2.0);
    EXPECT_FLOAT_EQ(map.values.at<float>(0, 7), 1.0F);
}

TEST_F(ReadMap, TellsWhyAFileCannotBeRead) {
    expectError(dir_.file("missing.png"), "No such file or directory");
    expectError(dir_.file("missing.yaml"), "No such file or directory");
    expectError(dir_.path(), "Is a directory");
    expectError(dir_.write("empty.png", ""), "the file is empty");
    expectError(dir_.write("empty.yaml", ""), "the file is empty");
    expectError(dir_.write("file", "x") + "/map.png", "Not a directory");
}

TEST_F(ReadMap, RejectsWhatIsNoImage) {
    const std::string cause = "it cannot be decoded as an image";
    expectError(dir_.write("text.png", "This is no image, whatever its name says.\n"), cause);
    expectError(dir_.write("bad.pgm", "P5\nwide high\n255\nxxxx"), cause);
    expectError(dir_.write("zero.pgm", "P5\n0 0\n255\n"), cause);
    expectError(dir_.write("huge.pgm", "P5\n99999999999 1\n255\n0"), cause);
}

TEST_F(ReadMap, RejectsPixelTypesThatNoMapHas) {
    expectError(dir_.write("float.tiff", encoded(".tiff", cv::Mat::ones(3, 3, CV_32FC1))),
                "unsupported pixel type: only 8 or 16 bits per channel and 1, 3 or 4 channels are "
                "read");
}

TEST_F(ReadMap, RejectsEveryTruncationOfAPng) {
    cv::Mat image(20, 20, CV_8UC1);
    cv::RNG(1).fill(image, cv::RNG::UNIFORM, 0, 256);
    const std::string whole = encoded(".png", image);
    for (std::size_t length = 1; length < whole.size(); ++length) {
        const std::string path = dir_.write("cut.png", whole.substr(0, length));
        ASSERT_THAT([&] { readMap(path); }, Throws<MapError>()) << length << " bytes";
    }
    expectError(dir_.write("cut.png", whole.substr(0, whole.size() / 2)), "the image is cut off");
    expectError(dir_.write("cut.png", whole.substr(0, whole.size() - 1)), "the image is cut off");
    EXPECT_THAT(readMap(dir_.write("cut.png", whole)).picture, MatEq(image));
}

TEST_F(ReadMap, RejectsEveryTruncationOfBinaryPortableMaps) {
    const std::string grey = "P5\n# comment\n3 # another\n2\n255\nabcdef";
    const std::string deep = "P5 3 2 65535 aabbccddeeff";
    const std::string colour = "P6\n1 2\n255\nabcdef";
    const std::string bits = "P4\n9 3\naabbcc";
    for (const std::string& whole : {grey, deep, colour, bits}) {
        for (std::size_t length = 1; length < whole.size(); ++length) {
            const std::string path = dir_.write("cut.pgm", whole.substr(0, length));
            ASSERT_THAT([&] { readMap(path); }, Throws<MapError>())
                << whole << ", " << length << " bytes";
        }
        expectError(dir_.write("cut.pgm", whole.substr(0, whole.size() - 1)),
                    "the image is cut off");
        EXPECT_FALSE(readMap(dir_.write("whole.pgm", whole)).values.empty());
        EXPECT_FALSE(readMap(dir_.write("long.pgm", whole + "\nmore")).values.empty());
    }
}

TEST_F(ReadMap, RejectsATextPgmThatLacksNumbers) {
    expectError(dir_.write("cut.pgm", "P2\n3 2\n255\n1 2 3 4 5"),
                "it cannot be decoded as an image");
}

TEST_F(ReadMap, RejectsAJpegThatIsCutOff) {
    const std::string whole = encoded(".jpg", cv::Mat(40, 40, CV_8UC1, cv::Scalar(255)));
    EXPECT_EQ(readMap(dir_.write("map.jpg", whole)).values.cols, 40);
    expectError(dir_.write("cut.jpg", whole.substr(0, whole.size() - 2)), "the image is cut off");
    expectError(dir_.write("cut.jpg", whole.substr(0, whole.size() / 2)), "the image is cut off");
}

TEST_F(ReadMap, SurvivesDamagedFiles) {
    cv::Mat image(12, 12, CV_8UC1);
    cv::RNG random(2);
    random.fill(image, cv::RNG::UNIFORM, 0, 256);
    for (const char* ending : {".png", ".pgm", ".bmp"}) {
        const std::string whole = encoded(ending, image);
        for (int i = 0; i < 200; ++i) {
            std::string damaged = whole;
            const auto at = static_cast<std::size_t>(random.uniform(0, 60)) % damaged.size();
            damaged[at] = static_cast<char>(random.uniform(0, 256));
            // BMP headers may then tell of a gigabyte.
            if (ending == std::string(".bmp") && at >= 18 && at < 26) continue;
            const std::string path = dir_.write(std::string("damaged") + ending, damaged);
            try {
                const GridMap map = readMap(path);
                EXPECT_EQ(map.values.size(), map.picture.size());
            } catch (const MapError& error) {
                EXPECT_THAT(error.what(), StartsWith(path + ": "));
            }
        }
    }
}

TEST_F(ReadMap, RejectsAYamlFileThatIsNone) {
    // The list that the first line opens is found to be none in the second.
    const std::string open = dir_.write("open.yaml", "image: [map.pgm\nresolution: 0.05\n");
    EXPECT_THAT([&] { readMap(open); },
                ThrowsMessage<MapError>(
                    AllOf(StartsWith(open + ": it is no YAML file: "), EndsWith(" in line 2"))));
    expectYamlError("just text\n", "it is no map_server YAML file: it has no keys");
    expectYamlError("- image\n- resolution\n", "it is no map_server YAML file: it has no keys");
}

TEST_F(ReadMap, WantsAnImageAndAResolution) {
    expectYamlError("resolution: 0.05\n", "the key 'image' is missing");
    expectYamlError("image: map.pgm\n", "the key 'resolution' is missing");
    expectYamlError("image:\nresolution: 0.05\n", "image must be a file name, not nothing");
    expectYamlError("image: ''\nresolution: 0.05\n", "image must be a file name, not ''");
    expectYamlError("image: [a]\nresolution: 0.05\n",
                    "image must be a file name, not a list or a group");
}

TEST_F(ReadMap, NamesBothFilesWhereTheImageIsAtFault) {
    expectYamlError("image: none.pgm\nresolution: 0.05\n",
                    "image " + dir_.file("none.pgm") + ": No such file or directory");
    dir_.write("cut.pgm", "P5 2 2 255 abc");
    expectYamlError("image: cut.pgm\nresolution: 0.05\n",
                    "image " + dir_.file("cut.pgm") + ": the image is cut off");
}

TEST_F(ReadMap, RejectsAResolutionThatIsNone) {
    const std::string cause = "resolution must be a positive number (metres per pixel), not ";
    for (const char* value :
         {".nan", ".inf", "-.inf", "0", "0.0", "-0.05", "fine", "1e999", "0.05 m", "''"}) {
        const std::string shown = value == std::string("''") ? "" : value;
        expectYamlError(std::string("image: map.pgm\nresolution: ") + value + "\n",
                        cause + "'" + shown + "'");
    }
    expectYamlError("image: map.pgm\nresolution: [0.05]\n", cause + "a list or a group");
    expectYamlError("image: map.pgm\nresolution:\n", cause + "nothing");
    // One line, whatever the file says.
    expectYamlError("image: map.pgm\nresolution: \"a\\nb\\tc\"\n", cause + "'a?b?c'");
}

TEST_F(ReadMap, RejectsAnOriginThatIsNotThreeFiniteNumbers) {
    for (const char* value : {"[0, 0]", "[0, 0, 0, 0]", "[0, 0, .nan]", "[.inf, 0, 0]", "[x, 0, 0]",
                              "[[0], 0, 0]", "0", "{x: 0, y: 0, z: 0}"}) {
        expectYamlErrorWith(std::string("origin: ") + value,
                            "origin must be three finite numbers [x, y, yaw]");
    }
}

TEST_F(ReadMap, RejectsAnOriginThatIsTooFarForMicrometres) {
    for (const char* value : {"[1e12, 0, 0]", "[0, -2e8, 0]"}) {
        expectYamlErrorWith(std::string("origin: ") + value, "origin is more than 1e8 m away");
    }
}

TEST_F(ReadMap, RejectsThresholdsOutOfRange) {
    expectYamlErrorWith("free_thresh: -0.1",
                        "free_thresh must be a number from 0 to 1, not '-0.1'");
    expectYamlErrorWith("free_thresh: .nan",
                        "free_thresh must be a number from 0 to 1, not '.nan'");
    expectYamlErrorWith("occupied_thresh: 1.1",
                        "occupied_thresh must be a number from 0 to 1, not '1.1'");
    expectYamlErrorWith("occupied_thresh: high",
                        "occupied_thresh must be a number from 0 to 1, not 'high'");
    expectYamlErrorWith("free_thresh: 0.65", "free_thresh must be smaller than occupied_thresh");
    expectYamlErrorWith("occupied_thresh: 0.1", "free_thresh must be smaller than occupied_thresh");
}

TEST_F(ReadMap, RejectsUnknownModesAndNegates) {
    expectYamlErrorWith("mode: fancy", "mode must be trinary, scale or raw, not 'fancy'");
    expectYamlErrorWith("mode: [raw]", "mode must be trinary, scale or raw, not a list or a group");
    expectYamlErrorWith("negate: 2", "negate must be 0, 1, true or false, not '2'");
    expectYamlErrorWith("negate: maybe", "negate must be 0, 1, true or false, not 'maybe'");
    expectYamlErrorWith("negate:", "negate must be 0, 1, true or false, not nothing");
}

}  // namespace
}  // namespace vorund::rooms
