#pragma once

#include <yaml-cpp/yaml.h>

#include <string>
#include <vector>

#include "vorund/export.h"

namespace vorund {

/// The value of `node` as a `T`, or `default_value` if the node is invalid, undefined or null.
/// A node that does not convert gives `default_value` too, after the warning "YAML parsing error
/// for a node: ... Using default." on the console channel "ros.vorund".
/// Instantiated for double, int, bool, std::string and std::vector<double>.
template <class T>
T getYamlValue(const YAML::Node& node, const T& default_value);

extern template VORUND_EXPORT double getYamlValue<double>(const YAML::Node&, const double&);
extern template VORUND_EXPORT int getYamlValue<int>(const YAML::Node&, const int&);
extern template VORUND_EXPORT bool getYamlValue<bool>(const YAML::Node&, const bool&);
extern template VORUND_EXPORT std::string getYamlValue<std::string>(const YAML::Node&,
                                                                    const std::string&);
extern template VORUND_EXPORT std::vector<double> getYamlValue<std::vector<double>>(
    const YAML::Node&, const std::vector<double>&);

}  // namespace vorund
