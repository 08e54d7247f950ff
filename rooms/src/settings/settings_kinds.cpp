#include "settings/settings_kinds.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

namespace vorund::rooms {
namespace {

template <class T>
bool decode(const YAML::Node& node, T& value) {
    try {
        return YAML::convert<T>::decode(node, value);
    } catch (const YAML::Exception&) {
        return false;  // From an element of a list; single values tell by the return value.
    }
}

/// Reads what converts to a T and `permits` lets through.
template <class T, class Permits>
std::function<bool(const YAML::Node&, T&)> reader(Permits permits) {
    return [permits](const YAML::Node& node, T& value) {
        T read{};
        if (!decode(node, read) || !permits(read)) return false;
        value = read;
        return true;
    };
}

/// A limit as people write it: 1000, not 1000.0.
std::string limitText(double value) {
    const std::string text = numberText(value);
    const std::size_t point = text.find(".0");
    return point + 2 == text.size() ? text.substr(0, point) : text;
}

std::string range(double least, double most) {
    return "from " + limitText(least) + " to " + limitText(most);
}

/// False for a NaN.
bool within(double value, double least, double most) {
    return value >= least && value <= most;
}

bool isPlain(const std::string& text) {
    constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz_";
    return !text.empty() && text.find_first_not_of(kLetters) == std::string::npos && text != "null";
}

std::string nameText(const std::string& text) {
    if (isPlain(text)) return text;
    YAML::Emitter quoted;
    quoted << YAML::DoubleQuoted << text;
    return quoted.c_str();
}

std::string listed(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + text;
    return list;
}

std::string numbersText(const std::vector<double>& values) {
    std::vector<std::string> texts(values.size());
    std::transform(values.begin(), values.end(), texts.begin(), numberText);
    return "[" + listed(texts) + "]";
}

std::string weightsText(const std::map<std::string, int>& weights) {
    std::vector<std::string> texts;
    for (const auto& [key, value] : weights) {
        texts.push_back(nameText(key) + ": " + std::to_string(value));
    }
    return "{" + listed(texts) + "}";
}

/// The entries of a map of weights; false if one cannot be used or stands twice.
bool readWeights(const YAML::Node& node, const Kind<int>& weight,
                 std::map<std::string, int>& weights) {
    if (!node.IsMap()) return false;
    for (const auto& entry : node) {
        std::string key;
        int value = 0;
        if (!decode(entry.first, key) || !weight.read(entry.second, value)) return false;
        if ((key != "start" && key != "end") || !weights.emplace(key, value).second) return false;
    }
    return true;
}

}  // namespace

std::string numberText(double value) {
    if (std::isnan(value)) return ".nan";
    if (std::isinf(value)) return value > 0 ? ".inf" : "-.inf";
    // What takes up to 15 digits is printed with no more of them; from 17 every double reads back.
    constexpr int kFewDigits = 15;
    constexpr int kEnoughDigits = 17;
    std::string text;
    for (int digits = kFewDigits; digits <= kEnoughDigits; ++digits) {
        std::ostringstream writer;
        writer.imbue(std::locale::classic());
        writer.precision(digits);
        writer << value;
        text = writer.str();
        std::istringstream reader(text);
        reader.imbue(std::locale::classic());
        double read = 0.0;
        if (reader >> read && !(read < value) && !(read > value)) break;
    }
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

Kind<double> number(double least, double most) {
    return {reader<double>([=](double value) { return within(value, least, most); }), numberText,
            "a number " + range(least, most)};
}

Kind<double> zeroOrNumber(double least, double most) {
    const auto permits = [=](double value) {
        return within(value, 0.0, 0.0) || within(value, least, most);
    };
    return {reader<double>(permits), numberText, "0 or a number " + range(least, most)};
}

Kind<std::vector<double>> numbers(std::size_t most_values, double least, double most) {
    const auto permits = [=](const std::vector<double>& values) {
        return !values.empty() && values.size() <= most_values &&
               std::all_of(values.begin(), values.end(),
                           [=](double value) { return within(value, least, most); });
    };
    return {reader<std::vector<double>>(permits), numbersText,
            "a list of 1 to " + std::to_string(most_values) + " numbers " + range(least, most)};
}

Kind<int> whole(int least, int most) {
    return {reader<int>([=](int value) { return value >= least && value <= most; }),
            [](int value) { return std::to_string(value); },
            "a whole number " + range(least, most)};
}

Kind<int> connectivity() {
    return {reader<int>([](int value) { return value == 4 || value == 8; }),
            [](int value) { return std::to_string(value); }, "4 or 8"};
}

Kind<bool> flag() {
    return {reader<bool>([](bool) { return true; }),
            [](bool value) { return value ? "true" : "false"; }, "true or false"};
}

Kind<std::string> name(const std::vector<std::string>& names, const std::string& remark) {
    const auto permits = [names](const std::string& value) {
        return std::find(names.begin(), names.end(), value) != names.end();
    };
    return {reader<std::string>(permits), nameText, listed(names) + remark};
}

Kind<std::map<std::string, int>> weights(int least, int most) {
    const Kind<int> weight = whole(least, most);
    const auto read = [weight](const YAML::Node& node, std::map<std::string, int>& value) {
        std::map<std::string, int> entries;
        if (!readWeights(node, weight, entries)) return false;
        for (const auto& [key, entry] : entries) value[key] = entry;
        return true;
    };
    return {read, weightsText, "start and end, each with " + weight.permitted};
}

}  // namespace vorund::rooms
