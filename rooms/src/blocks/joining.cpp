#include "blocks/joining.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <numeric>
#include <utility>

namespace vorund::rooms {
namespace {

constexpr std::size_t kLabels = 256;
constexpr std::size_t kWall = 255;

/// Which seeds are one. The smallest member stands for all.
class Unions {
 public:
    explicit Unions(std::size_t count) : parents_(count) {
        std::iota(parents_.begin(), parents_.end(), std::size_t{0});
    }

    std::size_t find(std::size_t member) {
        while (parents_[member] != member) {
            parents_[member] = parents_[parents_[member]];
            member = parents_[member];
        }
        return member;
    }

    void join(std::size_t a, std::size_t b) {
        a = find(a);
        b = find(b);
        parents_[std::max(a, b)] = std::min(a, b);
    }

 private:
    std::vector<std::size_t> parents_;
};

cv::Mat seedsIn(const SeededBlock& block, const cv::Rect& part) {
    return block.seeds.labels(part - block.block.view.tl());
}

/// Core and half of what is seen around it.
cv::Rect seenWell(const Block& block) {
    const cv::Point from = (block.core.tl() + block.view.tl()) / 2;
    const cv::Point to = (block.core.br() + block.view.br()) / 2;
    return {from, to};
}

std::array<bool, kLabels> labelsOfCore(const SeededBlock& block) {
    std::array<bool, kLabels> found{};
    const cv::Mat core = seedsIn(block, block.block.core);
    for (int row = 0; row < core.rows; ++row) {
        const std::uint8_t* const label = core.ptr<std::uint8_t>(row);
        for (int col = 0; col < core.cols; ++col) found[label[col]] = true;
    }
    found[0] = false;
    found[kWall] = false;
    return found;
}

/// How often labels of two blocks meet in what both see well.
class Overlap {
 public:
    Overlap(const SeededBlock& first, const SeededBlock& second, const cv::Rect& common)
        : counts_(kLabels * kLabels, 0) {
        const cv::Mat a = seedsIn(first, common);
        const cv::Mat b = seedsIn(second, common);
        for (int row = 0; row < common.height; ++row) {
            const std::uint8_t* const label_a = a.ptr<std::uint8_t>(row);
            const std::uint8_t* const label_b = b.ptr<std::uint8_t>(row);
            for (int col = 0; col < common.width; ++col) {
                ++counts_[label_a[col] * kLabels + label_b[col]];
                ++of_first_[label_a[col]];
                ++of_second_[label_b[col]];
            }
        }
    }

    bool isOneSeed(std::size_t a, std::size_t b) const {
        const std::int32_t common = counts_[a * kLabels + b];
        const std::int32_t smaller = std::min(of_first_[a], of_second_[b]);
        return 2 * common > smaller;
    }

 private:
    std::vector<std::int32_t> counts_;
    std::array<std::int32_t, kLabels> of_first_{};
    std::array<std::int32_t, kLabels> of_second_{};
};

class Joining {
 public:
    explicit Joining(const std::vector<SeededBlock>& blocks)
        : blocks_(blocks), unions_(blocks.size() * kLabels) {
        for (const SeededBlock& block : blocks) in_core_.push_back(labelsOfCore(block));
    }

    cv::Mat run(const cv::Size& size) {
        for (std::size_t i = 0; i < blocks_.size(); ++i) {
            for (std::size_t j = i + 1; j < blocks_.size(); ++j) joinWith(i, j);
        }
        const std::vector<std::int32_t> numbers = numberSeeds();
        cv::Mat joined(size, CV_32SC1, cv::Scalar(kWall));
        for (std::size_t i = 0; i < blocks_.size(); ++i) writeCore(i, numbers, joined);
        return joined;
    }

 private:
    void joinWith(std::size_t i, std::size_t j) {
        const cv::Rect common = seenWell(blocks_[i].block) & seenWell(blocks_[j].block);
        if (common.empty()) return;
        const Overlap overlap(blocks_[i], blocks_[j], common);
        for (std::size_t a = 1; a < kWall; ++a) {
            if (!in_core_[i][a]) continue;
            for (std::size_t b = 1; b < kWall; ++b) {
                if (in_core_[j][b] && overlap.isOneSeed(a, b)) {
                    unions_.join(i * kLabels + a, j * kLabels + b);
                }
            }
        }
    }

    Birth birthOf(std::size_t seed) const {
        const SeededBlock& block = blocks_[seed / kLabels];
        Birth birth = block.seeds.births.at(static_cast<int>(seed % kLabels));
        birth.first += block.block.view.tl();
        return birth;
    }

    /// The first member of each set of seeds that are one, with the earliest birth of all.
    std::vector<std::pair<Birth, std::size_t>> findSets() {
        std::map<std::size_t, Birth> births;
        for (std::size_t seed = 0; seed < blocks_.size() * kLabels; ++seed) {
            if (!in_core_[seed / kLabels][seed % kLabels]) continue;
            const Birth birth = birthOf(seed);
            Birth& earliest = births.emplace(unions_.find(seed), birth).first->second;
            if (isBefore(birth, earliest)) earliest = birth;
        }
        std::vector<std::pair<Birth, std::size_t>> sets;
        for (const auto& [first, birth] : births) sets.emplace_back(birth, first);
        std::stable_sort(sets.begin(), sets.end(),
                         [](const auto& a, const auto& b) { return isBefore(a.first, b.first); });
        return sets;
    }

    /// For each label of each block; the value of walls is no seed's number.
    std::vector<std::int32_t> numberSeeds() {
        std::vector<std::int32_t> numbers(blocks_.size() * kLabels, 0);
        std::int32_t last = 0;
        for (const auto& [birth, first] : findSets()) {
            last += last + 1 == kWall ? 2 : 1;
            numbers[first] = last;
        }
        for (std::size_t seed = 0; seed < numbers.size(); ++seed) {
            const std::size_t label = seed % kLabels;
            if (label == kWall) numbers[seed] = kWall;
            if (in_core_[seed / kLabels][label]) numbers[seed] = numbers[unions_.find(seed)];
        }
        return numbers;
    }

    void writeCore(std::size_t i, const std::vector<std::int32_t>& numbers, cv::Mat& joined) const {
        const cv::Mat labels = seedsIn(blocks_[i], blocks_[i].block.core);
        cv::Mat to = joined(blocks_[i].block.core);
        const std::int32_t* const number = numbers.data() + i * kLabels;
        for (int row = 0; row < to.rows; ++row) {
            const std::uint8_t* const label = labels.ptr<std::uint8_t>(row);
            std::int32_t* const out = to.ptr<std::int32_t>(row);
            for (int col = 0; col < to.cols; ++col) out[col] = number[label[col]];
        }
    }

    const std::vector<SeededBlock>& blocks_;
    std::vector<std::array<bool, kLabels>> in_core_;
    Unions unions_;
};

}  // namespace

cv::Mat joinSeeds(const std::vector<SeededBlock>& blocks, const cv::Size& size) {
    return Joining(blocks).run(size);
}

}  // namespace vorund::rooms
