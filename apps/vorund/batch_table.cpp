#include "batch_table.h"

#include <algorithm>
#include <cstddef>

namespace vorund::app {
namespace {

constexpr std::size_t kGap = 2;

/// File names may hold line breaks.
std::string inOneLine(std::string text) {
    const auto is_control = [](char letter) {
        return static_cast<unsigned char>(letter) < ' ' || letter == '\x7f';
    };
    std::replace_if(text.begin(), text.end(), is_control, ' ');
    return text;
}

std::string toTheRight(const std::string& text, const std::string& title) {
    const std::string shown = text.empty() ? "-" : text;
    const std::size_t width = kGap + title.size();
    return std::string(width - std::min(width, shown.size()), ' ') + shown;
}

std::string remark(const BatchEntry& entry) {
    if (!entry.error.empty()) return "  " + inOneLine(entry.error);
    return entry.rooms.empty() ? "  left out, its results are there" : "";
}

}  // namespace

std::string batchTable(const std::vector<BatchEntry>& entries) {
    const std::string name = "map";
    const std::string rooms = "rooms";
    const std::string seconds = "seconds";
    std::size_t width = name.size();
    for (const BatchEntry& entry : entries) width = std::max(width, entry.name.size());
    std::string text = name + std::string(width - name.size(), ' ') + toTheRight(rooms, rooms) +
                       toTheRight(seconds, seconds) + "\n";
    for (const BatchEntry& entry : entries) {
        text += inOneLine(entry.name) + std::string(width - entry.name.size(), ' ');
        text += toTheRight(entry.rooms, rooms) + toTheRight(entry.seconds, seconds);
        text += remark(entry) + "\n";
    }
    return text;
}

}  // namespace vorund::app
