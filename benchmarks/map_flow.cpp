// map_flow [--settings NAME] [--rounds N] MAP...: CPU seconds of the whole flow on a user's maps,
// of the library and of its plain version in turns, the best of N rounds. JSON on standard output.
#include <algorithm>
#include <ctime>
#include <exception>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "inputs.h"
#include "reference/find_rooms.h"
#include "vorund/rooms/find_rooms.h"
#include "vorund/rooms/map_reader.h"
#include "vorund/rooms/resampling.h"

namespace vorund::bench {
namespace {

using Json = nlohmann::ordered_json;

struct Arguments {
    Kind kind = Kind::kDefault;
    int rounds = 2;
    std::vector<std::string> maps;
};

Arguments parse(const std::vector<std::string>& words) {
    Arguments arguments;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--settings") {
            arguments.kind = kindOf(words.at(++i));
        } else if (words[i] == "--rounds") {
            arguments.rounds = std::stoi(words.at(++i));
        } else {
            arguments.maps.push_back(words[i]);
        }
    }
    return arguments;
}

double cpuSecondsOf(const std::function<void()>& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

Json measure(const std::string& path, const Arguments& arguments) {
    const rooms::Settings settings = settingsOf(arguments.kind);
    const rooms::GridMap map = rooms::readMap(path);
    const auto library = [&] { rooms::findRooms(map, settings, Debugger::create({})); };
    const cv::Mat working =
        rooms::Resampling(map.values.size(), map.resolution).toWorking(map.values);
    const auto plain = [&] { reference::findRooms(working, settings); };
    double of_library = cpuSecondsOf(library);
    double of_plain = cpuSecondsOf(plain);
    for (int round = 1; round < arguments.rounds; ++round) {
        of_library = std::min(of_library, cpuSecondsOf(library));
        of_plain = std::min(of_plain, cpuSecondsOf(plain));
    }
    return {{"map", path},
            {"megapixels", static_cast<double>(map.values.total()) * 1e-6},
            {"library_s", of_library},
            {"plain_s", of_plain}};
}

void run(const Arguments& arguments) {
    Json results = Json::array();
    for (const std::string& path : arguments.maps) {
        try {
            results.push_back(measure(path, arguments));
        } catch (const std::exception& error) {
            results.push_back({{"map", path}, {"error", error.what()}});
        }
    }
    std::cout << results.dump(2) << std::endl;
}

}  // namespace
}  // namespace vorund::bench

int main(int argc, char** argv) {
    try {
        vorund::bench::beQuietAndSingleThreaded();
        vorund::bench::run(vorund::bench::parse({argv + 1, argv + argc}));
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "map_flow: " << error.what() << "\n";
        return 2;
    }
}
