// flow_memory SIDE SETTINGS: the most memory that findRooms takes at any time on a generated map,
// beyond the process with its map. JSON on standard output.
//
// Linux keeps the peak of a process' resident memory (VmHWM in /proc/self/status); writing 5 to
// /proc/self/clear_refs sets it back to what is resident now.
#include <malloc.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>

#include "inputs.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::bench {
namespace {

constexpr double kBytesPerKilobyte = 1024.0;

double bytesOf(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, key.size() + 1, key + ":") != 0) continue;
        double kilobytes = 0.0;
        std::istringstream(line.substr(key.size() + 1)) >> kilobytes;
        return kilobytes * kBytesPerKilobyte;
    }
    throw std::runtime_error("/proc/self/status has no " + key);
}

void forgetPeak() {
    // What making the map has left in the heap would serve the run unseen.
    ::malloc_trim(0);
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5" << std::flush;
    if (!clear) throw std::runtime_error("/proc/self/clear_refs cannot be written to");
}

void run(int side, Kind kind) {
    const rooms::GridMap map = mapOf(side);
    forgetPeak();
    const double before = bytesOf("VmRSS");
    rooms::findRooms(map, settingsOf(kind), Debugger::create({}));
    const double peak = bytesOf("VmHWM");
    const auto pixels = static_cast<double>(map.values.total());
    std::cout << nlohmann::ordered_json{{"side", side},
                                        {"settings", nameOf(kind)},
                                        {"bytes_per_pixel", (peak - before) / pixels},
                                        {"peak_bytes", peak}}
              << std::endl;
}

}  // namespace
}  // namespace vorund::bench

int main(int argc, char** argv) {
    try {
        if (argc != 3) throw std::invalid_argument("flow_memory SIDE SETTINGS");
        vorund::bench::beQuietAndSingleThreaded();
        vorund::bench::run(std::stoi(argv[1]), vorund::bench::kindOf(argv[2]));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
