#include "segment_outputs.h"

#include <cstdint>

#include "vorund/rooms/room_picture.h"
#include "vorund/rooms/rooms_json.h"

namespace vorund::app {
namespace {

/// 255 stays free in images of 8 bits: programs that expect `segments.png` take it for no room.
constexpr std::size_t kMostRoomsIn8Bits = 254;

cv::Mat labelImage(const rooms::Rooms& rooms) {
    cv::Mat image;
    rooms.labels.convertTo(image, rooms.rooms.size() > kMostRoomsIn8Bits ? CV_16U : CV_8U);
    return image;
}

/// Regions from blocks have labels of 32 bits, also where they are few.
cv::Mat segmentImage(const cv::Mat& segments) {
    if (segments.depth() != CV_32S) return segments;
    double largest = 0.0;
    cv::minMaxLoc(segments, nullptr, &largest);
    cv::Mat image;
    segments.convertTo(image, largest > 255.0 ? CV_16U : CV_8U);
    return image;
}

void writeText(rooms::FileOutput& output, const std::string& name, const std::string& text) {
    output.write(name, std::vector<std::uint8_t>(text.begin(), text.end()));
}

}  // namespace

void keepImages(rooms::FlowObserver& observer, RunImages& images) {
    observer.segmented = [&images](const cv::Mat& labels) { images.segments = labels.clone(); };
    observer.picture = [&images](const std::string& name, const cv::Mat& picture) {
        images.pictures.emplace_back(name, picture.clone());
    };
}

cv::Mat paintRooms(const rooms::GridMap& map, const rooms::Rooms& rooms) {
    const int unreached = static_cast<int>(rooms.rooms.size()) + 1;
    cv::Mat labels = rooms.labels.clone();
    labels.setTo(unreached, rooms.unreached);
    return rooms::drawRooms(map.picture, labels, unreached);
}

void writeResults(const rooms::GridMap& map, const rooms::Rooms& rooms, const RunImages& images,
                  rooms::FileOutput& output) {
    output.writeImage("segments.png", segmentImage(images.segments));
    output.writeImage("segments_color.png", rooms::drawRooms(map.picture, images.segments));
    output.writeImage("rooms.png", labelImage(rooms));
    output.writeImage("rooms_color.png", paintRooms(map, rooms));
    for (const auto& [name, picture] : images.pictures) output.writeImage(name + ".png", picture);
    writeText(output, "rooms.geojson", rooms::roomsAsGeoJson(rooms));
    writeText(output, "rooms.json", rooms::roomsAsJson(rooms));
}

}  // namespace vorund::app
