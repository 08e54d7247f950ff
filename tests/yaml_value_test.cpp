#include "vorund/yaml_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/captures.h"

namespace vorund {
namespace {

using test::ConsoleCapture;
using test::ConsoleLine;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Doubles = std::vector<double>;

/// The warning for a node that does not convert to a `T`.
template <class T>
ConsoleLine warningFor(const YAML::Node& node) {
    try {
        node.as<T>();
    } catch (const YAML::Exception& exception) {
        return {"WARN", std::string("YAML parsing error for a node: ") + exception.what() +
                            ". Using default."};
    }
    ADD_FAILURE() << "the node converts";
    return {};
}

/// Asserts that a node gives the default, after one warning.
template <class T>
void expectDefault(const std::string& yaml, const T& default_value) {
    const ConsoleCapture console;
    const YAML::Node node = YAML::Load(yaml);
    EXPECT_EQ(getYamlValue<T>(node, default_value), default_value) << yaml;
    EXPECT_THAT(console.lines(), ElementsAre(warningFor<T>(node))) << yaml;
}

TEST(GetYamlValue, ConvertsANode) {
    const ConsoleCapture console;
    EXPECT_EQ(getYamlValue<double>(YAML::Load("2.5"), 1.0), 2.5);
    EXPECT_EQ(getYamlValue<double>(YAML::Load("-3"), 1.0), -3.0);
    EXPECT_EQ(getYamlValue<int>(YAML::Load("-7"), 1), -7);
    EXPECT_EQ(getYamlValue<bool>(YAML::Load("true"), false), true);
    EXPECT_EQ(getYamlValue<bool>(YAML::Load("no"), true), false);
    EXPECT_EQ(getYamlValue<std::string>(YAML::Load("a text"), "b"), "a text");
    EXPECT_EQ(getYamlValue<std::string>(YAML::Load("12"), "b"), "12");
    EXPECT_THAT(getYamlValue<Doubles>(YAML::Load("[1, 2.5, -3]"), {9.0}),
                ElementsAre(1.0, 2.5, -3.0));
    EXPECT_THAT(getYamlValue<Doubles>(YAML::Load("[]"), {9.0}), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

/// Asserts that a node gives the default of each type, and that nothing is said.
void expectSilentDefaults(const YAML::Node& node) {
    const ConsoleCapture console;
    EXPECT_EQ(getYamlValue<double>(node, 1.5), 1.5);
    EXPECT_EQ(getYamlValue<int>(node, 3), 3);
    EXPECT_EQ(getYamlValue<bool>(node, true), true);
    EXPECT_EQ(getYamlValue<std::string>(node, "text"), "text");
    EXPECT_THAT(getYamlValue<Doubles>(node, {1.0, 2.0}), ElementsAre(1.0, 2.0));
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST(GetYamlValue, GivesTheDefaultForANodeThatIsUndefined) {
    const YAML::Node root = YAML::Load("{a: 1}");
    ASSERT_FALSE(root["missing"].IsDefined());
    expectSilentDefaults(root["missing"]);
}

TEST(GetYamlValue, GivesTheDefaultForANodeThatIsInvalid) {
    const YAML::Node root = YAML::Load("{a: {b: 1}}");
    const YAML::Node missing = root["missing"];
    expectSilentDefaults(missing);
    expectSilentDefaults(YAML::Node(YAML::NodeType::Undefined));
}

TEST(GetYamlValue, GivesTheDefaultForNull) {
    expectSilentDefaults(YAML::Node());
    expectSilentDefaults(YAML::Load("~"));
    expectSilentDefaults(YAML::Load("null"));
    expectSilentDefaults(YAML::Load(""));
    expectSilentDefaults(YAML::Load("{a: }")["a"]);
}

TEST(GetYamlValue, WarnsOfWhatIsNoDouble) {
    for (const std::string yaml : {"wide", "[1]", "{a: 1}", "1.5m"}) {
        expectDefault<double>(yaml, 1.5);
    }
}

TEST(GetYamlValue, WarnsOfWhatIsNoInteger) {
    for (const std::string yaml : {"many", "3.5", "[1]", "{a: 1}", "99999999999"}) {
        expectDefault<int>(yaml, 3);
    }
}

TEST(GetYamlValue, WarnsOfWhatIsNoBoolean) {
    for (const std::string yaml : {"maybe", "1", "[true]", "{a: true}"}) {
        expectDefault<bool>(yaml, true);
    }
}

TEST(GetYamlValue, WarnsOfWhatIsNoString) {
    for (const std::string yaml : {"[a]", "{a: b}"}) expectDefault<std::string>(yaml, "text");
}

TEST(GetYamlValue, WarnsOfWhatIsNoListOfDoubles) {
    for (const std::string yaml : {"1.5", "{a: 1}", "[1, wide]", "[[1]]"}) {
        expectDefault<Doubles>(yaml, {1.0, 2.0});
    }
}

TEST(GetYamlValue, LeavesTheNodeAsItIs) {
    const ConsoleCapture console;
    const YAML::Node node = YAML::Load("{a: text}");
    getYamlValue<int>(node["a"], 1);
    getYamlValue<int>(node["b"], 1);
    EXPECT_EQ(YAML::Dump(node), "{a: text}");
}

}  // namespace
}  // namespace vorund
