#include "score/score_figures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace vorund::rooms {
namespace {

constexpr double kFound = 0.5;
constexpr double kFoundWell = 0.75;

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

double sum(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

double mean(const std::vector<double>& values) {
    return ratio(sum(values), static_cast<double>(values.size()));
}

/// The mean of one value for each room, weighted with the rooms' areas.
double weightedMean(const std::vector<double>& values, const std::vector<double>& areas) {
    return ratio(std::inner_product(values.begin(), values.end(), areas.begin(), 0.0), sum(areas));
}

/// Of each room, the share that its partner covers, and over all rooms together.
struct Shares {
    double by_room = 0.0;
    double by_pixel = 0.0;
};

Shares sharesOf(const std::vector<Partner>& partners, const std::vector<double>& areas) {
    std::vector<double> shares;
    double shared = 0.0;
    for (std::size_t i = 0; i < areas.size(); ++i) {
        shares.push_back(partners[i].pixels / areas[i]);
        shared += partners[i].pixels;
    }
    return {mean(shares), ratio(shared, sum(areas))};
}

/// Matthews' correlation of a true room and a predicted one.
double correlation(const Overlap& pair, const Overlaps& overlaps, double all_pixels) {
    const double tp = pair.pixels;
    const double fp = overlaps.segment_areas[at(pair.segment)] - tp;
    const double fn = overlaps.truth_areas[at(pair.truth)] - tp;
    const double tn = all_pixels - tp - fp - fn;
    const double product = (tp + fp) * (tp + fn) * (tn + fp) * (tn + fn);
    return product > 0.0 ? (tp * tn - fp * fn) / std::sqrt(product) : 0.0;
}

double meanCorrelation(const Overlaps& overlaps, double all_pixels) {
    const std::vector<Partner> partners = partnersOfTruth(overlaps);
    std::vector<double> correlations;
    for (std::size_t i = 0; i < partners.size(); ++i) {
        const Overlap pair{static_cast<int>(i), partners[i].index, partners[i].pixels};
        correlations.push_back(pair.segment < 0 ? 0.0 : correlation(pair, overlaps, all_pixels));
    }
    return mean(correlations);
}

/// Pairs in which each room stands once: the largest overlaps, one after the other.
std::vector<Overlap> oneToOne(const Overlaps& overlaps) {
    std::vector<Overlap> by_size = overlaps.pairs;
    // Stable: equal overlaps stay in the order of their rooms.
    std::stable_sort(by_size.begin(), by_size.end(),
                     [](const Overlap& a, const Overlap& b) { return a.pixels > b.pixels; });
    std::vector<bool> truth_used(overlaps.truth_areas.size(), false);
    std::vector<bool> segment_used(overlaps.segment_areas.size(), false);
    std::vector<Overlap> pairs;
    for (const Overlap& pair : by_size) {
        if (truth_used[at(pair.truth)] || segment_used[at(pair.segment)]) continue;
        truth_used[at(pair.truth)] = true;
        segment_used[at(pair.segment)] = true;
        pairs.push_back(pair);
    }
    return pairs;
}

double meanOneToOneCorrelation(const Overlaps& overlaps, double all_pixels) {
    const std::vector<Overlap> pairs = oneToOne(overlaps);
    double total = 0.0;
    for (const Overlap& pair : pairs) total += correlation(pair, overlaps, all_pixels);
    // Each pair uses up one room of either side.
    const std::size_t rooms = overlaps.truth_areas.size() + overlaps.segment_areas.size();
    return total / static_cast<double>(rooms - pairs.size());
}

void addPartnerIous(const Overlaps& overlaps, Score& score) {
    const std::vector<Partner> segments = partnersOfTruth(overlaps);
    const std::vector<Partner> truths = partnersOfSegments(overlaps);
    std::vector<double> truth_ious(segments.size(), 0.0);
    std::vector<double> segment_ious(truths.size(), 0.0);
    for (const Overlap& pair : overlaps.pairs) {
        if (segments[at(pair.truth)].index == pair.segment) {
            truth_ious[at(pair.truth)] = intersectionOverUnion(pair, overlaps);
        }
        if (truths[at(pair.segment)].index == pair.truth) {
            segment_ious[at(pair.segment)] = intersectionOverUnion(pair, overlaps);
        }
    }
    score.iou_gt = mean(truth_ious);
    score.iou_seg = mean(segment_ious);
    score.iou_gt_px = weightedMean(truth_ious, overlaps.truth_areas);
    score.iou_seg_px = weightedMean(segment_ious, overlaps.segment_areas);
}

/// Of each true room, the highest IoU with any predicted one.
std::vector<double> highestIous(const Overlaps& overlaps) {
    std::vector<double> highest(overlaps.truth_areas.size(), 0.0);
    for (const Overlap& pair : overlaps.pairs) {
        double& value = highest[at(pair.truth)];
        value = std::max(value, intersectionOverUnion(pair, overlaps));
    }
    return highest;
}

double f1(double found, double n_gt, double n_pred) {
    const double precision = ratio(found, n_pred);
    const double recall = ratio(found, n_gt);
    return ratio(2.0 * precision * recall, precision + recall);
}

void addFound(const Overlaps& overlaps, Score& score) {
    int found = 0;
    int found_well = 0;
    double quality = 0.0;
    for (const double highest : highestIous(overlaps)) {
        if (highest > kFoundWell) ++found_well;
        if (highest > kFound) {
            ++found;
            quality += highest;
        }
    }
    score.f1_50 = f1(found, score.n_gt, score.n_pred);
    score.f1_75 = f1(found_well, score.n_gt, score.n_pred);
    score.pq = ratio(quality, (score.n_gt + score.n_pred) / 2.0);
}

void addCounts(const Overlaps& overlaps, Score& score) {
    std::vector<int> pieces(overlaps.truth_areas.size(), 0);
    std::vector<int> merged(overlaps.segment_areas.size(), 0);
    for (const Overlap& pair : overlaps.pairs) {
        const double share = pair.pixels / overlaps.truth_areas[at(pair.truth)];
        if (share >= kPieceShare) ++pieces[at(pair.truth)];
        if (share >= kMergedShare) ++merged[at(pair.segment)];
    }
    for (const int count : pieces) score.over += count >= 2 ? 1 : 0;
    for (const int count : merged) {
        score.under += count >= 2 ? 1 : 0;
        score.merged_gt += count >= 2 ? count : 0;
    }
}

}  // namespace

double intersectionOverUnion(const Overlap& pair, const Overlaps& overlaps) {
    const double both =
        overlaps.truth_areas[at(pair.truth)] + overlaps.segment_areas[at(pair.segment)];
    return pair.pixels / (both - pair.pixels);
}

double ratio(double part, double whole) {
    return whole == 0.0 ? 0.0 : part / whole;
}

void addShares(const Overlaps& overlaps, Score& score) {
    const Shares truth = sharesOf(partnersOfTruth(overlaps), overlaps.truth_areas);
    const Shares segments = sharesOf(partnersOfSegments(overlaps), overlaps.segment_areas);
    score.recall = truth.by_room;
    score.recall_px = truth.by_pixel;
    score.precision = segments.by_room;
    score.precision_px = segments.by_pixel;
}

void addFigures(const Overlaps& overlaps, double all_pixels, Score& score) {
    score.n_gt = static_cast<int>(overlaps.truth_areas.size());
    score.n_pred = static_cast<int>(overlaps.segment_areas.size());
    addShares(overlaps, score);
    score.mcc = meanCorrelation(overlaps, all_pixels);
    score.mcc_1to1 = meanOneToOneCorrelation(overlaps, all_pixels);
    addPartnerIous(overlaps, score);
    addFound(overlaps, score);
    addCounts(overlaps, score);
}

}  // namespace vorund::rooms
