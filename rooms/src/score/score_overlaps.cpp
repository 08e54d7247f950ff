#include "score/score_overlaps.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

namespace vorund::rooms {
namespace {

/// Labels in raster order, a colour packed into one number.
template <class T>
std::vector<std::int64_t> packed(const cv::Mat& labels) {
    const int channels = labels.channels();
    const int colours = std::min(channels, 3);
    std::vector<std::int64_t> all;
    all.reserve(labels.total());
    for (int row = 0; row < labels.rows; ++row) {
        const T* pixel = labels.ptr<T>(row);
        for (int col = 0; col < labels.cols; ++col, pixel += channels) {
            std::int64_t label = 0;
            for (int i = colours; i-- > 0;) label = label * 65536 + pixel[i];
            all.push_back(label);
        }
    }
    return all;
}

std::vector<std::int64_t> packedByType(const cv::Mat& labels, const char* what) {
    if (labels.type() == CV_32SC1) return packed<std::int32_t>(labels);
    const int channels = labels.channels();
    if (channels == 1 || channels == 3 || channels == 4) {
        if (labels.depth() == CV_8U) return packed<std::uint8_t>(labels);
        if (labels.depth() == CV_16U) return packed<std::uint16_t>(labels);
    }
    throw std::invalid_argument(std::string(what) +
                                ": a label image has 8 or 16 bits and 1, 3 or 4 channels, or is "
                                "CV_32SC1");
}

/// The labels present, ascending.
std::vector<std::int64_t> distinct(const std::vector<std::int64_t>& all) {
    std::vector<std::int64_t> labels;
    for (const std::int64_t label : all) {
        if (labels.empty() || label != labels.back()) labels.push_back(label);  // Once a run.
    }
    std::sort(labels.begin(), labels.end());
    labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
    return labels;
}

/// Areas by number.
std::vector<int> countAreas(const NumberedRooms& rooms, const cv::Mat& counted) {
    std::vector<int> areas(static_cast<std::size_t>(rooms.count) + 1, 0);
    for (int row = 0; row < counted.rows; ++row) {
        const int* const numbers = rooms.numbers.ptr<int>(row);
        const std::uint8_t* const counts = counted.ptr<std::uint8_t>(row);
        for (int col = 0; col < counted.cols; ++col) {
            if (counts[col] != 0) ++areas[static_cast<std::size_t>(numbers[col])];
        }
    }
    return areas;
}

/// The index of each number's room, -1 where it does not count; areas and numbers go by index.
std::vector<int> indicesOf(const std::vector<int>& areas, int least_area,
                           std::vector<double>& kept_areas, std::vector<int>& kept_numbers) {
    std::vector<int> indices(areas.size(), -1);
    for (std::size_t number = 1; number < areas.size(); ++number) {
        if (areas[number] < least_area) continue;
        indices[number] = static_cast<int>(kept_areas.size());
        kept_areas.push_back(areas[number]);
        kept_numbers.push_back(static_cast<int>(number));
    }
    return indices;
}

using NumberPair = std::pair<int, int>;

/// Common pixels by the numbers of both sides, that of no room included.
std::map<NumberPair, int> countPairs(const cv::Mat& truth, const cv::Mat& segments,
                                     const cv::Mat& counted) {
    std::map<NumberPair, int> pairs;
    auto current = pairs.end();
    for (int row = 0; row < counted.rows; ++row) {
        const int* const numbers = truth.ptr<int>(row);
        const int* const others = segments.ptr<int>(row);
        const std::uint8_t* const counts = counted.ptr<std::uint8_t>(row);
        for (int col = 0; col < counted.cols; ++col) {
            if (counts[col] == 0) continue;
            const NumberPair pair{numbers[col], others[col]};
            if (current == pairs.end() || current->first != pair) {
                current = pairs.emplace(pair, 0).first;
            }
            ++current->second;
        }
    }
    return pairs;
}

void improve(Partner& partner, int index, double pixels) {
    if (pixels > partner.pixels) partner = {index, pixels};
}

}  // namespace

NumberedRooms numberRooms(const cv::Mat& labels, const char* what, std::optional<int> no_room) {
    const std::vector<std::int64_t> all = packedByType(labels, what);
    std::vector<std::int64_t> rooms = distinct(all);
    if (!rooms.empty() && rooms.front() < 0) {
        throw std::invalid_argument(std::string(what) + ": negative label " +
                                    std::to_string(rooms.front()));
    }
    rooms.erase(std::remove_if(rooms.begin(), rooms.end(),
                               [&](std::int64_t label) { return label == 0 || label == no_room; }),
                rooms.end());

    NumberedRooms numbered{cv::Mat(labels.size(), CV_32SC1), static_cast<int>(rooms.size()), {}};
    std::int64_t last = 0;
    int number = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (all[i] != last) {
            last = all[i];
            const auto found = std::lower_bound(rooms.begin(), rooms.end(), last);
            const bool is_room = found != rooms.end() && *found == last;
            number = is_room ? static_cast<int>(found - rooms.begin()) + 1 : 0;
        }
        numbered.numbers.ptr<int>()[i] = number;  // A new image has no gaps between its rows.
    }
    numbered.labels = std::move(rooms);
    return numbered;
}

Overlaps countOverlaps(const NumberedRooms& truth, const NumberedRooms& segments,
                       const cv::Mat& counted, const LeastAreas& least) {
    Overlaps overlaps;
    const std::vector<int> truth_indices = indicesOf(countAreas(truth, counted), least.truth,
                                                     overlaps.truth_areas, overlaps.truth_numbers);
    const std::vector<int> segment_indices =
        indicesOf(countAreas(segments, counted), least.segment, overlaps.segment_areas,
                  overlaps.segment_numbers);
    for (const auto& [numbers, pixels] : countPairs(truth.numbers, segments.numbers, counted)) {
        const int i = truth_indices[static_cast<std::size_t>(numbers.first)];
        const int j = segment_indices[static_cast<std::size_t>(numbers.second)];
        if (i >= 0 && j >= 0) overlaps.pairs.push_back({i, j, static_cast<double>(pixels)});
    }
    return overlaps;
}

std::vector<Partner> partnersOfTruth(const Overlaps& overlaps) {
    std::vector<Partner> partners(overlaps.truth_areas.size());
    for (const Overlap& pair : overlaps.pairs) {
        improve(partners[static_cast<std::size_t>(pair.truth)], pair.segment, pair.pixels);
    }
    return partners;
}

std::vector<Partner> partnersOfSegments(const Overlaps& overlaps) {
    std::vector<Partner> partners(overlaps.segment_areas.size());
    for (const Overlap& pair : overlaps.pairs) {
        improve(partners[static_cast<std::size_t>(pair.segment)], pair.truth, pair.pixels);
    }
    return partners;
}

}  // namespace vorund::rooms
