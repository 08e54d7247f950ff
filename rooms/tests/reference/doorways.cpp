#include "reference/doorways.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <opencv2/imgproc.hpp>
#include <set>
#include <tuple>
#include <utility>

#include "reference/corridors.h"
#include "reference/cuts.h"
#include "reference/room_graph.h"

namespace vorund::reference {
namespace {

constexpr int kRightAngle = 180;        // [half degrees]
constexpr std::int64_t kOne = 1 << 20;  // Sines and cosines are whole multiples of 1 / kOne.
constexpr int kNarrowest = 10;          // 0.5 m. [pixels]
constexpr int kThickest = 10;           // 0.5 m.
constexpr int kHalfThick = 7;           // 0.35 m.
constexpr int kInLine = 60;             // 3 m.
constexpr int kFarthest = 20;           // 1 m.
constexpr int kGoesOn = 6;              // 0.3 m.
constexpr int kApart = 8;               // 0.4 m.
constexpr int kLeastPiece = 20 * 20;    // 1 m^2.

int pixelsOf(double metres) {
    return static_cast<int>(std::lround(metres / 0.05));
}

bool isFloor(const cv::Mat& floor, int row, int col) {
    return row >= 0 && row < floor.rows && col >= 0 && col < floor.cols &&
           floor.at<std::uint8_t>(row, col) != 0;
}

std::int64_t cosineOf(int half_degrees) {
    return std::llround(std::cos(half_degrees * CV_PI / 360.0) * static_cast<double>(kOne));
}

std::int64_t sineOf(int half_degrees) {
    return std::llround(std::sin(half_degrees * CV_PI / 360.0) * static_cast<double>(kOne));
}

// Directions of walls.

/// The nearest half degree from the x axis, clockwise, modulo 90 degrees.
std::size_t halfDegreeOf(int x, int y) {
    for (int quarter = 0; quarter < 4 && (x <= 0 || y < 0); ++quarter) {
        std::swap(x, y);
        y = -y;
    }
    const auto angle = std::lround(std::atan2(y, x) * 360.0 / CV_PI);
    return static_cast<std::size_t>(angle % kRightAngle);
}

using Histogram = std::array<std::int64_t, kRightAngle>;

std::size_t wrapped(int angle) {
    return static_cast<std::size_t>((angle + kRightAngle) % kRightAngle);
}

/// The squared lengths of the outlines' straight sides of 1 m and more by their directions, spread
/// over 2 degrees either way.
Histogram sideDirections(const cv::Mat& floor) {
    std::vector<std::vector<cv::Point>> outlines;
    cv::findContours(floor, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    Histogram sharp{};
    for (const auto& outline : outlines) {
        std::vector<cv::Point> polygon;
        cv::approxPolyDP(outline, polygon, 3.0, true);
        polygon.push_back(polygon.front());
        for (std::size_t i = 1; i < polygon.size(); ++i) {
            const int x = polygon[i].x - polygon[i - 1].x;
            const int y = polygon[i].y - polygon[i - 1].y;
            if (std::hypot(x, y) >= 20.0) sharp[halfDegreeOf(x, y)] += x * x + y * y;
        }
    }
    Histogram spread{};
    for (int angle = 0; angle < kRightAngle; ++angle) {
        for (int off = -3; off <= 3; ++off) {
            spread[wrapped(angle + off)] += sharp[wrapped(angle)] * (4 - std::abs(off));
        }
    }
    return spread;
}

// The map in one direction.

/// A map turned, perhaps, and flipped at its diagonal, perhaps, so that its rows run along walls.
struct View {
    cv::Mat floor;
    std::size_t turned;
    bool upright;
    std::int64_t cosine;
    std::int64_t sine;
    cv::Point center;
    cv::Point map_center;

    cv::Point toMap(int row, int col) const {
        const cv::Point pixel = upright ? cv::Point(row, col) : cv::Point(col, row);
        if (sine == 0) return pixel;
        const std::int64_t x = pixel.x - center.x;
        const std::int64_t y = pixel.y - center.y;
        const auto rounded = [](std::int64_t value) {
            const double pixels = static_cast<double>(value) / static_cast<double>(kOne);
            return static_cast<int>(std::floor(pixels + 0.5));
        };
        return map_center +
               cv::Point(rounded(x * cosine - y * sine), rounded(x * sine + y * cosine));
    }
};

View viewOf(const cv::Mat& floor, std::size_t turned, int half_degrees, bool upright) {
    View view{floor.clone(),
              turned,
              upright,
              cosineOf(half_degrees),
              sineOf(half_degrees),
              {},
              {floor.cols / 2, floor.rows / 2}};
    if (half_degrees == 0) {
        if (upright) view.floor = floor.t();
        return view;
    }
    const int side = floor.rows + floor.cols + 4;  // More than the map has in any direction.
    view.center = {side / 2, side / 2};
    view.floor = cv::Mat::zeros(side, side, CV_8UC1);
    for (int row = 0; row < side; ++row) {
        for (int col = 0; col < side; ++col) {
            const cv::Point pixel = view.toMap(row, col);
            if (isFloor(floor, pixel.y, pixel.x)) view.floor.at<std::uint8_t>(row, col) = 255;
        }
    }
    return view;
}

// Gaps in the walls along the rows of a view.

struct Gap {
    int row;
    int begin;
    int end;  // One past its last pixel.
    int wall_left = 0;
    int wall_right = 0;

    int width() const { return end - begin; }
};

/// The floor of a row around a pixel of it.
Gap floorAcross(const cv::Mat& floor, int row, int col) {
    Gap floor_run{row, col, col};
    while (isFloor(floor, row, floor_run.begin - 1)) --floor_run.begin;
    while (isFloor(floor, row, floor_run.end)) ++floor_run.end;
    return floor_run;
}

/// The widest floor of a row that reaches into the columns; 0 if none does.
int widestAcross(const cv::Mat& floor, int row, int begin, int end) {
    int widest = 0;
    for (int col = begin; col < end; ++col) {
        if (isFloor(floor, row, col)) {
            widest = std::max(widest, floorAcross(floor, row, col).width());
        }
    }
    return widest;
}

/// How many rows on the floor ahead of a gap's middle half is much wider than the gap; nothing if
/// it is not within the thickness of a wall, or if wall is in the way.
int rowsUntilWider(const cv::Mat& floor, const Gap& gap, int step) {
    const int quarter = gap.width() / 4;
    for (int rows = 1; rows <= kThickest; ++rows) {
        const int width =
            widestAcross(floor, gap.row + step * rows, gap.begin + quarter, gap.end - quarter);
        if (width == 0) break;
        if (100 * gap.width() <= 85 * width) return rows;
    }
    return 0;
}

std::vector<Gap> openingsOf(const cv::Mat& floor, int widest) {
    std::vector<Gap> openings;
    for (int row = 0; row < floor.rows; ++row) {
        for (int col = 1; col < floor.cols; ++col) {
            if (!isFloor(floor, row, col) || isFloor(floor, row, col - 1)) continue;
            const Gap gap = floorAcross(floor, row, col);
            if (gap.width() < kNarrowest || gap.width() > widest || gap.end == floor.cols) continue;
            const int up = rowsUntilWider(floor, gap, -1);
            const int down = rowsUntilWider(floor, gap, 1);
            if (up > 0 && down > 0 && up + down - 1 <= kThickest) openings.push_back(gap);
        }
    }
    return openings;
}

bool continues(const Gap& a, const Gap& b) {
    return std::abs(a.row - b.row) == 1 && a.begin < b.end && b.begin < a.end;
}

/// Takes those out that continue the first from row to row, and it.
std::vector<Gap> takeOneThrough(std::vector<Gap>& openings) {
    std::vector<Gap> through{openings.back()};
    openings.pop_back();
    for (std::size_t next = 0; next < through.size(); ++next) {
        const Gap gap = through[next];
        const auto rest = std::partition(openings.begin(), openings.end(),
                                         [&](const Gap& other) { return !continues(gap, other); });
        through.insert(through.end(), rest, openings.end());
        openings.erase(rest, openings.end());
    }
    return through;
}

/// Of those that are the narrowest but for a pixel, that nearest to the middle row.
Gap narrowestInTheMiddle(const std::vector<Gap>& through) {
    int narrowest = through.front().width();
    int rows = 0;
    for (const Gap& gap : through) {
        narrowest = std::min(narrowest, gap.width());
        rows += gap.row;
    }
    const auto count = static_cast<int>(through.size());
    std::map<std::tuple<int, int, int>, Gap> by_order;
    for (const Gap& gap : through) {
        if (gap.width() > narrowest + 1) continue;
        by_order.emplace(std::make_tuple(std::abs(gap.row * count - rows), gap.row, gap.begin),
                         gap);
    }
    return by_order.begin()->second;
}

bool isSeenEdgeOn(const cv::Mat& floor, int row, int col) {
    if (row < 0 || row >= floor.rows || isFloor(floor, row, col)) return false;
    bool above = false;
    bool below = false;
    for (int off = 1; off <= kHalfThick; ++off) {
        above |= isFloor(floor, row - off, col);
        below |= isFloor(floor, row + off, col);
    }
    return above && below;
}

/// How many pixels of wall, edge on, follow each other from an end of the gap.
int jambAt(const cv::Mat& floor, const Gap& gap, int step) {
    int col = step < 0 ? gap.begin - 1 : gap.end;
    int length = 0;
    for (; col >= 0 && col < floor.cols && isSeenEdgeOn(floor, gap.row, col); col += step) {
        ++length;
    }
    return length;
}

int wallInLine(const cv::Mat& floor, const Gap& gap, int step) {
    const int first = step < 0 ? gap.begin - 1 : gap.end;
    int columns = 0;
    for (int i = 0; i < kInLine; ++i) {
        const int col = first + step * i;
        if (col < 0 || col >= floor.cols) break;
        bool wall = false;
        for (int row = gap.row - 1; row <= gap.row + 1; ++row) {
            wall |= isSeenEdgeOn(floor, row, col);
        }
        if (wall) ++columns;
    }
    return columns;
}

std::vector<Gap> gapsIn(const cv::Mat& floor, const rooms::RoomsConfig& config) {
    std::vector<Gap> gaps;
    std::vector<Gap> openings = openingsOf(floor, pixelsOf(config.widest_doorway));
    while (!openings.empty()) {
        Gap gap = narrowestInTheMiddle(takeOneThrough(openings));
        const int jamb = std::max(jambAt(floor, gap, -1), jambAt(floor, gap, 1));
        gap.wall_left = wallInLine(floor, gap, -1);
        gap.wall_right = wallInLine(floor, gap, 1);
        const bool has_wall = 2 * (gap.wall_left + gap.wall_right) >= gap.width();
        if (jamb >= pixelsOf(config.jamb) && has_wall) gaps.push_back(gap);
    }
    return gaps;
}

// Doorways among the gaps of all views.

struct Candidate {
    PlainDoorway doorway;
    Gap gap;
    std::size_t view;
};

bool isSamePlace(const PlainDoorway& a, const PlainDoorway& b) {
    const double x = (a.first_jamb.x + a.second_jamb.x - b.first_jamb.x - b.second_jamb.x) / 2.0;
    const double y = (a.first_jamb.y + a.second_jamb.y - b.first_jamb.y - b.second_jamb.y) / 2.0;
    const double apart = std::max<double>(kApart, std::min(a.width, b.width) / 2.0);
    return x * x + y * y < apart * apart;
}

std::vector<Candidate> candidatesIn(const std::vector<View>& views,
                                    const rooms::RoomsConfig& config) {
    std::map<std::tuple<int, std::size_t, int, int>, Candidate> by_width;
    for (std::size_t i = 0; i < views.size(); ++i) {
        for (const Gap& gap : gapsIn(views[i].floor, config)) {
            const PlainDoorway doorway{views[i].toMap(gap.row, gap.begin - 1),
                                       views[i].toMap(gap.row, gap.end), gap.width(),
                                       gap.wall_left + gap.wall_right};
            by_width[{gap.width(), i, gap.row, gap.begin}] = {doorway, gap, i};
        }
    }
    std::vector<Candidate> candidates;
    for (const auto& [order, candidate] : by_width) {
        bool is_new = true;
        for (const Candidate& other : candidates) {
            if (isSamePlace(candidate.doorway, other.doorway)) is_new = false;
        }
        if (is_new) candidates.push_back(candidate);
    }
    return candidates;
}

/// Walls up the gaps of a view and of its flipped one.
void closeGaps(std::vector<View>& views, const std::vector<Candidate>& candidates) {
    for (const Candidate& candidate : candidates) {
        const Gap& gap = candidate.gap;
        for (View& view : views) {
            if (view.turned != views[candidate.view].turned) continue;
            const bool flipped = view.upright != views[candidate.view].upright;
            for (int col = gap.begin; col < gap.end; ++col) {
                view.floor.at<std::uint8_t>(flipped ? cv::Point(gap.row, col)
                                                    : cv::Point(col, gap.row)) = 0;
            }
        }
    }
}

/// The widest floor straight ahead of the gap from the second row on, up to where wall ends it.
int widthBeside(const cv::Mat& floor, const Gap& gap, int step) {
    int widest = 0;
    for (int off = 2; off <= kFarthest; ++off) {
        const int width = widestAcross(floor, gap.row + step * off, gap.begin, gap.end);
        if (width == 0) break;
        widest = std::max(widest, width);
    }
    return widest;
}

bool leadsSomewhere(const cv::Mat& floor, const Gap& gap) {
    const auto [narrower, wider] =
        std::minmax({widthBeside(floor, gap, -1), widthBeside(floor, gap, 1)});
    if (100 * gap.width() > 85 * narrower) return false;
    const bool has_both_jambs = gap.wall_left >= kGoesOn && gap.wall_right >= kGoesOn;
    return has_both_jambs || 100 * gap.width() <= 20 * wider;
}

// Gaps in the walls of corridors.

struct Opening {
    PlainCorridorGap gap;
    std::size_t view;

    int width() const { return gap.right.x - gap.left.x - 1; }
};

/// Of a view, without those that lie across a longer corridor of the flipped one.
std::vector<Opening> openingsBesideCorridors(const std::vector<View>& views, std::size_t own,
                                             std::size_t flipped) {
    std::vector<Opening> openings;
    const std::vector<PlainCorridor> others = corridorsAlongRows(views[flipped].floor);
    for (const PlainCorridor& corridor : corridorsAlongRows(views[own].floor)) {
        for (const PlainCorridorGap& gap : gapsInWalls(corridor, views[own].floor)) {
            const cv::Point middle((gap.left.y + gap.right.y) / 2, (gap.left.x + gap.right.x) / 2);
            bool is_across = false;
            for (const PlainCorridor& other : others) {
                if (other.firsts.size() > corridor.firsts.size() && isInCorridor(other, middle)) {
                    is_across = true;
                }
            }
            if (!is_across) openings.push_back({gap, own});
        }
    }
    return openings;
}

void closeOpenings(std::vector<View>& views, const std::vector<Opening>& openings) {
    for (const Opening& opening : openings) {
        for (const cv::Point& pixel : pixelsBetween(opening.gap.left, opening.gap.right)) {
            for (View& view : views) {
                if (view.turned != views[opening.view].turned) continue;
                const bool flipped = view.upright != views[opening.view].upright;
                view.floor.at<std::uint8_t>(flipped ? cv::Point(pixel.y, pixel.x) : pixel) = 0;
            }
        }
    }
}

bool leadsIntoWiderSpace(const cv::Mat& floor, const Opening& opening) {
    const PlainCorridorGap& gap = opening.gap;
    const int outer =
        gap.outward < 0 ? std::min(gap.left.y, gap.right.y) : std::max(gap.left.y, gap.right.y);
    const Gap across{outer, gap.left.x + 1, gap.right.x};
    return 100 * opening.width() <= 95 * widthBeside(floor, across, gap.outward);
}

void addOpenings(const std::vector<View>& views, const std::vector<Opening>& openings,
                 std::vector<PlainDoorway>& doorways) {
    const std::vector<PlainDoorway> before = doorways;
    for (const Opening& opening : openings) {
        const View& view = views[opening.view];
        if (!leadsIntoWiderSpace(view.floor, opening)) continue;
        const PlainDoorway doorway{view.toMap(opening.gap.left.y, opening.gap.left.x),
                                   view.toMap(opening.gap.right.y, opening.gap.right.x),
                                   opening.width(), opening.gap.wall};
        bool is_new = true;
        for (const PlainDoorway& other : before) is_new = is_new && !isSamePlace(doorway, other);
        if (is_new) doorways.push_back(doorway);
    }
}

// Parting regions.

/// The 4-connected pieces of what is not 0, by their first pixels in reading order.
std::vector<std::vector<cv::Point>> piecesOf(const cv::Mat& mask) {
    cv::Mat left = mask.clone();
    std::vector<std::vector<cv::Point>> pieces;
    for (int row = 0; row < left.rows; ++row) {
        for (int col = 0; col < left.cols; ++col) {
            if (!isFloor(left, row, col)) continue;
            std::vector<cv::Point> piece{{col, row}};
            left.at<std::uint8_t>(row, col) = 0;
            for (std::size_t next = 0; next < piece.size(); ++next) {
                for (const cv::Point& step : {cv::Point(0, -1), {-1, 0}, {1, 0}, {0, 1}}) {
                    const cv::Point beside = piece[next] + step;
                    if (!isFloor(left, beside.y, beside.x)) continue;
                    left.at<std::uint8_t>(beside) = 0;
                    piece.push_back(beside);
                }
            }
            pieces.push_back(piece);
        }
    }
    return pieces;
}

int smallestBeside(const cv::Mat& labels, const cv::Point& pixel, const std::set<int>& of) {
    std::set<int> beside;
    for (const cv::Point& step : {cv::Point(0, -1), {-1, 0}, {1, 0}, {0, 1}}) {
        const cv::Point other = pixel + step;
        if (!cv::Rect({0, 0}, labels.size()).contains(other)) continue;
        if (of.count(labels.at<int>(other)) > 0) beside.insert(labels.at<int>(other));
    }
    return beside.empty() ? 0 : *beside.begin();
}

/// Parts one region. Its pixels of doorways, and its small pieces, are 0 until they are given out.
void split(cv::Mat& labels, int label, const cv::Mat& in_doorway, int& next_label) {
    const cv::Mat region = labels == label;
    const cv::Mat parted = region & ~in_doorway;
    const std::vector<std::vector<cv::Point>> pieces = piecesOf(parted);
    std::size_t largest = 0;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (pieces[i].size() > pieces[largest].size()) largest = i;
    }
    labels.setTo(0, region);
    std::set<int> names;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (i != largest && pieces[i].size() < kLeastPiece) continue;
        const int name = i == largest ? label : next_label++;
        names.insert(name);
        for (const cv::Point& pixel : pieces[i]) labels.at<int>(pixel) = name;
    }
    for (bool changed = true; changed;) {
        changed = false;
        const cv::Mat before = labels.clone();
        for (int row = 0; row < labels.rows; ++row) {
            for (int col = 0; col < labels.cols; ++col) {
                if (!isFloor(region, row, col) || before.at<int>(row, col) != 0) continue;
                labels.at<int>(row, col) = smallestBeside(before, {col, row}, names);
                changed = changed || labels.at<int>(row, col) != 0;
            }
        }
    }
    labels.setTo(label, region & (labels == 0));  // Other regions lie between it and the pieces.
}

/// Whether on either side of a doorway a large piece of the region lies beside it.
bool parts(const PlainDoorway& doorway, const cv::Mat& floor, const cv::Mat& labels, int label,
           const cv::Mat& in_doorway) {
    const cv::Mat parted = (labels == label) & ~in_doorway;
    const cv::Point along = doorway.second_jamb - doorway.first_jamb;
    std::set<int> sides;
    for (const std::vector<cv::Point>& piece : piecesOf(parted)) {
        if (piece.size() < kLeastPiece) continue;
        cv::Mat large = cv::Mat::zeros(labels.size(), CV_8UC1);
        for (const cv::Point& pixel : piece) large.at<std::uint8_t>(pixel) = 255;
        for (const cv::Point& pixel : floorIn(doorway, floor)) {
            if (labels.at<int>(pixel) != label) continue;
            for (const cv::Point& step : {cv::Point(0, 1), {0, -1}, {1, 0}, {-1, 0}}) {
                const cv::Point beside = pixel + step;
                if (!isFloor(large, beside.y, beside.x)) continue;
                const double side = along.cross(beside - doorway.first_jamb);
                if (side != 0.0) sides.insert(side < 0.0 ? -1 : 1);
            }
        }
    }
    return sides.size() == 2;
}

}  // namespace

