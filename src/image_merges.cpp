#include <algorithm>
#include <cstdint>
#include <utility>

#include "internal/image_merges.h"
#include "internal/runs.h"

namespace vorund::internal {

void ImageMerges::renameRoom(int from, int to) {
    if (from != to) rooms_[from] = to;
}

std::vector<int>& ImageMerges::formerIds(int border) {
    return former_ids_.try_emplace(border, 1, border).first->second;
}

void ImageMerges::giveToRoom(int border, int room) {
    for (const int id : formerIds(border)) given_[id] = room;
    renameBorder(border, 0);
}

void ImageMerges::renameBorder(int from, int to) {
    if (from == to) return;
    std::vector<int>& gone = formerIds(from);
    std::vector<int>& kept = formerIds(to);
    if (gone.size() > kept.size()) gone.swap(kept);  // So that each id moves seldom.
    kept.insert(kept.end(), gone.begin(), gone.end());
    gone.clear();
}

int ImageMerges::roomOf(int label) {
    int room = label;
    for (auto next = rooms_.find(room); next != rooms_.end(); next = rooms_.find(room)) {
        room = next->second;
    }
    // All on the way go straight there from now on, or long chains would be walked again and again.
    for (auto next = rooms_.find(label); next != rooms_.end(); next = rooms_.find(label)) {
        label = std::exchange(next->second, room);
    }
    return room;
}

std::unordered_map<int, ImageMerges::Fate> ImageMerges::fates() {
    std::unordered_map<int, Fate> fates;
    for (const auto& [border, ids] : former_ids_) {
        for (const int id : ids) {
            const auto room = given_.find(id);
            const bool in_room = room != given_.end();
            if (id == border && !in_room) continue;
            fates.emplace(id, Fate{border, in_room, in_room ? roomOf(room->second) : 0});
        }
    }
    return fates;
}

void ImageMerges::apply(cv::Mat& segments, cv::Mat& borders) {
    for (const auto& [label, room] : rooms_) roomOf(label);
    const std::unordered_map<int, Fate> fates_of_ids = fates();
    const auto rename = [&](std::int32_t* label, int size) {
        forEachRun(label, size, [&](int begin, int end, std::int32_t value) {
            const auto room = rooms_.find(value);
            if (room != rooms_.end()) std::fill(label + begin, label + end, room->second);
        });
    };
    const bool any = !rooms_.empty() || !fates_of_ids.empty();
    for (int row = 0; any && row < segments.rows; ++row) {
        std::int32_t* const label = segments.ptr<std::int32_t>(row);
        std::int32_t* const border = borders.ptr<std::int32_t>(row);
        forEachRun(border, borders.cols, [&](int begin, int end, std::int32_t id) {
            const auto found = fates_of_ids.find(id);
            const bool has_fate = found != fates_of_ids.end();
            if (has_fate && found->second.in_room) {
                std::fill(label + begin, label + end, found->second.room);
            } else {
                rename(label + begin, end - begin);
            }
            if (has_fate) std::fill(border + begin, border + end, found->second.border);
        });
    }
    *this = ImageMerges();
}

}  // namespace vorund::internal
