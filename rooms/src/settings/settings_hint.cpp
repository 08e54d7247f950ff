#include <algorithm>
#include <cstddef>
#include <numeric>

#include "settings/settings_check.h"

namespace vorund::rooms {
namespace {

// Ways in which a key is mistaken for another, the likeliest first.
constexpr std::size_t kLevelForSlash = 0;  // Two levels where the key holds a slash.
constexpr std::size_t kMostEdits = 3;
constexpr std::size_t kWrongGroup = kMostEdits + 1;
constexpr std::size_t kUnlike = kWrongGroup + 1;

/// How many letters must be changed, added or removed to make one text of the other.
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

std::string lastKey(const std::string& typed) {
    return typed.substr(typed.rfind('/') + 1);
}

/// How unlike a typed path is to one of the table.
std::size_t unlikeness(const std::string& typed, const KeyPath& path) {
    const std::string known = joined(path);
    if (known == typed) return kUnlike;  // A group, where a setting is asked for.
    if (known.compare(0, typed.size() + 1, typed + "/") == 0) return kLevelForSlash;
    const std::size_t shorter = std::min(typed.size(), known.size());
    const std::size_t longer = std::max(typed.size(), known.size());
    if (longer - shorter <= kMostEdits) {
        const std::size_t edits = editDistance(typed, known);
        if (edits <= std::min(kMostEdits, shorter / 3)) return edits;
    }
    const Setting* const setting = findSetting(path);
    const bool counts = setting != nullptr && setting->inert.empty();
    return counts && path.back() == lastKey(typed) ? kWrongGroup : kUnlike;
}

/// The paths of all settings that YAML can set, and of the groups above them.
std::vector<KeyPath> knownPaths() {
    std::vector<KeyPath> paths;
    for (const Setting& setting : settingsTable()) {
        if (!setting.in_yaml) continue;
        for (auto end = setting.path.begin() + 1; end <= setting.path.end(); ++end) {
            paths.emplace_back(setting.path.begin(), end);
        }
    }
    return paths;
}

}  // namespace

std::string hint(const KeyPath& parent, const std::string& typed) {
    const std::string full = parent.empty() ? typed : joined(parent) + "/" + typed;
    KeyPath nearest;
    std::size_t least = kUnlike;
    for (const KeyPath& path : knownPaths()) {
        const std::size_t unlike = unlikeness(full, path);
        if (unlike >= least) continue;
        least = unlike;
        nearest = path;
    }
    if (nearest.empty()) return "";
    const bool same_group = KeyPath(nearest.begin(), nearest.end() - 1) == parent;
    return "; did you mean \"" + (same_group ? nearest.back() : joined(nearest)) + "\"?";
}

}  // namespace vorund::rooms