std::vector<int> wallDirections(const cv::Mat& floor) {
    if (floor.empty()) return {0};
    Histogram edges = sideDirections(floor);
    std::vector<int> directions;
    std::int64_t most = 0;
    while (directions.size() < 2) {
        const auto peak =
            static_cast<int>(std::max_element(edges.begin(), edges.end()) - edges.begin());
        const std::int64_t here = edges[wrapped(peak)];
        if (directions.empty()) {
            most = here;
        } else if (10 * here <= 3 * most) {
            break;
        }
        const int turn = peak > kRightAngle / 2 ? peak - kRightAngle : peak;
        directions.push_back(std::abs(turn) < 3 ? 0 : turn);
        for (int off = -16; off <= 16; ++off) edges[wrapped(peak + off)] = 0;
    }
    return directions;
}

std::vector<PlainDoorway> findDoorways(const cv::Mat& floor, const rooms::RoomsConfig& config) {
    std::vector<View> views;
    const std::vector<int> directions = wallDirections(floor);
    for (std::size_t i = 0; i < directions.size(); ++i) {
        for (const bool upright : {false, true}) {
            views.push_back(viewOf(floor, i, directions[i], upright));
        }
    }
    const std::vector<View> open_views = views;
    for (View& view : views) view.floor = view.floor.clone();
    const std::vector<Candidate> candidates = candidatesIn(views, config);
    closeGaps(views, candidates);
    std::vector<PlainDoorway> doorways;
    for (const Candidate& candidate : candidates) {
        if (leadsSomewhere(views[candidate.view].floor, candidate.gap)) {
            doorways.push_back(candidate.doorway);
        }
    }
    for (std::size_t i = 0; config.corridors && i < views.size(); i += 2) {
        std::vector<Opening> openings = openingsBesideCorridors(open_views, i, i + 1);
        for (const Opening& opening : openingsBesideCorridors(open_views, i + 1, i)) {
            openings.push_back(opening);
        }
        closeOpenings(views, openings);
        addOpenings(views, openings, doorways);
    }
    return doorways;
}

