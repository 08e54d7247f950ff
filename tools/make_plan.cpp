// make_plan: writes a made-up floor plan with its true rooms.
//
//     make_plan --seed 7 --size 24x14 --resolution 0.05 --furniture 60 --out /tmp --name office
//     make_plan --family mapped_home --count 50 --seed 1 --out /tmp/homes
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string>

#include "families/plan_families.h"
#include "plan_generator.h"

namespace {

constexpr int kWrongUsage = 2;
constexpr int kFailure = 1;

// "12.5" with three decimals -> 12500. Digit by digit, so that no rounding and no locale matters.
int scaled(const std::string& option, const std::string& text, int decimals) {
    const auto refuse = [&] {
        throw std::invalid_argument(option + ": \"" + text + "\" is no number with at most " +
                                    std::to_string(decimals) + " decimals.");
    };
    const bool negative = !text.empty() && text[0] == '-';
    const std::size_t first = negative ? 1 : 0;
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string digits = text.substr(first, point - first);
    std::string fraction = point < text.size() ? text.substr(point + 1) : "";
    if (digits.empty() || fraction.size() > static_cast<std::size_t>(decimals)) refuse();
    fraction.resize(static_cast<std::size_t>(decimals), '0');
    digits += fraction;
    if (digits.size() > 9 || digits.find_first_not_of("0123456789") != std::string::npos) refuse();
    const int value = std::stoi(digits);
    return negative ? -value : value;
}

struct Arguments {
    vorund::test::PlanOptions options;
    std::string size = "24x14", resolution = "0.05", rotation = "0", margin = "1.5";
    std::string directory = ".", name = "plan";
    bool walls_outside = false;
    std::string family;
    int count = 1;
    bool lists_families = false;
    bool given_rotation = false;
};

// What only one of the two kinds of plans knows.
constexpr const char* kNotOfFamilies[] = {"--size", "--margin", "--furniture",     "--noise",
                                          "--fans", "--glass",  "--walls-outside", "--name"};

void addOptions(CLI::App& app, Arguments& arguments) {
    vorund::test::PlanOptions& options = arguments.options;
    app.add_option("--seed", options.seed, "Which plan: equal seeds give equal plans")
        ->capture_default_str();
    app.add_option("--size", arguments.size, "Width x height of the building [m]")
        ->capture_default_str();
    app.add_option("--resolution", arguments.resolution, "Side of a pixel [m]")
        ->capture_default_str();
    app.add_option("--rotation", arguments.rotation, "Counterclockwise turn [degree]")
        ->capture_default_str();
    app.add_option("--margin", arguments.margin, "Around the building [m]")->capture_default_str();
    app.add_option("--furniture", options.furniture_percent, "How full the rooms are [%]")
        ->capture_default_str();
    app.add_option("--noise", options.noise_percent, "Ragged walls, speckle, holes [%]")
        ->capture_default_str();
    app.add_option("--fans", options.fans_percent, "Windows that let the laser out [%]")
        ->capture_default_str();
    app.add_option("--glass", options.glass_percent, "Inner walls of one pixel [%]")
        ->capture_default_str();
    app.add_flag("--walls-outside", arguments.walls_outside,
                 "Occupied instead of unknown around the building");
    app.add_option("--out", arguments.directory, "Existing folder to write to")
        ->capture_default_str();
    app.add_option("--name", arguments.name, "Files are called NAME.pgm, NAME.yaml, ...")
        ->capture_default_str();
    CLI::Option* family = app.add_option(
        "--family", arguments.family,
        "Plans of a family instead, or of all of them (\"all\"), as FAMILY_SEED.png and the rest");
    app.add_option("--count", arguments.count, "So many plans of the family, from --seed on")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000))
        ->needs(family);
    for (const char* option : kNotOfFamilies) family->excludes(app.get_option(option));
    app.add_flag("--list-families", arguments.lists_families, "Name the families and end");
}

vorund::test::PlanOptions optionsOf(const Arguments& arguments) {
    vorund::test::PlanOptions options = arguments.options;
    const std::size_t cross = arguments.size.find('x');
    if (cross == std::string::npos) {
        throw std::invalid_argument("--size: \"" + arguments.size + "\" is not like 24x14.");
    }
    options.width_mm = scaled("--size", arguments.size.substr(0, cross), 3);
    options.height_mm = scaled("--size", arguments.size.substr(cross + 1), 3);
    options.resolution_um = scaled("--resolution", arguments.resolution, 6);
    options.rotation_tenths_deg = scaled("--rotation", arguments.rotation, 1);
    options.margin_mm = scaled("--margin", arguments.margin, 3);
    if (arguments.walls_outside) options.outside = vorund::test::Outside::kSolid;
    return options;
}

void listFamilies() {
    for (const vorund::test::FamilyInfo& family : vorund::test::planFamilies()) {
        std::cout << family.name << ": " << family.sentence << "\n";
    }
}

void writeFamily(const std::string& family, const Arguments& arguments) {
    vorund::test::FamilyOptions options;
    options.resolution_um = scaled("--resolution", arguments.resolution, 6);
    if (arguments.given_rotation) {
        options.rotation_tenths_deg = scaled("--rotation", arguments.rotation, 1);
    }
    for (int i = 0; i < arguments.count; ++i) {
        const std::uint64_t seed = arguments.options.seed + static_cast<std::uint64_t>(i);
        const auto plan = vorund::test::makeFamilyPlan(family, seed, options);
        writeFamilyPlan(plan, arguments.directory, family + "_" + std::to_string(seed));
    }
}

void write(const Arguments& arguments) {
    if (arguments.family.empty()) {
        const vorund::test::Plan plan = vorund::test::makePlan(optionsOf(arguments));
        vorund::test::writePlan(plan, arguments.directory, arguments.name);
        return;
    }
    if (arguments.family != "all") return writeFamily(arguments.family, arguments);
    for (const vorund::test::FamilyInfo& family : vorund::test::planFamilies()) {
        writeFamily(family.name, arguments);
    }
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Writes a made-up floor plan with its true rooms and doors."};
    Arguments arguments;
    addOptions(app, arguments);
    try {
        app.parse(argc, argv);
        arguments.given_rotation = app.count("--rotation") > 0;
        if (arguments.lists_families) {
            listFamilies();
        } else {
            write(arguments);
        }
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
    } catch (const std::invalid_argument& error) {
        std::cerr << "make_plan: " << error.what() << "\n";
        return kWrongUsage;
    } catch (const std::exception& error) {
        std::cerr << "make_plan: " << error.what() << "\n";
        return kFailure;
    }
    return 0;
}
