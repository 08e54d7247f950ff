#include "settings/settings_table.h"

#include <utility>

#include "settings/settings_kinds.h"

namespace vorund::rooms {
namespace {

// No permitted value may crash a run or keep it busy for ever, hence the upper limits.
constexpr double kMostThreshold = 0.999;     // At 1 nothing would be a wall.
constexpr double kMostSeedsThreshold = 0.5;  // Higher ones outlast very wide, very slow blurs.
constexpr double kLeastSigma = 0.1;          // [pixels], as the limits below.
constexpr double kMostSigma = 100.0;
constexpr double kMostSigmaStep = 10.0;
constexpr double kMostRidgeSigma = 50.0;
constexpr int kMostKernel = 101;
constexpr int kMostPadding = 10'000;
constexpr int kMostArea = 1'000'000'000;
constexpr double kMostLine = 1e6;
constexpr int kMostBins = 36'000;
constexpr double kMostMetres = 1e6;     // [m or m^2]
constexpr double kMostDetail = 2.0;
constexpr double kMostSimplify = 10.0;  // [m]; wider than rooms are.
constexpr int kLeastBlock = 40'000;     // [pixels]; smaller ones see too little around them.
constexpr int kMostBlock = 64'000'000;  // The largest map.

constexpr char kNotAligned[] = "maps are not aligned";
constexpr char kUnused[] = "no stage uses it";

/// A record of `Settings` and the path of its group; its settings are added to a table.
template <class Record>
class Group {
 public:
    using Of = std::function<Record&(Settings&)>;
    using OfConst = std::function<const Record&(const Settings&)>;

    Group(std::vector<Setting>& table, KeyPath path, Of of, OfConst of_const)
        : table_(table),
          path_(std::move(path)),
          of_(std::move(of)),
          of_const_(std::move(of_const)) {}

    template <class Inner>
    Group<Inner> group(const std::string& key, Inner Record::*member) const {
        return {table_, below(key),
                [of = of_, member](Settings& settings) -> Inner& { return of(settings).*member; },
                [of = of_const_, member](const Settings& settings) -> const Inner& {
                    return of(settings).*member;
                }};
    }

    template <class T>
    void add(const std::string& key, T Record::*member, const Kind<T>& kind,
             const std::string& inert = "") const {
        table_.push_back({below(key),
                          [of = of_, member, kind](const YAML::Node& node, Settings& settings) {
                              return kind.read(node, of(settings).*member);
                          },
                          [of = of_const_, member, kind](const Settings& settings) {
                              return kind.text(of(settings).*member);
                          },
                          kind.permitted, inert});
    }

    /// A field that has no key in the YAML file.
    template <class T>
    void addHidden(const std::string& key, T Record::*member, const Kind<T>& kind) const {
        add(key, member, kind);
        table_.back().in_yaml = false;
    }

 private:
    KeyPath below(const std::string& key) const {
        KeyPath path = path_;
        path.push_back(key);
        return path;
    }

