#include "tune_space.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <locale>
#include <sstream>

#include "vorund/rooms/settings.h"

namespace vorund::app {
namespace {

constexpr int kDigits = 3;

struct TunedSetting {
    const char* key;
    double least;
    double most;
    bool by_factors;  ///< Steps are factors, not differences.
    double (*of)(const rooms::Settings&);
};

const std::array<TunedSetting, 6> kTuned{{
    {"rooms/open_ratio", 0.1, 0.95, false, [](const auto& s) { return s.rooms.open_ratio; }},
    {"rooms/narrow_ratio", 0.1, 0.95, false, [](const auto& s) { return s.rooms.narrow_ratio; }},
    {"rooms/least_area", 0.5, 20.0, true, [](const auto& s) { return s.rooms.least_area; }},
    {"rooms/loose_part", 0.5, 5.0, true, [](const auto& s) { return s.rooms.loose_part; }},
    {"rooms/wall_line", 0.3, 1.0, false, [](const auto& s) { return s.rooms.wall_line; }},
    {"compute_labels_list/generate_gaussian_seeds_skimage/threshold", 0.001, 0.1, true,
     [](const auto& s) {
         return s.core.compute_labels_list.generate_gaussian_seeds_skimage.threshold;
     }},
}};

std::string shortNumber(double value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::setprecision(kDigits) << value;
    return text.str();
}

double valueAt(const TunedSetting& setting, double place) {
    if (!setting.by_factors) return setting.least + place * (setting.most - setting.least);
    return setting.least * std::pow(setting.most / setting.least, place);
}

double placeOf(const TunedSetting& setting, double value) {
    const double inside = std::clamp(value, setting.least, setting.most);
    if (!setting.by_factors) return (inside - setting.least) / (setting.most - setting.least);
    return std::log(inside / setting.least) / std::log(setting.most / setting.least);
}

}  // namespace

TuneValues valuesAt(const TunePoint& point) {
    TuneValues values;
    for (std::size_t i = 0; i < kTuned.size(); ++i) {
        values.push_back(kTuned[i].key + ("=" + shortNumber(valueAt(kTuned[i], point[i]))));
    }
    return values;
}

TunePoint pointOf(const rooms::Settings& settings) {
    TunePoint point;
    for (const TunedSetting& setting : kTuned) {
        point.push_back(placeOf(setting, setting.of(settings)));
    }
    return point;
}

rooms::Settings withValues(const TuneValues& values, rooms::Settings settings) {
    for (const std::string& value : values) rooms::applySetting(value, settings);
    return settings;
}

}  // namespace vorund::app
