#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <locale>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "vorund/rooms/score_files.h"

namespace vorund::rooms {
namespace {

using Json = nlohmann::ordered_json;

/// The columns of the table.
constexpr std::array<const char*, 15> kMainFigures{
    "mcc", "mcc_1to1", "recall", "precision", "iou_gt", "iou_seg",   "f1_50",     "f1_75",
    "pq",  "n_gt",     "n_pred", "over",      "under",  "merged_gt", "unlabelled"};

constexpr int kLeastColumn = 9;
constexpr int kDecimals = 3;

/// Always with a point, whatever the user's language.
std::ostringstream plainStream() {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(kDecimals);
    return text;
}

template <class Entry>
const Entry& named(const std::vector<Entry>& entries, const std::string& name) {
    return *std::find_if(entries.begin(), entries.end(),
                         [&](const Entry& entry) { return entry.name == name; });
}

int columnWidth(const std::string& title) {
    return std::max(kLeastColumn, static_cast<int>(title.size()));
}

void writeFigure(std::ostream& text, const Figure& figure, int width) {
    text << std::setw(width);
    if (figure.is_count) {
        text << static_cast<int>(figure.value);
    } else {
        text << figure.value;
    }
}

/// The part of a line that every line has.
std::string firstColumn(const std::string& name, std::size_t width) {
    return name + std::string(width - std::min(width, name.size()), ' ');
}

void writeMap(std::ostream& text, const MapScore& map) {
    const std::vector<Figure> figures = figuresOf(map.score);
    for (const char* const name : kMainFigures) {
        writeFigure(text << ' ', named(figures, name), columnWidth(name));
    }
    if (!map.error.empty()) text << "  " << map.error;
    text << '\n';
}

Json asJson(const Score& score) {
    Json json = Json::object();
    for (const Figure& figure : figuresOf(score)) {
        if (figure.is_count) {
            json[figure.name] = static_cast<int>(figure.value);
        } else {
            json[figure.name] = figure.value;
        }
    }
    return json;
}

Json asJson(const std::vector<RoomFate>& fates) {
    Json rooms = Json::array();
    for (const RoomFate& fate : fates) {
        Json room{{"room", fate.room},
                  {"iou", fate.iou},
                  {"missed", fate.isMissed()},
                  {"split", fate.split},
                  {"joined", nullptr}};
        if (fate.joined) room["joined"] = {{"in", *fate.joined}, {"with", fate.joined_with}};
        rooms.push_back(std::move(room));
    }
    return rooms;
}

/// File names need not be UTF-8, but JSON must be.
std::string textOf(const Json& json) {
    return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

bool hasError(const MapScore& map) {
    return !map.error.empty();
}

FigureSummary summaryOf(const std::string& name, const std::vector<double>& values) {
    const double count = static_cast<double>(values.size());
    FigureSummary summary{name, 0.0, 0.0};
    for (const double value : values) summary.mean += value;
    summary.mean /= count;
    if (values.size() < 2) return summary;
    double squares = 0.0;
    for (const double value : values) {
        squares += (value - summary.mean) * (value - summary.mean);
    }
    summary.deviation = std::sqrt(squares / (count - 1.0));
    return summary;
}

}  // namespace

std::vector<FigureSummary> summarize(const std::vector<MapScore>& maps) {
    if (maps.empty()) throw std::invalid_argument("summarize: there are no maps");
    std::vector<FigureSummary> summaries;
    const std::vector<Figure> figures = figuresOf({});
    for (std::size_t i = 0; i < figures.size(); ++i) {
        std::vector<double> values;
        for (const MapScore& map : maps) values.push_back(figuresOf(map.score)[i].value);
        summaries.push_back(summaryOf(figures[i].name, values));
    }
    return summaries;
}

std::string scoreText(const Score& score) {
    const std::vector<Figure> figures = figuresOf(score);
    std::size_t width = 0;
    for (const Figure& figure : figures) width = std::max(width, figure.name.size());
    std::ostringstream text = plainStream();
    for (const Figure& figure : figures) {
        text << firstColumn(figure.name, width);
        writeFigure(text << ' ', figure, kLeastColumn);
        text << '\n';
    }
    return text.str();
}

std::string scoreText(const std::vector<MapScore>& maps) {
    const std::vector<FigureSummary> summaries = summarize(maps);
    std::size_t width = 4;  // Of "mean".
    for (const MapScore& map : maps) width = std::max(width, map.name.size());

    std::ostringstream text = plainStream();
    text << firstColumn("map", width);
    for (const char* const name : kMainFigures) {
        text << ' ' << std::setw(columnWidth(name)) << name;
    }
    text << '\n';
    for (const MapScore& map : maps) writeMap(text << firstColumn(map.name, width), map);
    text << firstColumn("mean", width);
    for (const char* const name : kMainFigures) {
        text << ' ' << std::setw(columnWidth(name)) << named(summaries, name).mean;
    }
    text << '\n' << firstColumn("std", width);
    for (const char* const name : kMainFigures) {
        text << ' ' << std::setw(columnWidth(name)) << named(summaries, name).deviation;
    }
    text << '\n';
    return text.str();
}

std::string scoreJson(const Score& score) {
    return textOf(asJson(score));
}

std::string scoreJson(const Score& score, const std::vector<RoomFate>& fates) {
    Json json = asJson(score);
    json["rooms"] = asJson(fates);
    return textOf(json);
}

std::string scoreJson(const std::vector<MapScore>& maps,
                      const std::map<std::string, std::vector<RoomFate>>& fates) {
    Json json{{"maps", Json::object()}, {"summary", Json::object()}};
    for (const MapScore& map : maps) {
        Json& entry = json["maps"][map.name] = asJson(map.score);
        if (hasError(map)) entry["error"] = map.error;
        const auto rooms = fates.find(map.name);
        if (rooms != fates.end()) entry["rooms"] = asJson(rooms->second);
    }
    json["summary"]["maps"] = maps.size();
    json["summary"]["missing"] = std::count_if(maps.begin(), maps.end(), hasError);
    for (const FigureSummary& summary : summarize(maps)) {
        json["summary"][summary.name] = {summary.mean, summary.deviation};
    }
    return textOf(json);
}

}  // namespace vorund::rooms
