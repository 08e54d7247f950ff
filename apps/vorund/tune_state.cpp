#include "tune_state.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "vorund/rooms/file_output.h"

namespace vorund::app {
namespace {

namespace fs = std::filesystem;

using Json = nlohmann::ordered_json;

}  // namespace

TuneState::TuneState(std::string path, std::string problem)
    : path_(std::move(path)), problem_(std::move(problem)) {
    std::error_code ignored;
    if (!fs::exists(path_, ignored)) return;
    std::ifstream file(path_, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error(path_ + ": cannot be read");
    try {
        read(text.str());
    } catch (const nlohmann::json::exception&) {
        throw std::runtime_error(path_ + ": is no state of a search");
    }
}

void TuneState::read(const std::string& text) {
    const Json json = Json::parse(text);
    if (json.at("problem").get<std::string>() != problem_) {
        throw std::runtime_error(path_ +
                                 ": is of a search over other maps, or with other settings; remove "
                                 "it to begin anew, or name another --out");
    }
    for (const Json& entry : json.at("evaluations")) {
        auto& scores = scores_[entry.at("values").get<TuneValues>()];
        for (const auto& [map, score] : entry.at("scores").items()) {
            scores[map] = score.get<double>();
        }
    }
}

const double* TuneState::score(const TuneValues& values, const std::string& map) const {
    const auto scores = scores_.find(values);
    if (scores == scores_.end()) return nullptr;
    const auto score = scores->second.find(map);
    return score == scores->second.end() ? nullptr : &score->second;
}

void TuneState::add(const TuneValues& values, const std::string& map, double score) {
    scores_[values][map] = score;
}

void TuneState::write() const {
    Json json{{"problem", problem_}, {"evaluations", Json::array()}};
    for (const auto& [values, scores] : scores_) {
        json["evaluations"].push_back({{"values", values}, {"scores", scores}});
    }
    const std::string text = json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
    const fs::path path(path_);
    rooms::FileOutput output(path.has_parent_path() ? path.parent_path().string() : ".");
    output.write(path.filename().string(), std::vector<std::uint8_t>(text.begin(), text.end()));
    output.commit();
}

std::string fingerprint(const std::string& bytes) {
    std::uint64_t sum = 14695981039346656037U;  // FNV-1a
    for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    std::ostringstream text;
    text << std::hex << std::setw(16) << std::setfill('0') << sum;
    return text.str();
}

}  // namespace vorund::app
