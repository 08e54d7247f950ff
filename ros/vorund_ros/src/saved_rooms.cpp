#include "saved_rooms.h"

#include <ros/serialization.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "vorund/rooms/file_output.h"

namespace vorund_ros {
namespace {

// The file: a line that says what it is, a line with the definitions' sums, the checksum of the
// rest as eight bytes, the rest.
constexpr char kFirstLine[] = "vorund rooms 1\n";
constexpr std::size_t kChecksumBytes = 8;

[[noreturn]] void fail(const std::string& path, const std::string& cause) {
    throw SaveError(path + ": " + cause);
}

std::string heading() {
    namespace traits = ros::message_traits;
    return std::string(kFirstLine) + traits::md5sum<vorund_msgs::RoomGraph>() + " " +
           traits::md5sum<sensor_msgs::Image>() + "\n";
}

/// FNV-1a, as little-endian bytes.
std::vector<std::uint8_t> checksum(const std::uint8_t* bytes, std::size_t count) {
    std::uint64_t value = 14695981039346656037U;
    for (std::size_t i = 0; i < count; ++i) value = (value ^ bytes[i]) * 1099511628211U;
    std::vector<std::uint8_t> sum;
    for (std::size_t i = 0; i < kChecksumBytes; ++i) {
        sum.push_back(static_cast<std::uint8_t>(value >> (8 * i) & 0xFFU));
    }
    return sum;
}

/// The message for every part in its place; used to write and to read.
template <class Stream, class Saved>
void passAll(Stream& stream, Saved& saved) {
    stream.next(saved.choices);
    stream.next(saved.found.graph);
    stream.next(saved.found.labels);
}

std::vector<std::uint8_t> toBytes(const SavedRooms& saved) {
    ros::serialization::LStream length;
    passAll(length, saved);
    std::vector<std::uint8_t> body(length.getLength());
    ros::serialization::OStream writer(body.data(), length.getLength());
    passAll(writer, saved);

    const std::string head = heading();
    std::vector<std::uint8_t> bytes(head.begin(), head.end());
    const std::vector<std::uint8_t> sum = checksum(body.data(), body.size());
    bytes.insert(bytes.end(), sum.begin(), sum.end());
    bytes.insert(bytes.end(), body.begin(), body.end());
    return bytes;
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

std::ifstream open(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) fail(path, std::generic_category().message(errno));
    if (!S_ISREG(status.st_mode)) fail(path, "is not a regular file");
    std::ifstream file(path, std::ios::binary);
    if (!file) fail(path, std::generic_category().message(errno));
    return file;
}

std::string firstBytes(std::ifstream& file, std::size_t count) {
    std::string text(count, '\0');
    file.read(text.data(), static_cast<std::streamsize>(count));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

/// Whoever may call a service must not be able to overwrite any file of the robot.
void requireToBeOurs(const std::string& path) {
    if (!exists(path)) return;
    std::ifstream file = open(path);
    if (firstBytes(file, sizeof kFirstLine - 1) != kFirstLine) {
        fail(path, "is there already and holds no saved rooms");
    }
}

std::vector<std::uint8_t> bodyOf(const std::string& path) {
    std::ifstream file = open(path);
    const std::string expected = heading();
    const std::string head = firstBytes(file, expected.size());
    if (head.compare(0, sizeof kFirstLine - 1, kFirstLine) != 0) fail(path, "holds no saved rooms");
    if (head != expected) fail(path, "was written with other message definitions");
    const std::string sum = firstBytes(file, kChecksumBytes);
    std::vector<std::uint8_t> body((std::istreambuf_iterator<char>(file)),
                                   std::istreambuf_iterator<char>());
    const std::vector<std::uint8_t> expected_sum = checksum(body.data(), body.size());
    if (!std::equal(sum.begin(), sum.end(), expected_sum.begin(), expected_sum.end(),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; })) {
        fail(path, "was cut or changed");
    }
    return body;
}

}  // namespace

void saveRooms(const std::string& path, const SavedRooms& saved) {
    requireToBeOurs(path);
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    try {
        vorund::rooms::FileOutput output(directory);
        output.write(path.substr(slash == std::string::npos ? 0 : slash + 1), toBytes(saved));
        output.commit();
    } catch (const std::exception& error) {
        fail(path, error.what());
    }
}

SavedRooms loadRooms(const std::string& path) {
    std::vector<std::uint8_t> body = bodyOf(path);
    SavedRooms saved;
    try {
        ros::serialization::IStream reader(body.data(), static_cast<std::uint32_t>(body.size()));
        passAll(reader, saved);
    } catch (const std::exception&) {
        fail(path, "was cut or changed");
    }
    if (!isConsistent(saved.found)) fail(path, "holds rooms that do not fit together");
    return saved;
}

}  // namespace vorund_ros