std::vector<cv::Point> floorIn(const PlainDoorway& doorway, const cv::Mat& floor) {
    std::vector<cv::Point> pixels;
    for (const cv::Point& pixel : pixelsBetween(doorway.first_jamb, doorway.second_jamb)) {
        if (isFloor(floor, pixel.y, pixel.x)) pixels.push_back(pixel);
    }
    return pixels;
}

void splitAtDoorways(cv::Mat& labels, const cv::Mat& floor,
                     const std::vector<PlainDoorway>& doorways) {
    cv::Mat in_doorway = cv::Mat::zeros(labels.size(), CV_8UC1);
    std::set<int> crossed;
    int next_label = kLine;
    for (const int label : cv::Mat_<int>(labels)) next_label = std::max(next_label, label);
    ++next_label;
    for (const PlainDoorway& doorway : doorways) {
        for (const cv::Point& pixel : floorIn(doorway, floor)) {
            in_doorway.at<std::uint8_t>(pixel) = 255;
            crossed.insert(labels.at<int>(pixel));
        }
    }
    std::set<int> parted;
    for (const int label : crossed) {
        if (label == 0 || label == kLine) continue;
        for (const PlainDoorway& doorway : doorways) {
            if (parts(doorway, floor, labels, label, in_doorway)) parted.insert(label);
        }
    }
    for (const int label : parted) split(labels, label, in_doorway, next_label);
}

}  // namespace vorund::reference
