#include "polygons/arc_check.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

#include "polygons/line_geometry.h"

namespace vorund::rooms {
namespace {

/// Between two corners that follow each other in a simplified arc.
struct Line {
    cv::Point top;  ///< Of a level line the left end.
    cv::Point bottom;
    int arc = 0;
    int west = 0;  ///< The piece on this side; of a level line that below.
    int east = 0;
};

/// The x that a line covers within a strip, rounded outwards.
struct Extent {
    std::int64_t first = 0;
    std::int64_t last = 0;
    const Line* line = nullptr;
};

bool isLevel(const Line& line) {
    return line.top.y == line.bottom.y;
}

Line makeLine(const cv::Point& from, const cv::Point& to, const Arc& arc, int index) {
    const bool forward = std::tie(from.y, from.x) < std::tie(to.y, to.x);
    // Downwards, left is in the east.
    return forward ? Line{from, to, index, arc.right, arc.left}
                   : Line{to, from, index, arc.left, arc.right};
}

class StripCheck {
 public:
    StripCheck(const std::vector<Arc>& arcs, const std::vector<Chain>& chains)
        : arcs_(arcs), is_faulty_(arcs.size(), false), has_changed_(arcs.size(), false) {
        for (std::size_t i = 0; i < arcs.size(); ++i) {
            has_changed_[i] = chains[i].size() < arcs[i].corners.size();
            for (std::size_t k = 1; k < chains[i].size(); ++k) {
                lines_.push_back(
                    makeLine(chains[i][k - 1], chains[i][k], arcs[i], static_cast<int>(i)));
            }
        }
        std::stable_sort(lines_.begin(), lines_.end(), [](const Line& one, const Line& other) {
            return one.top.y < other.top.y;
        });
    }

    std::vector<int> run() {
        std::size_t next = 0;
        while (next < lines_.size() || !crossing_.empty()) {
            // No boundary for a while: go on where the next one is.
            if (crossing_.empty()) top_ = std::max(top_, lines_[next].top.y - 1);
            enterStrip(next);
            if (!findContacts()) compareSides();
            leaveStrip();
        }
        std::vector<int> faulty;
        for (std::size_t i = 0; i < is_faulty_.size(); ++i) {
            if (is_faulty_[i]) faulty.push_back(static_cast<int>(i));
        }
        return faulty;
    }

 private:
    /// The level lines on the strip's lower edge are those that begin there: they
    /// belong to the strip below too.
    void enterStrip(std::size_t& next) {
        for (; next < lines_.size() && lines_[next].top.y <= top_ + 1; ++next) {
            const Line& line = lines_[next];
            if (isLevel(line)) {
                level_below_.push_back(&line);
            } else {
                starting_below_.push_back(&line);
            }
        }
    }

    void leaveStrip() {
        ++top_;
        crossing_.erase(std::remove_if(crossing_.begin(), crossing_.end(),
                                       [this](const Line* line) { return line->bottom.y <= top_; }),
                        crossing_.end());
        crossing_.insert(crossing_.end(), starting_below_.begin(), starting_below_.end());
        starting_below_.clear();
        level_above_.swap(level_below_);
        level_below_.clear();
    }

    Extent extentOf(const Line* line) const {
        if (isLevel(*line)) return {line->top.x, line->bottom.x, line};
        const Passage upper = passageAt(line->top, line->bottom, 2 * top_);
        const Passage lower = passageAt(line->top, line->bottom, 2 * top_ + 2);
        const Passage& left = lower < upper ? lower : upper;
        const Passage& right = lower < upper ? upper : lower;
        return {left.whole, right.whole + (right.part > 0 ? 1 : 0), line};
    }

    std::vector<Extent> extents() const {
        std::vector<Extent> all;
        for (const auto* lines : {&crossing_, &level_above_, &level_below_}) {
            for (const Line* line : *lines) all.push_back(extentOf(line));
        }
        std::stable_sort(all.begin(), all.end(), [](const Extent& one, const Extent& other) {
            return one.first < other.first;
        });
        return all;
    }

    bool findContacts() {
        bool found = false;
        const std::vector<Extent> all = extents();
        for (std::size_t i = 0; i < all.size(); ++i) {
            for (std::size_t k = i + 1; k < all.size() && all[k].first <= all[i].last; ++k) {
                const Line& one = *all[i].line;
                const Line& other = *all[k].line;
                if (!hasChanged(one.arc) && !hasChanged(other.arc)) continue;
                if (!touch(one.top, one.bottom, other.top, other.bottom)) continue;
                blame(one.arc);
                blame(other.arc);
                found = true;
            }
        }
        return found;
    }

    /// Needs lines that do not touch: their order is then the same all through
    /// the strip.
    void compareSides() {
        std::vector<std::pair<Passage, const Line*>> passages;
        for (const Line* line : crossing_) {
            passages.emplace_back(passageAt(line->top, line->bottom, 2 * top_ + 1), line);
        }
        std::sort(passages.begin(), passages.end(),
                  [](const auto& one, const auto& other) { return one.first < other.first; });
        const Line* before = nullptr;
        for (const auto& passage : passages) {
            const Line* const line = passage.second;
            if (line->west != (before == nullptr ? 0 : before->east)) blameFor(before, line);
            before = line;
        }
    }

    void blameFor(const Line* before, const Line* line) {
        const bool blamed_before = before != nullptr && blame(before->arc);
        if (blame(line->arc) || blamed_before) return;
        // Both follow the pixels, so what has been between them is elsewhere now.
        for (std::size_t i = 0; i < arcs_.size(); ++i) {
            if (has_changed_[i] && reachesStrip(arcs_[i])) is_faulty_[i] = true;
        }
    }

    bool reachesStrip(const Arc& arc) const {
        const auto [highest, lowest] = std::minmax_element(
            arc.corners.begin(), arc.corners.end(),
            [](const cv::Point& one, const cv::Point& other) { return one.y < other.y; });
        return highest->y <= top_ && lowest->y > top_;
    }

    bool hasChanged(int arc) const { return has_changed_[static_cast<std::size_t>(arc)]; }

    bool blame(int arc) {
        if (hasChanged(arc)) is_faulty_[static_cast<std::size_t>(arc)] = true;
        return hasChanged(arc);
    }

    const std::vector<Arc>& arcs_;
    std::vector<bool> is_faulty_;
    std::vector<bool> has_changed_;
    std::vector<Line> lines_;  ///< By the height of their tops.

    int top_ = -1;  ///< Upper edge of the present strip.
    std::vector<const Line*> crossing_;
    std::vector<const Line*> level_above_;
    std::vector<const Line*> level_below_;
    std::vector<const Line*> starting_below_;  ///< Those that cross the next strip.
};

}  // namespace

std::vector<int> faultyArcs(const std::vector<Arc>& arcs, const std::vector<Chain>& chains) {
    return StripCheck(arcs, chains).run();
}

}  // namespace vorund::rooms
