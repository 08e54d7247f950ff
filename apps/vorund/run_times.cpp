#include "run_times.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "arguments.h"

namespace vorund::app {
namespace {

namespace fs = std::filesystem;

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;
constexpr double kNanosecond = 1e-9;
constexpr char kLastPicture[] = "cuts";

/// Six digits after the point.
double rounded(double value) {
    return std::round(value * 1e6) / 1e6;
}

std::string directoryOf(const std::string& path) {
    const fs::path parent = fs::path(path).parent_path();
    return parent.empty() ? "." : parent.string();
}

bool isResult(const std::string& name) {
    const std::array<const char*, 3> names{"debug", "rooms.geojson", "rooms.json"};
    return fs::path(name).extension() == ".png" ||
           std::find(names.begin(), names.end(), name) != names.end();
}

/// Either may be missing yet.
bool isSameDirectory(const std::string& a, const std::string& b) {
    std::error_code error_of_a;
    std::error_code error_of_b;
    const fs::path whole_a = fs::weakly_canonical(fs::absolute(a), error_of_a);
    const fs::path whole_b = fs::weakly_canonical(fs::absolute(b), error_of_b);
    return !error_of_a && !error_of_b && whole_a == whole_b;
}

/// @return the directory.
std::string checkedDirectory(const std::string& path, const std::string& results) {
    const std::string name = fs::path(path).filename().string();
    if (name.empty() || name == "." || name == "..") {
        throw UsageError("--timings: " + path + " is not the name of a file");
    }
    const std::string directory = directoryOf(path);
    if (isResult(name) && isSameDirectory(directory, results)) {
        throw UsageError("--timings: " + path + " is one of the results");
    }
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
        throw std::runtime_error(path + ": " +
                                 std::make_error_code(std::errc::is_a_directory).message());
    }
    return directory;
}

}  // namespace

RunTimes::RunTimes() : start_(now()), stage_start_(start_), stages_{{kStageRead, {0.0, 0.0}}} {}

RunTimes::Moment RunTimes::now() {
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now().time_since_epoch();
    std::timespec cpu{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu);
    return {wall.count(),
            static_cast<double>(cpu.tv_sec) + static_cast<double>(cpu.tv_nsec) * kNanosecond};
}

void RunTimes::endStage() {
    const Moment end = now();
    stages_[current_].time.wall += end.wall - stage_start_.wall;
    stages_[current_].time.cpu += end.cpu - stage_start_.cpu;
    stage_start_ = end;
}

void RunTimes::begin(const std::string& stage) {
    endStage();
    const auto known = std::find_if(stages_.begin(), stages_.end(),
                                    [&](const StageTime& time) { return time.name == stage; });
    current_ = static_cast<std::size_t>(known - stages_.begin());
    if (known == stages_.end()) stages_.push_back({stage, {0.0, 0.0}});
}

double RunTimes::seconds() const {
    return now().wall - start_.wall;
}

void RunTimes::follow(rooms::FlowObserver& observer) {
    observer.progress = [this, progress = observer.progress](const std::string& stage, int done,
                                                             int total) {
        if (done == 0) begin(stage);
        return !progress || progress(stage, done, total);
    };
    observer.picture = [this, picture = observer.picture](const std::string& name,
                                                          const cv::Mat& image) {
        if (picture) picture(name, image);
        if (name == kLastPicture) begin(kStageRecords);
    };
}

std::string RunTimes::asJson(double megapixels) {
    endStage();
    Json stages = Json::array();
    for (const auto& [name, time] : stages_) {
        stages.push_back(
            {{"name", name}, {"wall_s", rounded(time.wall)}, {"cpu_s", rounded(time.cpu)}});
    }
    const Json json{{"format", kFormat},
                    {"megapixels", rounded(megapixels)},
                    {"stages", stages},
                    {"total",
                     {{"wall_s", rounded(stage_start_.wall - start_.wall)},
                      {"cpu_s", rounded(stage_start_.cpu - start_.cpu)}}}};
    return json.dump(2) + "\n";
}

TimesFile::TimesFile(const std::string& path, const std::string& results)
    : name_(fs::path(path).filename().string()), output_(checkedDirectory(path, results)) {}

void TimesFile::write(const std::string& json) {
    output_.write(name_, std::vector<std::uint8_t>(json.begin(), json.end()));
}

}  // namespace vorund::app
