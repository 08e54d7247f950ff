#include "vorund/yaml_value.h"

#include "config/yaml_warning.h"
#include "internal/console.h"

namespace vorund {

void internal::warnOfYamlValue(const std::string& cause) {
    consoleLine(LogLevel::WARN, "YAML parsing error for a node: " + cause + ". Using default.");
}

template <class T>
T getYamlValue(const YAML::Node& node, const T& default_value) {
    if (!node.IsDefined() || node.IsNull()) return default_value;
    try {
        return node.as<T>();
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
