#include "vorund/config.h"

#include <sys/stat.h>

#include <exception>
#include <limits>
#include <stdexcept>
#include <utility>

#include "config/yaml_warning.h"
#include "internal/console.h"
#include "internal/text.h"
#include "vorund/yaml_value.h"

namespace vorund {
namespace {

constexpr int kNoWeight = std::numeric_limits<int>::min();

void print(const std::string& line) {
    internal::consoleLine(LogLevel::INFO, "[Config] " + line);
}

std::string valueText(double value) {
    return internal::fixedText(value);
}
std::string valueText(int value) {
    return std::to_string(value);
}
std::string valueText(bool value) {
    return value ? "1" : "0";
}
std::string valueText(const std::string& value) {
    return value;
}

/// One group of the file. Its heading is printed even if the file does not have it; its keys are
/// read, and printed, only if it has.
class Group {
 public:
    explicit Group(const YAML::Node& root) : node_(root) {}

    Group group(const std::string& key) const {
        print(indent_ + key + ":");
        // Indexing a node that is not there would throw.
        return present() ? Group(node_[key], indent_ + "  ") : Group(node_, indent_ + "  ");
    }

    template <class T>
    void read(const std::string& key, T& field) const {
        if (!present()) return;
        field = getYamlValue(node_[key], field);
        print(indent_ + key + ": " + valueText(field));
    }

    void read(const std::string& key, std::vector<double>& field) const {
        if (!present()) return;
        field = getYamlValue(node_[key], field);
        print(indent_ + key + ":");
        for (const double value : field) print(indent_ + "  - " + valueText(value));
    }

    void read(const std::string& key, std::map<std::string, int>& field) const {
        if (!present()) return;
        print(indent_ + key + ":");
        readEntries(node_[key], field);
    }

 private:
    Group(const YAML::Node& node, std::string indent) : node_(node), indent_(std::move(indent)) {}

    bool present() const { return node_.IsDefined(); }

    void readEntries(const YAML::Node& entries, std::map<std::string, int>& field) const {
        if (!entries.IsDefined() || entries.IsNull()) return;
        if (!entries.IsMap()) {
            internal::warnOfYamlValue("not a map");
            return;
        }
        for (const auto& entry : entries) {
            const auto name = entry.first.as<std::string>();
            const auto known = field.find(name);
            const int value =
                getYamlValue(entry.second, known == field.end() ? kNoWeight : known->second);
            if (value == kNoWeight) continue;
            field[name] = value;
            print(indent_ + "  " + name + ": " + valueText(value));
        }
    }

