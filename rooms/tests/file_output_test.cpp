#include "vorund/rooms/file_output.h"

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/captures.h"
#include "support/label_grid.h"
#include "support/mat_matchers.h"

namespace vorund::rooms {
namespace {

namespace fs = std::filesystem;

using test::MatEq;
using test::readFile;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

std::vector<std::uint8_t> bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

/// A file system of its own, of 64 kB; or none, where mounting is not allowed.
class SmallDisk {
 public:
    explicit SmallDisk(const std::string& path) : path_(path) {
        fs::create_directory(path);
        mounted_ = ::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk() {
        if (mounted_) ::umount2(path_.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return mounted_; }
    bool makeReadOnly() const {
        return ::mount("tmpfs", path_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, "size=64k") == 0;
    }

 private:
    std::string path_;
    bool mounted_ = false;
};

class FileOutputTest : public ::testing::Test {
 protected:
    test::TempDir dir_;
};

TEST_F(FileOutputTest, ShowsFilesOnlyAfterCommit) {
    FileOutput output(dir_.path());
    output.write("a.txt", bytes("first"));
    output.write("b.txt", {});
    EXPECT_FALSE(fs::exists(dir_.file("a.txt")));
    EXPECT_FALSE(fs::exists(dir_.file("b.txt")));

    output.commit();
    EXPECT_THAT(dir_.names(), ElementsAre("a.txt", "b.txt"));
    EXPECT_EQ(readFile(dir_.file("a.txt")), "first");
    EXPECT_EQ(readFile(dir_.file("b.txt")), "");
}

TEST_F(FileOutputTest, WritesWhateverTheBytesAre) {
    std::vector<std::uint8_t> all;
    for (int i = 0; i < 300000; ++i) all.push_back(static_cast<std::uint8_t>(i % 256));
    FileOutput output(dir_.path());
    output.write("all", all);
    output.commit();
    EXPECT_EQ(readFile(dir_.file("all")), std::string(all.begin(), all.end()));
}

TEST_F(FileOutputTest, ReplacesOlderFiles) {
    dir_.write("a.txt", "an older and longer one");
    FileOutput output(dir_.path());
    output.write("a.txt", bytes("new"));
    EXPECT_EQ(readFile(dir_.file("a.txt")), "an older and longer one");
    output.commit();
    EXPECT_EQ(readFile(dir_.file("a.txt")), "new");
    EXPECT_THAT(dir_.names(), ElementsAre("a.txt"));
}

TEST_F(FileOutputTest, ReplacesALinkAndNotWhatItPointsTo) {
    fs::create_symlink(dir_.write("elsewhere", "kept"), dir_.file("a.txt"));
    FileOutput output(dir_.path());
    output.write("a.txt", bytes("new"));
    output.commit();
    EXPECT_EQ(readFile(dir_.file("elsewhere")), "kept");
    EXPECT_EQ(readFile(dir_.file("a.txt")), "new");
}

TEST_F(FileOutputTest, GivesFilesTheRightsThatTheUserAskedFor) {
    const mode_t former = ::umask(027);
    {
        FileOutput output(dir_.path());
        output.write("a.txt", bytes("x"));
        output.commit();
    }
    ::umask(former);
    struct stat status {};
    ASSERT_EQ(::stat(dir_.file("a.txt").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST_F(FileOutputTest, LeavesNothingWithoutCommit) {
    dir_.write("a.txt", "older");
    {
        FileOutput output(dir_.path());
        output.write("a.txt", bytes("new"));
        output.write("b.txt", bytes("new"));
        fs::create_directory(output.openDirectory("images") + "/deep");
    }
    EXPECT_THAT(dir_.names(), ElementsAre("a.txt"));
    EXPECT_EQ(readFile(dir_.file("a.txt")), "older");
}

TEST_F(FileOutputTest, MakesTheDirectoryAndItsParents) {
    for (const char* path : {"one/two/three", "slash/", "dot/./dot"}) {
        FileOutput output(dir_.file(path));
        output.write("a.txt", bytes("x"));
        output.commit();
        EXPECT_TRUE(fs::exists(dir_.file(path) + "/a.txt")) << path;
    }
}

TEST_F(FileOutputTest, RemovesTheDirectoriesItMadeIfTheyStayEmpty) {
    fs::create_directory(dir_.file("mine"));
    {
        FileOutput output(dir_.file("mine/one/two"));
        output.write("a.txt", bytes("x"));
        EXPECT_TRUE(fs::exists(dir_.file("mine/one/two")));
    }
    EXPECT_THAT(dir_.names(), ElementsAre("mine"));
    EXPECT_TRUE(fs::is_empty(dir_.file("mine"))) << "one and two are gone, mine is not";
}

TEST_F(FileOutputTest, KeepsADirectoryThatSomebodyElseFilled) {
    {
        FileOutput output(dir_.file("made"));
        dir_.write("made/other.txt", "x");
    }
    EXPECT_TRUE(fs::exists(dir_.file("made/other.txt")));
}

TEST_F(FileOutputTest, EncodesImagesByTheirEnding) {
    const cv::Mat image = test::labels(
        "1 2 3\n"
        "4 5 255");
    FileOutput output(dir_.path());
    output.writeImage("a.png", image);
    output.writeImage("b.pgm", image);
    cv::Mat deep;
    image.convertTo(deep, CV_16U, 257.0);
    output.writeImage("c.png", deep);
    output.commit();
    EXPECT_THAT(cv::imread(dir_.file("a.png"), cv::IMREAD_UNCHANGED), MatEq(image));
    EXPECT_THAT(cv::imread(dir_.file("b.pgm"), cv::IMREAD_UNCHANGED), MatEq(image));
    EXPECT_THAT(cv::imread(dir_.file("c.png"), cv::IMREAD_UNCHANGED), MatEq(deep));
    EXPECT_EQ(readFile(dir_.file("b.pgm")).substr(0, 2), "P5");
}

TEST_F(FileOutputTest, RejectsImagesThatItCannotEncode) {
    const cv::Mat image = test::labels("1 2");
    FileOutput output(dir_.path());
    const auto expectError = [&](const std::string& name, const cv::Mat& mat,
                                 const std::string& cause) {
        EXPECT_THAT([&] { output.writeImage(name, mat); },
                    ThrowsMessage<std::runtime_error>(dir_.file(name) + ": " + cause));
    };
    expectError("a.xyz", image, "no image format goes by the ending '.xyz'");
    expectError("a", image, "no image format goes by the ending ''");
    expectError("a.png", {}, "the image is empty");
    expectError("a.png", test::labels32("1 300"),
                "only images of 8 or 16 bits per channel can be written");
    EXPECT_THAT(dir_.names(), IsEmpty());
}

TEST_F(FileOutputTest, PutsADirectoryInPlaceOfAnOlderOne) {
    fs::create_directory(dir_.file("images"));
    dir_.write("images/old.png", "old");
    FileOutput output(dir_.path());
    const std::string path = output.openDirectory("images");
    EXPECT_EQ(fs::path(path).parent_path().string(), dir_.path());
    std::ofstream(path + "/new.png") << "new";
    EXPECT_TRUE(fs::exists(dir_.file("images/old.png")));

    output.commit();
    EXPECT_THAT(dir_.names(), ElementsAre("images"));
    EXPECT_EQ(readFile(dir_.file("images/new.png")), "new");
    EXPECT_FALSE(fs::exists(dir_.file("images/old.png")));
}

TEST_F(FileOutputTest, PutsAllOrNothingInPlace) {
    dir_.write("a.txt", "older");
    fs::create_directory(dir_.file("images"));
    dir_.write("images/old.png", "old");
    fs::create_directory(dir_.file("in_the_way"));
    {
        FileOutput output(dir_.path());
        output.write("a.txt", bytes("new"));
        output.write("b.txt", bytes("new"));
        output.openDirectory("images");
        output.write("in_the_way", bytes("new"));
        EXPECT_THAT([&] { output.commit(); }, ThrowsMessage<std::runtime_error>(
                                                  dir_.file("in_the_way") + ": Is a directory"));
        EXPECT_EQ(readFile(dir_.file("a.txt")), "older");
        EXPECT_FALSE(fs::exists(dir_.file("b.txt")));
        EXPECT_EQ(readFile(dir_.file("images/old.png")), "old");
    }
    EXPECT_THAT(dir_.names(), ElementsAre("a.txt", "images", "in_the_way"));
}

TEST_F(FileOutputTest, LeavesTheOlderFileWhereTheNewOneWasTakenAway) {
    FileOutput output(dir_.path());
    output.write("a.txt", bytes("new"));
    ASSERT_THAT(dir_.names(), SizeIs(1));
    fs::remove(dir_.file(dir_.names().front()));
    dir_.write("a.txt", "older");
    EXPECT_THAT([&] { output.commit(); }, ThrowsMessage<std::runtime_error>(
                                              dir_.file("a.txt") + ": No such file or directory"));
    EXPECT_THAT(dir_.names(), ElementsAre("a.txt"));
    EXPECT_EQ(readFile(dir_.file("a.txt")), "older");
}

TEST_F(FileOutputTest, RejectsADirectoryInPlaceOfAFile) {
    dir_.write("images", "a file");
    FileOutput output(dir_.path());
    output.openDirectory("images");
    EXPECT_THAT([&] { output.commit(); },
                ThrowsMessage<std::runtime_error>(dir_.file("images") + ": Not a directory"));
    EXPECT_EQ(readFile(dir_.file("images")), "a file");
}

TEST_F(FileOutputTest, CommitsAgainAfterMoreWasWritten) {
    FileOutput output(dir_.path());
    output.write("a.txt", bytes("1"));
    output.commit();
    output.write("a.txt", bytes("2"));
    output.write("a.txt", bytes("3"));
    output.commit();
    EXPECT_EQ(readFile(dir_.file("a.txt")), "3");
    EXPECT_THAT(dir_.names(), ElementsAre("a.txt"));
}

TEST_F(FileOutputTest, ServesTwoObjectsInOneDirectory) {
    FileOutput one(dir_.path());
    FileOutput two(dir_.path());
    one.write("a.txt", bytes("one"));
    two.write("b.txt", bytes("two"));
    one.commit();
    two.commit();
    EXPECT_EQ(readFile(dir_.file("a.txt")), "one");
    EXPECT_EQ(readFile(dir_.file("b.txt")), "two");
}

TEST_F(FileOutputTest, TellsWhyADirectoryCannotBeMade) {
    const std::string file = dir_.write("file", "x");
    EXPECT_THAT([&] { FileOutput output(file); },
                ThrowsMessage<std::runtime_error>(file + ": Not a directory"));
    EXPECT_THAT([&] { FileOutput output(file + "/below/it"); },
                ThrowsMessage<std::runtime_error>(file + ": Not a directory"));
    EXPECT_THAT([&] { FileOutput output(dir_.file("new/") + std::string(300, 'x')); },
                ThrowsMessage<std::runtime_error>(HasSubstr("xxx: File name too long")));
    EXPECT_THAT([] { FileOutput output(""); },
                ThrowsMessage<std::runtime_error>("the output directory has no name"));
    EXPECT_THAT(dir_.names(), ElementsAre("file")) << "new was made, and removed again";
}

TEST_F(FileOutputTest, TellsWhyAFileCannotBeWritten) {
    fs::create_directory(dir_.file("gone"));
    FileOutput output(dir_.file("gone"));
    fs::remove(dir_.file("gone"));
    EXPECT_THAT(
        [&] { output.write("a.txt", bytes("x")); },
        ThrowsMessage<std::runtime_error>(dir_.file("gone/a.txt") + ": No such file or directory"));
    EXPECT_THAT([&] { output.openDirectory("images"); },
                ThrowsMessage<std::runtime_error>(dir_.file("gone/images") +
                                                  ": No such file or directory"));
}

TEST_F(FileOutputTest, RejectsNamesThatLeadElsewhere) {
    FileOutput output(dir_.path());
    for (const char* name : {"", ".", "..", "sub/a.txt", "../a.txt", "/a.txt"}) {
        EXPECT_THAT([&] { output.write(name, {}); },
                    ThrowsMessage<std::invalid_argument>(std::string("FileOutput: '") + name +
                                                         "' is not the name of a file."));
        EXPECT_THROW(output.openDirectory(name), std::invalid_argument);
        EXPECT_THROW(output.writeImage(name, test::labels("1")), std::invalid_argument);
    }
    EXPECT_THAT(dir_.names(), IsEmpty());
}

TEST_F(FileOutputTest, TellsOfAFullDiskAndLeavesNothing) {
    const std::string path = dir_.file("disk");
    const SmallDisk disk(path);
    if (!disk.isMounted()) GTEST_SKIP() << "mounting a small disk is not allowed here";
    dir_.write("disk/a.txt", "older");
    {
        FileOutput output(path);
        output.write("a.txt", bytes("new"));
        EXPECT_THAT([&] { output.write("large", std::vector<std::uint8_t>(100000)); },
                    ThrowsMessage<std::runtime_error>(path + "/large: No space left on device"));
    }
    EXPECT_EQ(readFile(path + "/a.txt"), "older");
    EXPECT_EQ(std::distance(fs::directory_iterator(path), fs::directory_iterator()), 1);
}

TEST_F(FileOutputTest, TellsOfADiskThatIsReadOnly) {
    const std::string path = dir_.file("disk");
    const SmallDisk disk(path);
    if (!disk.isMounted()) GTEST_SKIP() << "mounting a small disk is not allowed here";
    ASSERT_TRUE(disk.makeReadOnly());
    EXPECT_THAT([&] { FileOutput output(path); },
                ThrowsMessage<std::runtime_error>(path + ": Read-only file system"));
    EXPECT_THAT([&] { FileOutput output(path + "/new"); },
                ThrowsMessage<std::runtime_error>(path + "/new: Read-only file system"));
}

}  // namespace
}  // namespace vorund::rooms
