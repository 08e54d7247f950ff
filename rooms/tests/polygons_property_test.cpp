#include <gmock/gmock.h>

#include <algorithm>
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <cmath>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "polygon_probe.h"
#include "support/random_images.h"
#include "vorund/rooms/polygons.h"

namespace vorund::rooms {
namespace {

using test::areaOf;
using test::labelsAt;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

/// Integers, so that Boost does not round either.
using BoostPoint = boost::geometry::model::d2::point_xy<std::int64_t>;
/// Counterclockwise, closed.
using BoostPolygon = boost::geometry::model::polygon<BoostPoint, false, true>;

using Corner = std::pair<int, int>;
using Line = std::pair<Corner, Corner>;

constexpr double kTolerances[] = {0.5, 1.0, 1.5, 3.0, 10.0, 1000.0};

cv::Mat toLabels(const cv::Mat& bytes) {
    cv::Mat labels;
    bytes.convertTo(labels, CV_32S);
    return labels;
}

cv::Mat noise(test::RandomImages& random) {
    return toLabels(random.bytes(random.size(9), 2 + random.below(4)));
}

cv::Mat patches(test::RandomImages& random) {
    return toLabels(random.patches(random.size(24), 1 + random.below(12), random.below(2)));
}

/// Each pixel belongs to the nearest of some points: borders in all directions, as in real maps.
/// @param wall  Pixels whose nearest two points are about as far become wall, the more the larger.
cv::Mat cells(test::RandomImages& random, const cv::Size& size, int count, double wall) {
    std::vector<cv::Point2d> seeds;
    for (int i = 0; i < count; ++i) {
        const int x = random.below(size.width);
        seeds.emplace_back(x, random.below(size.height));
    }
    cv::Mat_<int> labels(size);
    for (int row = 0; row < size.height; ++row) {
        for (int col = 0; col < size.width; ++col) {
            std::vector<std::pair<double, int>> nearest;
            for (int i = 0; i < count; ++i) {
                const cv::Point2d way = seeds[static_cast<std::size_t>(i)] - cv::Point2d(col, row);
                nearest.emplace_back(std::sqrt(way.dot(way)), i + 1);
            }
            nearest.emplace_back(1e9, 0);
            std::sort(nearest.begin(), nearest.end());
            const bool is_wall = nearest[1].first - nearest[0].first < wall;
            labels(row, col) = is_wall ? 0 : nearest[0].second;
        }
    }
    return std::move(labels);
}

/// Pixels of no room, or of the room next to it, strewn over an image.
void strew(test::RandomImages& random, cv::Mat& labels) {
    for (int i = random.below(12); i > 0; --i) {
        const int row = random.below(labels.rows);
        labels.at<int>(row, random.below(labels.cols)) = random.below(3);
    }
}

/// Of every kind of image some; the seed tells which.
cv::Mat randomLabels(int seed) {
    test::RandomImages random(static_cast<std::uint32_t>(seed));
    switch (seed % 4) {
        case 0:
            return noise(random);
        case 1:
            return patches(random);
        default: {
            const cv::Size size = random.size(30);
            const double wall = seed % 4 == 2 ? 0.0 : random.below(4) * 0.7;
            cv::Mat labels = cells(random, size, 1 + random.below(10), wall);
            strew(random, labels);
            return labels;
        }
    }
}

std::string described(const cv::Mat& labels) {
    std::ostringstream text;
    text << labels;
    return text.str();
}

BoostPoint toBoost(const cv::Point& corner) {
    return {corner.x, -std::int64_t{corner.y}};
}

AssertionResult isValid(const Polygon& polygon) {
    BoostPolygon checked;
    for (const cv::Point& corner : polygon.outer) checked.outer().push_back(toBoost(corner));
    for (const Ring& hole : polygon.holes) {
        checked.inners().emplace_back();
        for (const cv::Point& corner : hole) checked.inners().back().push_back(toBoost(corner));
    }
    std::string cause;
    if (boost::geometry::is_valid(checked, cause)) return AssertionSuccess();
    std::ostringstream text;
    text << boost::geometry::wkt(checked);
    return AssertionFailure() << cause << ": " << text.str();
}

std::vector<Ring> ringsOf(const std::vector<RoomPolygons>& rooms) {
    std::vector<Ring> rings;
    for (const RoomPolygons& room : rooms) {
        for (const Polygon& piece : room.pieces) {
            rings.push_back(piece.outer);
            rings.insert(rings.end(), piece.holes.begin(), piece.holes.end());
        }
    }
    return rings;
}

/// Number of pieces of each room, counted in the image.
std::map<int, std::size_t> piecesOf(const cv::Mat& labels) {
    std::map<int, std::size_t> pieces;
    std::set<int> values(labels.begin<int>(), labels.end<int>());
    values.erase(0);
    for (const int value : values) {
        const cv::Mat mask = labels == value;
        cv::Mat components;
        pieces[value] = static_cast<std::size_t>(cv::connectedComponents(mask, components, 4)) - 1;
    }
    return pieces;
}

std::map<int, std::size_t> piecesOf(const std::vector<RoomPolygons>& rooms) {
    std::map<int, std::size_t> pieces;
    for (const RoomPolygons& room : rooms) pieces[room.label] = room.pieces.size();
    return pieces;
}

AssertionResult areValid(const std::vector<RoomPolygons>& rooms) {
    for (const RoomPolygons& room : rooms) {
        for (const Polygon& piece : room.pieces) {
            const AssertionResult valid = isValid(piece);
            if (!valid)
                return AssertionFailure() << "room " << room.label << ": " << valid.message();
        }
    }
    return AssertionSuccess();
}

TEST(RoomPolygonsOfRandomImages, CoverExactlyThePixelsOfTheRooms) {
    for (int seed = 0; seed < 600; ++seed) {
        const cv::Mat_<int> labels = randomLabels(seed);
        SCOPED_TRACE(described(labels));
        const std::vector<RoomPolygons> rooms = roomPolygons(labels);
        for (int row = 0; row < labels.rows; ++row) {
            for (int col = 0; col < labels.cols; ++col) {
                const int label = labels(row, col);
                const std::vector<int> expected(label == 0 ? 0 : 1, label);
                ASSERT_EQ(labelsAt(rooms, {col + 0.5, row + 0.5}), expected) << row << ", " << col;
            }
        }
        for (const RoomPolygons& room : rooms) {
            ASSERT_EQ(areaOf(room), cv::countNonZero(labels == room.label));
        }
    }
}

TEST(RoomPolygonsOfRandomImages, AreValidWithEveryTolerance) {
    for (int seed = 0; seed < 600; ++seed) {
        const cv::Mat labels = randomLabels(seed);
        ASSERT_TRUE(areValid(roomPolygons(labels))) << described(labels);
        for (const double tolerance : kTolerances) {
            ASSERT_TRUE(areValid(roomPolygons(labels, tolerance)))
                << tolerance << " " << described(labels);
        }
    }
}

TEST(RoomPolygonsOfRandomImages, HaveOnePolygonForEachPieceWithEveryTolerance) {
    for (int seed = 0; seed < 600; ++seed) {
        const cv::Mat labels = randomLabels(seed);
        const std::map<int, std::size_t> pieces = piecesOf(labels);
        ASSERT_EQ(piecesOf(roomPolygons(labels)), pieces) << described(labels);
        for (const double tolerance : kTolerances) {
            const std::vector<RoomPolygons> rooms = roomPolygons(labels, tolerance);
            ASSERT_EQ(piecesOf(rooms), pieces) << tolerance << " " << described(labels);
            for (const RoomPolygons& room : rooms) {
                for (const Polygon& piece : room.pieces) ASSERT_GT(areaOf(piece), 0.0);
            }
        }
    }
}

TEST(RoomPolygonsOfRandomImages, DoNotOverlapWithAnyTolerance) {
    for (int seed = 0; seed < 200; ++seed) {
        const cv::Mat labels = randomLabels(seed);
        for (const double tolerance : kTolerances) {
            const std::vector<RoomPolygons> rooms = roomPolygons(labels, tolerance);
            for (int row = 0; row < 2 * labels.rows; ++row) {
                for (int col = 0; col < 2 * labels.cols; ++col) {
                    // Off every line between corners of a lattice this small.
                    const cv::Point2d point(col / 2.0 + 0.2503271, row / 2.0 + 0.2491377);
                    ASSERT_LE(labelsAt(rooms, point).size(), 1U)
                        << tolerance << " " << point << " " << described(labels);
                }
            }
        }
    }
}

TEST(RoomPolygonsOfRandomImages, GiveEachLineToOneRingInEachDirectionAtMost) {
    for (int seed = 0; seed < 400; ++seed) {
        const cv::Mat labels = randomLabels(seed);
        for (const double tolerance : kTolerances) {
            std::set<Line> lines;
            for (const Ring& ring : ringsOf(roomPolygons(labels, tolerance))) {
                ASSERT_EQ(ring.front(), ring.back());
                for (std::size_t i = 1; i < ring.size(); ++i) {
                    const Line line({ring[i - 1].x, ring[i - 1].y}, {ring[i].x, ring[i].y});
                    ASSERT_TRUE(lines.insert(line).second) << tolerance << " " << described(labels);
                }
            }
        }
    }
}

TEST(RoomPolygonsThatFillTheImage, ShareAllLinesAndKeepTheArea) {
    const auto isOnRim = [](const Line& line, const cv::Mat& labels) {
        const auto& [from, to] = line;
        return (from.first == to.first && (to.first == 0 || to.first == labels.cols)) ||
               (from.second == to.second && (to.second == 0 || to.second == labels.rows));
    };
    for (int seed = 0; seed < 300; ++seed) {
        const cv::Mat labels = randomLabels(seed) + 1;
        for (const double tolerance : kTolerances) {
            SCOPED_TRACE(std::to_string(tolerance) + " " + described(labels));
            const std::vector<RoomPolygons> rooms = roomPolygons(labels, tolerance);
            std::set<Line> lines;
            for (const Ring& ring : ringsOf(rooms)) {
                for (std::size_t i = 1; i < ring.size(); ++i) {
                    lines.insert({{ring[i - 1].x, ring[i - 1].y}, {ring[i].x, ring[i].y}});
                }
            }
            for (const Line& line : lines) {
                const bool is_shared = lines.count({line.second, line.first}) == 1;
                ASSERT_NE(is_shared, isOnRim(line, labels));
            }
            double area = 0.0;
            for (const RoomPolygons& room : rooms) area += areaOf(room);
            ASSERT_EQ(area, static_cast<double>(labels.total()));
        }
    }
}

TEST(RoomPolygonsOfRandomImages, LoseCornersToTheTolerance) {
    // Slanted borders without any noise: their steps go, so less than half of the corners remains.
    test::RandomImages random(7);
    const cv::Mat labels = cells(random, {120, 90}, 8, 0.0);
    std::size_t exact = 0;
    std::size_t simplified = 0;
    for (const Ring& ring : ringsOf(roomPolygons(labels))) exact += ring.size();
    for (const Ring& ring : ringsOf(roomPolygons(labels, 1.0))) simplified += ring.size();
    EXPECT_LT(2 * simplified, exact);
}

/// Every room a cross of 5 pixels in a field of 5 x 5; fields touch with nothing between.
cv::Mat manyRooms(int rows, int cols) {
    cv::Mat_<int> labels(5 * rows, 5 * cols, 0);
    for (int row = 0; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            const int label = row * cols + col + 1;
            labels(5 * row + 2, 5 * col + 2) = label;
            for (int i = 0; i < 5; ++i) labels(5 * row + i, 5 * col + 2) = label;
            for (int i = 0; i < 5; ++i) labels(5 * row + 2, 5 * col + i) = label;
        }
    }
    return std::move(labels);
}

TEST(RoomPolygonsOfManyRooms, AreAllThere) {
    const cv::Mat labels = manyRooms(50, 60);
    for (const double tolerance : {0.0, 2.0}) {
        const std::vector<RoomPolygons> rooms = roomPolygons(labels, tolerance);
        ASSERT_EQ(rooms.size(), 3000U);
        EXPECT_TRUE(areValid(rooms));
        for (std::size_t i = 0; i < rooms.size(); ++i) {
            ASSERT_EQ(rooms[i].label, static_cast<int>(i) + 1);
            if (tolerance > 0.0) continue;
            ASSERT_EQ(areaOf(rooms[i]), 9.0);
        }
    }
}

}  // namespace
}  // namespace vorund::rooms