    const YAML::Node node_;
    const std::string indent_;
};

void readBinary(const Group& parent, const std::string& name, Config::MakeBinaryConfig& config) {
    parent.group(name).read("threshold", config.threshold);
}

void readDenoising(const Group& group, Config::MakeBinaryConfig& binary_for_crop,
                   Config::CropSingleInfoConfig& crop, Config::MakeBinaryConfig& binary,
                   Config::RemoveSmallConnectedComponentsConfig& components_out,
                   Config::RemoveSmallConnectedComponentsConfig& components_in,
                   Config::MakeBinaryConfig& rank) {
    readBinary(group, "binary_for_crop/make_binary", binary_for_crop);
    group.group("crop_single_info").read("padding", crop.padding);
    readBinary(group, "binary/make_binary", binary);

    const Group out = group.group("components_out/remove_small_connected_components");
    out.read("method", components_out.method);
    out.read("connectivity", components_out.connectivity);

    const Group in = group.group("components_in/remove_small_connected_components");
    in.read("method", components_in.method);
    in.read("min_size", components_in.min_size);

    readBinary(group, "rank/make_binary", rank);
}

void readControlPanel(const Group& root, Config& config) {
    root.read("sigma_start", config.sigma_start);
    root.read("sigma_step", config.sigma_step);
    root.read("binary_threshold", config.binary_threshold);
    root.read("area_threshold", config.area_threshold);
    root.read("length_threshold", config.length_threshold);
    root.read("hist_resolution", config.hist_resolution);
    root.read("alignment", config.alignment);
    const Group debug = root.group("debug");
    debug.read("show_images", config.debug.show_images);
    debug.read("save_images", config.debug.save_images);
}

void readAlignment(const Group& group, Config::FindAlignmentAngleConfig& config) {
    readDenoising(group, config.binary_for_crop_make_binary, config.crop_single_info,
                  config.binary_make_binary,
                  config.components_out_remove_small_connected_components,
                  config.components_in_remove_small_connected_components, config.rank_make_binary);

    auto& histogram = config.compute_weighted_angle_histogram;
    const Group histogram_group = group.group("compute_weighted_angle_histogram");
    histogram_group.read("resolution", histogram.resolution);
    histogram_group.group("canny").read("sigma", histogram.canny.sigma);
    const Group lines = histogram_group.group("probabilistic_hough_line");
    lines.read("threshold", histogram.probabilistic_hough_line.threshold);
    lines.read("line_length", histogram.probabilistic_hough_line.line_length);
    lines.read("line_gap", histogram.probabilistic_hough_line.line_gap);

    const Group best = group.group("find_best_alignment_angle_from_histogram");
    best.read("window_half_size", config.find_best_alignment_angle_from_histogram.window_half_size);
    best.read("resolution", config.find_best_alignment_angle_from_histogram.resolution);
}

void readConnectivity(const Group& parent, Config::CreateWatershedSegmentSkimageConfig& config) {
    parent.group("create_watershed_segment_skimage").read("connectivity", config.connectivity);
}

void readScales(const Group& group, Config::ComputeLabelsListConfig& config) {
    group.read("sigma_start", config.sigma_start);
    group.read("sigma_step", config.sigma_step);
    group.read("max_iter", config.max_iter);
    group.read("background_erosion_kernel_size", config.background_erosion_kernel_size);
    group.group("generate_gaussian_seeds_skimage")
        .read("threshold", config.generate_gaussian_seeds_skimage.threshold);
    readConnectivity(group, config.create_watershed_segment_skimage);
}

void readOverSegment(const Group& group, Config::OverSegmentConfig& config) {
    const Group seeds = group.group("generate_map_initial_seeds");
    seeds.read("method", config.generate_map_initial_seeds.method);
    seeds.read("filter_threshold", config.generate_map_initial_seeds.filter_threshold);
    seeds.read("weights", config.generate_map_initial_seeds.weights);
    readConnectivity(group, config.create_watershed_segment_skimage);
}

void readDetails(const Group& root, Config& config) {
    readAlignment(root.group("find_alignment_angle"), config.find_alignment_angle);

    auto& denoised = config.generate_denoised_alone;
    readDenoising(root.group("generate_denoised_alone"), denoised.binary_for_crop_make_binary,
                  denoised.crop_single_info, denoised.binary_make_binary,
                  denoised.components_out_remove_small_connected_components,
                  denoised.components_in_remove_small_connected_components,
                  denoised.rank_make_binary);

    const Group dilation = root.group("dilate_binary");
    dilation.read("kernel_size", config.dilate_binary.kernel_size);
    dilation.read("iterations", config.dilate_binary.iterations);

    const Group ridges = root.group("generate_ridge_map_meijering");
    ridges.read("mode", config.generate_ridge_map_meijering.mode);
    ridges.read("sigmas", config.generate_ridge_map_meijering.sigmas);

    readScales(root.group("compute_labels_list"), config.compute_labels_list);
    readOverSegment(root.group("over_segment"), config.over_segment);
    root.group("merge_nodes_in_place")
        .read("area_threshold", config.merge_nodes_in_place.area_threshold);
    root.group("merge_edges_in_place")
        .read("length_threshold", config.merge_edges_in_place.length_threshold);
}

/// Before yaml-cpp opens it: its reader leaks its buffer when reading fails.
void refuseDirectory(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        throw std::runtime_error("is a directory");
    }
}

}  // namespace

bool Config::loadFromYaml(const std::string& path) {
    try {
        refuseDirectory(path);
        const Group root(YAML::LoadFile(path));
        print("# Control Panel");
        readControlPanel(root, *this);
        print("# Detailed Settings");
        readDetails(root, *this);
        return true;
    } catch (const std::exception& error) {
        internal::consoleLine(LogLevel::ERROR,
                              "Failed to load YAML file '" + path + "': " + error.what());
        return false;
    }
}

}  // namespace vorund
