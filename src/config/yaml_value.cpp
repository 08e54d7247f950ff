#include "vorund/yaml_value.h"

#include <locale>
#include <sstream>

#include "config/yaml_warning.h"
#include "internal/console.h"

namespace vorund {

void internal::warnOfYamlValue(const std::string& cause) {
    consoleLine(LogLevel::WARN, "YAML parsing error for a node: " + cause + ". Using default.");
}

namespace {

template <class T>
T convert(const YAML::Node& node) {
    return node.as<T>();
}

/// In the C locale: yaml-cpp reads with the one that the robot's program has set, in which 0.5 may
/// be no number.
template <>
double convert<double>(const YAML::Node& node) {
    if (node.IsScalar()) {
        std::istringstream text(node.Scalar());
        text.imbue(std::locale::classic());
        double value = 0.0;
        if (text >> std::noskipws >> value &&
            text.peek() == std::istringstream::traits_type::eof()) {
            return value;
        }
    }
    return node.as<double>();
}

template <>
std::vector<double> convert<std::vector<double>>(const YAML::Node& node) {
    if (!node.IsSequence()) return node.as<std::vector<double>>();
    std::vector<double> values;
    for (const YAML::Node& entry : node) values.push_back(convert<double>(entry));
    return values;
}

}  // namespace

template <class T>
T getYamlValue(const YAML::Node& node, const T& default_value) {
    if (!node.IsDefined() || node.IsNull()) return default_value;
    try {
        return convert<T>(node);
    } catch (const YAML::Exception& error) {
        internal::warnOfYamlValue(error.what());
        return default_value;
    }
}

template VORUND_EXPORT double getYamlValue<double>(const YAML::Node&, const double&);
template VORUND_EXPORT int getYamlValue<int>(const YAML::Node&, const int&);
template VORUND_EXPORT bool getYamlValue<bool>(const YAML::Node&, const bool&);
template VORUND_EXPORT std::string getYamlValue<std::string>(const YAML::Node&, const std::string&);
template VORUND_EXPORT std::vector<double> getYamlValue<std::vector<double>>(
    const YAML::Node&, const std::vector<double>&);

}  // namespace vorund
