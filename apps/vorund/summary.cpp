#include "summary.h"

#include <iomanip>
#include <locale>
#include <sstream>

namespace vorund::app {
namespace {

std::string counted(std::size_t count, const std::string& one, const std::string& several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

}  // namespace

std::string summaryLine(const rooms::Rooms& rooms, double seconds) {
    const int cols = rooms.labels.cols;
    const int rows = rooms.labels.rows;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << counted(rooms.rooms.size(), "room, ", "rooms, ");
    if (!rooms.islands.empty()) {
        text << counted(rooms.islands.size(), "island removed, ", "islands removed, ");
    }
    if (rooms.blocks > 1) text << "found in " << rooms.blocks << " blocks, ";
    text << std::fixed << std::setprecision(1) << cols << " x " << rows << " pixels ("
         << cols * rooms.resolution << " m x " << rows * rooms.resolution << " m), "
         << std::setprecision(2) << seconds << " s\n";
    return text.str();
}

std::optional<Summary> parseSummary(const std::string& line) {
    const std::size_t after_rooms = line.find(' ');
    const std::size_t before_seconds = line.rfind(", ");
    const std::size_t after_seconds = line.rfind(" s\n");
    if (after_rooms == std::string::npos || before_seconds == std::string::npos ||
        after_seconds == std::string::npos || after_seconds < before_seconds + 2) {
        return {};
    }
    return Summary{line.substr(0, after_rooms),
                   line.substr(before_seconds + 2, after_seconds - before_seconds - 2)};
}

}  // namespace vorund::app
