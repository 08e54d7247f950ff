#pragma once

#include <yaml-cpp/yaml.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vorund::rooms {

/// How one kind of value is read, checked and written.
template <class T>
struct Kind {
    /// Reads a YAML value. Returns false, with the value as it was, if it has the wrong type or is
    /// not permitted.
    std::function<bool(const YAML::Node&, T&)> read;
    /// The value as YAML that reads back to the same.
    std::function<std::string(const T&)> text;
    std::string permitted;  ///< Ends the sentence "permitted: ...".
};

/// A number from `least` to `most`; never a NaN or an infinity.
Kind<double> number(double least, double most);

/// The same, or 0.
Kind<double> zeroOrNumber(double least, double most);

/// 1 to `most_values` numbers, each from `least` to `most`.
Kind<std::vector<double>> numbers(std::size_t most_values, double least, double most);

Kind<int> whole(int least, int most);

/// 4 or 8.
Kind<int> connectivity();

Kind<bool> flag();

/// One of some names. `remark` follows them where the permitted values are told.
Kind<std::string> name(const std::vector<std::string>& names, const std::string& remark = "");

/// "start" and "end", each with a whole number: an entry replaces the one of its name, the others
/// stay.
Kind<std::map<std::string, int>> weights(int least, int most);

/// A decimal number that reads back to the same double, without needless digits; whole ones end in
/// ".0".
std::string numberText(double value);

}  // namespace vorund::rooms
