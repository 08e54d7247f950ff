#include "scale_space/seed_scales.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <opencv2/imgproc.hpp>

#include "internal/require.h"

namespace vorund::internal {
namespace {

constexpr int kBackground = 255;

bool holdsZero(const std::uint8_t* begin, const std::uint8_t* end) {
    return begin < end && std::memchr(begin, 0, static_cast<std::size_t>(end - begin)) != nullptr;
}

/// Calls `visit(row, run, label)` for all runs, in raster order.
template <class Visit>
void visitRuns(const SeedScale& scale, const Visit& visit) {
    for (int row = 0; row < scale.runs.rows(); ++row) {
        for (std::size_t i = scale.runs.rowBegin(row); i < scale.runs.rowBegin(row + 1); ++i) {
            visit(row, scale.runs[i], scale.components.label_of_run[i]);
        }
    }
}

}  // namespace

int SeedScale::labelAt(int row, int col) const {
    std::size_t begin = runs.rowBegin(row);
    std::size_t end = runs.rowBegin(row + 1);
    while (begin < end) {
        const std::size_t middle = begin + (end - begin) / 2;
        if (col >= runs[middle].end) {
            begin = middle + 1;
        } else if (col < runs[middle].begin) {
            end = middle;
        } else {
            return components.label_of_run[middle];
        }
    }
    return 0;
}

void SeedScales::add(double sigma, PixelRuns pixels) {
    RunComponents components = connectRuns(pixels);
    scales_.push_back({sigma, std::move(pixels), std::move(components)});
}

std::map<int, cv::Point> SeedScales::firstPixels(const SeedScale& scale) const {
    std::vector<cv::Point> first(static_cast<std::size_t>(scale.components.count) + 1,
                                 cv::Point(-1, -1));
    visitRuns(scale, [&](int row, const PixelRun& run, int label) {
        cv::Point& pixel = first[static_cast<std::size_t>(label)];
        if (pixel.x >= 0) return;
        const std::uint8_t* const background = background_.ptr<std::uint8_t>(row);
        const std::uint8_t* const open = std::find(background + run.begin, background + run.end, 0);
        if (open != background + run.end)
            pixel = cv::Point(static_cast<int>(open - background), row);
    });
    std::map<int, cv::Point> found;
    for (int label = 1; label <= scale.components.count; ++label) {
        const cv::Point& pixel = first[static_cast<std::size_t>(label)];
        if (pixel.x >= 0) found.emplace(label, pixel);
    }
    return found;
}

bool SeedScales::hasRest(const SeedScale& scale) const {
    for (int row = 0; row < background_.rows; ++row) {
        const std::uint8_t* const background = background_.ptr<std::uint8_t>(row);
        int begin = 0;
        for (std::size_t i = scale.runs.rowBegin(row); i < scale.runs.rowBegin(row + 1); ++i) {
            if (holdsZero(background + begin, background + scale.runs[i].begin)) return true;
            begin = scale.runs[i].end;
        }
        if (holdsZero(background + begin, background + background_.cols)) return true;
    }
    return false;
}

int SeedScales::countValues(const SeedScale& scale) const {
    return static_cast<int>(firstPixels(scale).size()) + (hasRest(scale) ? 1 : 0) +
           (cv::countNonZero(background_) > 0 ? 1 : 0);
}

std::vector<LabelMap> SeedScales::findConsistentGlobalLabels(bool any_number) const {
    require(scales_.size() > 1, "findConsistentGlobalLabels: labels_map_list_in.size() == 1");
    require(countValues(scales_.back()) <= 2,
            "findConsistentGlobalLabels: last_frame_labels.size() > 2");
    std::vector<LabelMap> mappers(scales_.size());
    std::vector<int> coarser_labels;
    ValueTable under;
    int counter = 0;
    for (std::size_t i = scales_.size() - 1; i-- > 0;) {
        const SeedScale& scale = scales_[i];
        std::map<int, cv::Point> first_pixels = firstPixels(scale);
        std::vector<int> labels;
        for (const auto& [label, pixel] : first_pixels) labels.push_back(label);
        // The largest value stands for the background, and goes even where it is a seed.
        if (!labels.empty() && !hasRest(scale)) labels.pop_back();

        mappers[i] = globalLabels(labels, findParents(coarser_labels, under), mappers[i + 1],
                                  counter, any_number);
        if (i == 0) break;
        under.assign(static_cast<std::size_t>(scale.components.count) + 1, 0);
        for (const auto& [label, pixel] : first_pixels) {
            const int finer = scales_[i - 1].labelAt(pixel.y, pixel.x);
            under[static_cast<std::size_t>(label)] =
                finer != 0 ? finer : scales_[i - 1].components.count + 1;
        }
        coarser_labels = std::move(labels);
    }
    printMappers(mappers);
    return mappers;
}

cv::Mat SeedScales::superpose(const std::map<int, ChosenSeed>& seeds) const {
    cv::Mat markers = cv::Mat::zeros(background_.size(), CV_32SC1);
    markers.setTo(kBackground, background_);
    std::map<std::size_t, ValueTable> global_of_label;
    for (const auto& [global, seed] : seeds) {
        if (global == kBackground) continue;
        const auto labels = static_cast<std::size_t>(scales_[seed.scale].components.count) + 1;
        const auto table = global_of_label.emplace(seed.scale, ValueTable(labels, 0)).first;
        table->second[static_cast<std::size_t>(seed.local)] = global;
    }
    for (const auto& [index, table] : global_of_label) {
        visitRuns(scales_[index], [&, &globals = table](int row, const PixelRun& run, int label) {
            const int global = globals[static_cast<std::size_t>(label)];
            if (global == 0) return;
            const std::uint8_t* const background = background_.ptr<std::uint8_t>(row);
            std::int32_t* const marker = markers.ptr<std::int32_t>(row);
            for (int col = run.begin; col < run.end; ++col) {
                if (background[col] != 0) continue;
                marker[col] = marker[col] == 0 ? global : std::min(marker[col], global);
            }
        });
    }
    return markers;
}

cv::Mat SeedScales::seedMap(std::size_t scale) const {
    cv::Mat map = cv::Mat::zeros(background_.size(), CV_8UC1);
    visitRuns(scales_[scale], [&](int row, const PixelRun& run, int label) {
        std::uint8_t* const pixels = map.ptr<std::uint8_t>(row);
        std::fill(pixels + run.begin, pixels + run.end,
                  static_cast<std::uint8_t>(std::min(label, kBackground)));
    });
    map.setTo(kBackground, background_);
    return map;
}

}  // namespace vorund::internal