    std::vector<Setting>& table_;
    KeyPath path_;
    Of of_;
    OfConst of_const_;
};

void addControlPanel(const Group<Config>& root) {
    const auto instead = [](const std::string& key) { return "set " + key + " instead"; };
    root.add("sigma_start", &Config::sigma_start, number(kLeastSigma, kMostSigma),
             instead("compute_labels_list/sigma_start"));
    root.add("sigma_step", &Config::sigma_step, zeroOrNumber(kLeastSigma, kMostSigmaStep),
             instead("compute_labels_list/sigma_step"));
    root.add("binary_threshold", &Config::binary_threshold, number(0, kMostThreshold),
             instead("generate_denoised_alone/binary/make_binary/threshold"));
    root.add("area_threshold", &Config::area_threshold, number(0, kMostMetres),
             instead("merge_nodes_in_place/area_threshold"));
    root.add("length_threshold", &Config::length_threshold, number(0, kMostMetres),
             instead("merge_edges_in_place/length_threshold"));
    root.add("hist_resolution", &Config::hist_resolution, whole(1, kMostBins), kNotAligned);
    root.add("alignment", &Config::alignment, flag(), kNotAligned);

    const auto debug = root.group("debug", &Config::debug);
    debug.add("show_images", &Config::DebugConfig::show_images, flag());
    debug.add("save_images", &Config::DebugConfig::save_images, flag());
}

/// What `find_alignment_angle` and `generate_denoised_alone` have in common.
template <class Record>
void addDenoising(const Group<Record>& group, const std::string& inert,
                  const std::string& rank_inert) {
    using Components = Config::RemoveSmallConnectedComponentsConfig;
    const auto addThreshold = [&](const std::string& key, Config::MakeBinaryConfig Record::*member,
                                  const std::string& why_inert) {
        group.group(key, member)
            .add("threshold", &Config::MakeBinaryConfig::threshold, number(0, kMostThreshold),
                 why_inert);
    };
    addThreshold("binary_for_crop/make_binary", &Record::binary_for_crop_make_binary, inert);
    group.group("crop_single_info", &Record::crop_single_info)
        .add("padding", &Config::CropSingleInfoConfig::padding, whole(0, kMostPadding), inert);
    addThreshold("binary/make_binary", &Record::binary_make_binary, inert);

    const Kind<std::string> method = name({"fixed", "mean", "median"});
    const Kind<int> min_size = whole(0, kMostArea);
    const auto out = group.group("components_out/remove_small_connected_components",
                                 &Record::components_out_remove_small_connected_components);
    out.add("method", &Components::method, method, inert);
    out.add("connectivity", &Components::connectivity, connectivity(), inert);
    out.addHidden("min_size", &Components::min_size, min_size);
    const auto in = group.group("components_in/remove_small_connected_components",
                                &Record::components_in_remove_small_connected_components);
    in.add("method", &Components::method, method, inert);
    in.addHidden("connectivity", &Components::connectivity, connectivity());
    in.add("min_size", &Components::min_size, min_size, inert);

    addThreshold("rank/make_binary", &Record::rank_make_binary, rank_inert);
}

void addAlignment(const Group<Config::FindAlignmentAngleConfig>& group) {
    using Alignment = Config::FindAlignmentAngleConfig;
    using Histogram = Alignment::ComputeWeightedAngleHistogramConfig;
    using Lines = Histogram::ProbabilisticHoughLineConfig;
    using Best = Alignment::FindBestAlignmentAngleFromHistogramConfig;
    addDenoising(group, kNotAligned, kNotAligned);

    const auto histogram = group.group("compute_weighted_angle_histogram",
                                       &Alignment::compute_weighted_angle_histogram);
    histogram.add("resolution", &Histogram::resolution, whole(1, kMostBins), kNotAligned);
    histogram.group("canny", &Histogram::canny)
        .add("sigma", &Histogram::CannyConfig::sigma, number(kLeastSigma, kMostSigma), kNotAligned);
    const auto lines =
        histogram.group("probabilistic_hough_line", &Histogram::probabilistic_hough_line);
    lines.add("threshold", &Lines::threshold, whole(0, kMostArea), kNotAligned);
    lines.add("line_length", &Lines::line_length, number(0, kMostLine), kNotAligned);
    lines.add("line_gap", &Lines::line_gap, number(0, kMostLine), kNotAligned);

    const auto best = group.group("find_best_alignment_angle_from_histogram",
                                  &Alignment::find_best_alignment_angle_from_histogram);
    best.add("window_half_size", &Best::window_half_size, whole(0, kMostBins), kNotAligned);
    best.add("resolution", &Best::resolution, whole(1, kMostBins), kNotAligned);
}

void addRidges(const Group<Config>& root) {
    using Dilation = Config::DilateBinaryConfig;
    using Ridges = Config::GenerateRidgeMapMeijeringConfig;
    const auto dilation = root.group("dilate_binary", &Config::dilate_binary);
    dilation.add("kernel_size", &Dilation::kernel_size, whole(1, kMostKernel));
    dilation.add("iterations", &Dilation::iterations, whole(0, 100));
    const auto ridges =
        root.group("generate_ridge_map_meijering", &Config::generate_ridge_map_meijering);
    ridges.add("mode", &Ridges::mode,
               name({"reflect", "mirror", "constant", "nearest"},
                    "; OpenCV's separable filter refuses wrap"));
    ridges.add("sigmas", &Ridges::sigmas, numbers(16, kLeastSigma, kMostRidgeSigma));
}

void addScales(const Group<Config::ComputeLabelsListConfig>& group) {
    using Scales = Config::ComputeLabelsListConfig;
    group.add("sigma_start", &Scales::sigma_start, number(kLeastSigma, kMostSigma));
    group.add("sigma_step", &Scales::sigma_step, zeroOrNumber(kLeastSigma, kMostSigmaStep));
    group.add("max_iter", &Scales::max_iter, whole(2, 1000));
    group.add("background_erosion_kernel_size", &Scales::background_erosion_kernel_size,
              whole(1, kMostKernel), kUnused);
    group.group("generate_gaussian_seeds_skimage", &Scales::generate_gaussian_seeds_skimage)
        .add("threshold", &Config::GenerateGaussianSeedsSkimageConfig::threshold,
             number(0, kMostSeedsThreshold));
    group.group("create_watershed_segment_skimage", &Scales::create_watershed_segment_skimage)
        .add("connectivity", &Config::CreateWatershedSegmentSkimageConfig::connectivity,
             connectivity(),
             "set over_segment/create_watershed_segment_skimage/connectivity instead");
}

void addOverSegment(const Group<Config::OverSegmentConfig>& group) {
    using Seeds = Config::GenerateMapInitialSeedsConfig;
    const auto seeds = group.group("generate_map_initial_seeds",
                                   &Config::OverSegmentConfig::generate_map_initial_seeds);
    seeds.add("method", &Seeds::method, name({"start", "end", "middle", "weighted"}));
    seeds.add("weights", &Seeds::weights, weights(0, 1000));
    seeds.add("filter_threshold", &Seeds::filter_threshold, whole(0, 1000));
    group
        .group("create_watershed_segment_skimage",
               &Config::OverSegmentConfig::create_watershed_segment_skimage)
        .add("connectivity", &Config::CreateWatershedSegmentSkimageConfig::connectivity,
             connectivity());
}

void addMerging(const Group<Config>& root) {
    root.group("merge_nodes_in_place", &Config::merge_nodes_in_place)
        .add("area_threshold", &Config::MergeNodesInPlaceConfig::area_threshold,
             number(0, kMostMetres));
    root.group("merge_edges_in_place", &Config::merge_edges_in_place)
        .add("length_threshold", &Config::MergeEdgesInPlaceConfig::length_threshold,
             number(0, kMostMetres));
}

void addRooms(const Group<RoomsConfig>& group) {
    group.add("simplify", &RoomsConfig::simplify, number(0, kMostSimplify));
    group.add("straight_borders", &RoomsConfig::straight_borders, flag());
    group.add("blocks", &RoomsConfig::blocks, name({"auto", "always"}));
    group.add("block_pixels", &RoomsConfig::block_pixels, whole(kLeastBlock, kMostBlock));
    group.add("merging", &RoomsConfig::merging, name({"passages", "passes"}));
    group.add("open_ratio", &RoomsConfig::open_ratio, number(0, 1));
    group.add("narrow_ratio", &RoomsConfig::narrow_ratio, number(0, 1));
    group.add("narrow_passage", &RoomsConfig::narrow_passage, number(0, kMostMetres));
    group.add("least_area", &RoomsConfig::least_area, number(0, kMostMetres));
    group.add("doorways", &RoomsConfig::doorways, flag());
    group.add("corridors", &RoomsConfig::corridors, flag());
    group.add("widest_doorway", &RoomsConfig::widest_doorway, number(0, kMostMetres));
    group.add("jamb", &RoomsConfig::jamb, number(0, kMostMetres));
    group.add("detail", &RoomsConfig::detail, number(-kMostDetail, kMostDetail));
    group.add("clear_clutter", &RoomsConfig::clear_clutter, flag());
    group.add("loose_part", &RoomsConfig::loose_part, number(0, kMostMetres));
    group.add("loose_block", &RoomsConfig::loose_block, number(0, kMostMetres));
    group.add("wall_line", &RoomsConfig::wall_line, number(0, 1));
    group.add("closed_floor", &RoomsConfig::closed_floor, number(0, kMostMetres));
}

std::vector<Setting> makeTable() {
    std::vector<Setting> table;
    const Group<Config> root(
        table, {}, [](Settings& settings) -> Config& { return settings.core; },
        [](const Settings& settings) -> const Config& { return settings.core; });
    addControlPanel(root);
    addAlignment(root.group("find_alignment_angle", &Config::find_alignment_angle));
    addDenoising(root.group("generate_denoised_alone", &Config::generate_denoised_alone), "",
                 kUnused);
    addRidges(root);
    addScales(root.group("compute_labels_list", &Config::compute_labels_list));
    addOverSegment(root.group("over_segment", &Config::over_segment));
    addMerging(root);
    addRooms({table,
              {"rooms"},
              [](Settings& settings) -> RoomsConfig& { return settings.rooms; },
              [](const Settings& settings) -> const RoomsConfig& { return settings.rooms; }});
    return table;
}

}  // namespace

const std::vector<Setting>& settingsTable() {
    static const std::vector<Setting> table = makeTable();
    return table;
}

std::string joined(const KeyPath& path) {
    std::string text;
    for (const std::string& key : path) text += (text.empty() ? "" : "/") + key;
    return text;
}

}  // namespace vorund::rooms
