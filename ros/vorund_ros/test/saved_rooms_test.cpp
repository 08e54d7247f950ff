#include "saved_rooms.h"

#include <gmock/gmock.h>
#include <ros/serialization.h>
#include <sys/stat.h>

#include "drawn_maps.h"

namespace vorund_ros {
namespace {

using test::readFile;
using test::TempDir;
using test::writeFile;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

SavedRooms example() {
    FoundRooms found = test::foundOf((cv::Mat_<std::int32_t>(2, 3) << 1, 1, 0, 0, 2, 2));
    found.graph.header.frame_id = "map";
    return {found, "some: choices\n"};
}

template <class Message>
std::string bytesOf(const Message& message) {
    std::string bytes(ros::serialization::serializationLength(message), '\0');
    ros::serialization::OStream stream(reinterpret_cast<std::uint8_t*>(bytes.data()),
                                       static_cast<std::uint32_t>(bytes.size()));
    stream.next(message);
    return bytes;
}

void expectCut(const std::string& path) {
    EXPECT_THAT([&] { loadRooms(path); }, ThrowsMessage<SaveError>(StartsWith(path + ": ")));
}

TEST(SavedRooms, ComeBackAsTheyWere) {
    const TempDir folder;
    const std::string path = folder / "new/folders/map.rooms";
    saveRooms(path, example());
    const SavedRooms loaded = loadRooms(path);
    EXPECT_EQ(loaded.choices, "some: choices\n");
    EXPECT_EQ(bytesOf(loaded.found.graph), bytesOf(example().found.graph));
    EXPECT_EQ(bytesOf(loaded.found.labels), bytesOf(example().found.labels));
}

TEST(SavedRooms, TakeThePlaceOfOlderOnes) {
    const TempDir folder;
    SavedRooms other = example();
    saveRooms(folder / "map.rooms", other);
    other.choices = "newer";
    saveRooms(folder / "map.rooms", other);
    EXPECT_EQ(loadRooms(folder / "map.rooms").choices, "newer");
}

TEST(SavedRooms, LeaveOtherFilesAlone) {
    const TempDir folder;
    const std::string path = folder / "precious";
    writeFile(path, "something else");
    EXPECT_THAT([&] { saveRooms(path, example()); },
                ThrowsMessage<SaveError>(path + ": is there already and holds no saved rooms"));
    EXPECT_EQ(readFile(path), "something else");
    EXPECT_THAT([&] { loadRooms(path); },
                ThrowsMessage<SaveError>(path + ": holds no saved rooms"));
}

TEST(SavedRooms, AreRefusedCutAnywhere) {
    const TempDir folder;
    const std::string path = folder / "map.rooms";
    saveRooms(path, example());
    const std::string whole = readFile(path);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeFile(path, whole.substr(0, length));
        expectCut(path);
    }
}

TEST(SavedRooms, AreRefusedWithAnyByteChanged) {
    const TempDir folder;
    const std::string path = folder / "map.rooms";
    saveRooms(path, example());
    std::string bytes = readFile(path);
    for (char& byte : bytes) {
        byte = static_cast<char>(byte ^ 0x10);
        writeFile(path, bytes);
        expectCut(path);
        byte = static_cast<char>(byte ^ 0x10);
    }
}

TEST(SavedRooms, AreRefusedIfTheirPartsDoNotFit) {
    const TempDir folder;
    SavedRooms odd = example();
    odd.found.graph.rooms.pop_back();
    saveRooms(folder / "map.rooms", odd);
    EXPECT_THAT([&] { loadRooms(folder / "map.rooms"); },
                ThrowsMessage<SaveError>(HasSubstr(": holds rooms that do not fit together")));
}

TEST(SavedRooms, NameWhatIsMissingOrNoFile) {
    const TempDir folder;
    const std::string missing = folder / "missing";
    EXPECT_THAT([&] { loadRooms(missing); },
                ThrowsMessage<SaveError>(missing + ": No such file or directory"));
    const std::string directory = folder / "directory";
    ASSERT_EQ(::mkdir(directory.c_str(), 0700), 0);
    EXPECT_THAT([&] { loadRooms(directory); },
                ThrowsMessage<SaveError>(directory + ": is not a regular file"));
    EXPECT_THAT([&] { saveRooms(directory, example()); },
                ThrowsMessage<SaveError>(directory + ": is not a regular file"));
}

TEST(SavedRooms, NameAPathThatCannotBeWrittenTo) {
    EXPECT_THAT([] { saveRooms("/proc/nowhere/map.rooms", example()); },
                ThrowsMessage<SaveError>(StartsWith("/proc/nowhere/map.rooms: ")));
}

}  // namespace
}  // namespace vorund_ros
