#pragma once

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <set>
#include <string>
#include <vector>

#include "program.h"
#include "support/captures.h"

namespace vorund::test {

/// Two rooms of 3 m x 3.2 m, a wall of 0.2 m between them and a door of 0.7 m in it.
inline cv::Mat twoRooms() {
    cv::Mat map(80, 140, CV_8UC1, cv::Scalar(0));
    map(cv::Rect(8, 8, 60, 64)) = 254;
    map(cv::Rect(72, 8, 60, 64)) = 254;
    map(cv::Rect(68, 33, 4, 14)) = 254;
    return map;
}

/// 96 times the same: long enough at work that a signal comes in time.
inline cv::Mat manyRooms() {
    cv::Mat map;
    cv::repeat(twoRooms(), 12, 8, map);
    return map;
}

class CliTest : public ::testing::Test {
 protected:
    std::string image(const std::string& name, const cv::Mat& pixels) const {
        const std::string path = folder_.file(name);
        EXPECT_TRUE(cv::imwrite(path, pixels));
        return path;
    }

    /// A map_server file about an image of that name, with these other lines.
    std::string mapYaml(const std::string& image_name, const std::string& lines) const {
        return folder_.write("map.yaml", "image: " + image_name +
                                             "\norigin: [0, 0, 0]\nnegate: 0\n" +
                                             "occupied_thresh: 0.65\nfree_thresh: 0.196\n" + lines);
    }

    std::string out() const { return folder_.file("out"); }

    Outcome segment(const std::string& map, const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments{"segment", map, "--out", out()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runProgram(arguments);
    }

    cv::Mat result(const std::string& name) const {
        return cv::imread(out() + "/" + name, cv::IMREAD_UNCHANGED);
    }

    bool exists(const std::string& path) const {
        struct stat status {};
        return ::lstat(path.c_str(), &status) == 0;
    }

    /// All that is in a directory, hidden files too.
    std::set<std::string> names(const std::string& directory) const {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(directory)) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }

    /// Status 1, one line on standard error that names the file and then tells the cause, and
    /// nothing left behind.
    void expectFailure(const Outcome& outcome, const std::string& file, const std::string& cause) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        ASSERT_THAT(splitLines(outcome.err), ::testing::ElementsAre(::testing::AllOf(
                                                 ::testing::StartsWith("vorund: " + file + ": "),
                                                 ::testing::HasSubstr(cause))));
        EXPECT_THAT(outcome.err, ::testing::EndsWith("\n"));
        EXPECT_FALSE(exists(out()));
    }

    TempDir folder_;
};

}  // namespace vorund::test
