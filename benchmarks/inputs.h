#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "vorund/rooms/grid_map.h"
#include "vorund/rooms/room_settings.h"

/// What the stages are measured on: floor plans of offices, rooms of the same size on all of them,
/// only more of them on larger ones.
namespace vorund::bench {

/// The settings under which everything is measured, by name.
enum class Kind { kDefault, kThinWalls };
inline constexpr std::array<Kind, 2> kKinds{Kind::kDefault, Kind::kThinWalls};
const char* nameOf(Kind kind);
/// @throws std::invalid_argument  for a name that is none.
Kind kindOf(const std::string& name);
rooms::Settings settingsOf(Kind kind);

/// Sides of the maps: 0.25, 1, 4, 16 and 64 megapixels.
inline constexpr std::array<int, 5> kSides{500, 1000, 2000, 4000, 8000};

/// A map of that side. Up to 4000 it is one building; four of those make up one of 8000.
rooms::GridMap mapOf(int side);

/// All that the stages after one another take and give, on one building of at most 1000 x 1000.
struct Tile {
    rooms::GridMap map;
    cv::Mat denoised;
    cv::Mat dilated;
    cv::Mat ridges;
    cv::Mat boundary;
    std::vector<double> sigmas;
    std::vector<cv::Mat> seed_maps;  ///< Numbered, as they are followed.
    cv::Mat markers;
    cv::Mat fill_seeds;  ///< `CV_32SC1`: of the second flood.
    cv::Mat segmented;   ///< `CV_8UC1`, the map's size.
};

/// The tile of maps of that side. It is made once.
const Tile& tileOf(int side, Kind kind);

/// Tiles side by side that a map of that side is made up of, in a row as in a column. Larger maps
/// than 1000 x 1000 have more rooms than 8-bit labels, so that labels of the pipeline repeat.
int tilesAcross(int side);

/// An image of the tile as it is for a map of that side.
cv::Mat enlarged(const cv::Mat& image, int side);

/// `segmented` likewise, `CV_32SC1`, with labels of their own for every tile.
cv::Mat regionsOfMap(int side, Kind kind);

/// Keeps the libraries from saying anything, and OpenCV to one thread.
void beQuietAndSingleThreaded();

}  // namespace vorund::bench
