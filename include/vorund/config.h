#pragma once

#include <map>
#include <string>
#include <vector>

#include "vorund/export.h"

namespace vorund {

/// Every setting of the library: the control panel, one record per pipeline stage, and the two
/// merge records that a client uses after `FloorplanSegmenter::doSegment`.
///
/// A member's initial value is the setting's default and is written nowhere else;
/// `config/default.yaml` lists every key with its default and its unit. A YAML key is the field's
/// name; a `/` in a key is a `_` in the field. Lengths are pixels of the working map, at
/// 0.05 m per pixel, unless a field says metres.
struct VORUND_EXPORT Config {
    /// Which diagnostics a client asks for; it copies them into a `DebuggerConfig`.
    struct DebugConfig {
        bool show_images = false;  ///< Show every stage image in a window.
        bool save_images = false;  ///< Write every stage image as a PNG file.
    };

    /// Threshold that makes a map binary.
    struct MakeBinaryConfig {
        double threshold = 0.1;  ///< Map values above it are wall or outside, 0 to 1.
    };

    /// Crop to the content of the map.
    struct CropSingleInfoConfig {
        int padding = 5;  ///< Margin kept around the content. [pixels], >= 0
    };

    /// Removal of small connected regions. Its users choose other initial values.
    struct RemoveSmallConnectedComponentsConfig {
        std::string method = "fixed";  ///< "fixed", "mean" or "median" (of the regions' areas).
        int connectivity = 4;          ///< 4 or 8.
        int min_size = 100;            ///< For "fixed": smaller regions go. [pixels]
    };

    /// Alignment of the map with the image axes. The keys are read, but no stage uses them yet.
    struct FindAlignmentAngleConfig {
        struct ComputeWeightedAngleHistogramConfig {
            struct CannyConfig {
                double sigma = 1.0;  ///< Blur before edges are detected. [pixels]
            };
            struct ProbabilisticHoughLineConfig {
                int threshold = 10;         ///< Votes that make a line.
                double line_length = 20.0;  ///< Shortest line. [pixels]
                double line_gap = 3.0;      ///< Longest gap within a line. [pixels]
            };

            int resolution = 180;  ///< Bins of the histogram over 180 degrees.
            CannyConfig canny;
            ProbabilisticHoughLineConfig probabilistic_hough_line;
        };
        struct FindBestAlignmentAngleFromHistogramConfig {
            int window_half_size = 2;  ///< Bins on either side that are summed.
            int resolution = 180;      ///< Bins of the histogram over 180 degrees.
        };

        MakeBinaryConfig binary_for_crop_make_binary;
        CropSingleInfoConfig crop_single_info;
        MakeBinaryConfig binary_make_binary;
        RemoveSmallConnectedComponentsConfig components_out_remove_small_connected_components;
        RemoveSmallConnectedComponentsConfig components_in_remove_small_connected_components{
            "fixed", 8, 100};
        MakeBinaryConfig rank_make_binary;
        ComputeWeightedAngleHistogramConfig compute_weighted_angle_histogram;
        FindBestAlignmentAngleFromHistogramConfig find_best_alignment_angle_from_histogram;
    };

    /// Settings of `FloorplanSegmenter::generateDenoisedAlone`.
    struct GenerateDenoisedAloneConfig {
        MakeBinaryConfig binary_for_crop_make_binary;  ///< Finds the content's rectangle.
        CropSingleInfoConfig crop_single_info;
        MakeBinaryConfig binary_make_binary;  ///< Divides floor from wall.
        /// Floor regions: smaller ones become wall. YAML sets `method` and `connectivity` only.
        RemoveSmallConnectedComponentsConfig components_out_remove_small_connected_components;
        /// Wall regions: smaller ones become floor. YAML sets `method` and `min_size` only.
        RemoveSmallConnectedComponentsConfig components_in_remove_small_connected_components{
            "fixed", 8, 100};
        MakeBinaryConfig rank_make_binary;  ///< Read from YAML, used by no stage.
    };

    /// Settings of `ImageUtils::dilateBinary` on the denoised map.
    struct DilateBinaryConfig {
        int kernel_size = 3;  ///< Side of the square element. [pixels]
        int iterations = 4;
    };

    /// Settings of `RidgeFilter::generateRidgeMapMeijering`.
    struct GenerateRidgeMapMeijeringConfig {
        std::string mode = "reflect";     ///< "reflect", "mirror", "constant", "nearest", "wrap".
        std::vector<double> sigmas{2.0};  ///< Scales; values <= 0 are skipped. [pixels]
    };

    /// Settings of `WatershedSegmenter::generateGaussianSeedsSkimage`.
    struct GenerateGaussianSeedsSkimageConfig {
        double threshold = 0.01;  ///< Blurred values up to it belong to a seed, 0 to 1.
    };

    /// Settings of `WatershedSegmenter::createWatershedSegmentSkimage`.
    struct CreateWatershedSegmentSkimageConfig {
        int connectivity = 4;  ///< 4 or 8.
    };

    /// Settings of `FloorplanSegmenter::computeLabelsList`.
    struct ComputeLabelsListConfig {
        double sigma_start = 1.0;  ///< First Gaussian scale, > 0. [pixels]
        /// Step between scales. 0 makes a single scale, from which `overSegment` can't track.
        /// [pixels]
        double sigma_step = 1.0;
        /// Most scales; the series ends earlier once nothing is left. `overSegment` fails where it
        /// ends while several regions are left.
        int max_iter = 200;
        int background_erosion_kernel_size = 3;  ///< Read from YAML, used by no stage.
        GenerateGaussianSeedsSkimageConfig generate_gaussian_seeds_skimage;
        /// Read from YAML, used by no stage.
        CreateWatershedSegmentSkimageConfig create_watershed_segment_skimage;
    };

    /// Settings of `OverSegmentProcessor::generateMapInitialSeeds`.
    struct GenerateMapInitialSeedsConfig {
        /// Scale of a label's life at which its seed is cut: "start", "end", "middle", "weighted".
        std::string method = "start";
        std::map<std::string, int> weights{{"end", 1}, {"start", 1}};  ///< For "weighted".
        int filter_threshold = 0;  ///< Labels that live for fewer steps get no seed. [scales]
    };

    /// Settings of `FloorplanSegmenter::overSegment`.
    struct OverSegmentConfig {
        GenerateMapInitialSeedsConfig generate_map_initial_seeds;
        CreateWatershedSegmentSkimageConfig create_watershed_segment_skimage;
    };

    /// Settings of the merging of small rooms; not used by `doSegment`.
    struct MergeNodesInPlaceConfig {
        double area_threshold = 1.0;  ///< Rooms below it are merged into a neighbour. [m^2]
    };

    /// Settings of the merging across long borders; not used by `doSegment`.
    struct MergeEdgesInPlaceConfig {
        double length_threshold = 2.0;  ///< Rooms that share a longer border are merged. [m]
    };

    // The control panel. Of these, `doSegment` reads `alignment` alone; a client may read the rest.
    double sigma_start = 1.0;
    double sigma_step = 1.0;
    double binary_threshold = 0.1;
    double area_threshold = 1.0;
    double length_threshold = 2.0;
    int hist_resolution = 180;
    bool alignment = false;  ///< Only chooses the line that is logged; maps are not aligned.
    DebugConfig debug;

    FindAlignmentAngleConfig find_alignment_angle;
    GenerateDenoisedAloneConfig generate_denoised_alone;
    DilateBinaryConfig dilate_binary;
    GenerateRidgeMapMeijeringConfig generate_ridge_map_meijering;
    ComputeLabelsListConfig compute_labels_list;
    OverSegmentConfig over_segment;
    MergeNodesInPlaceConfig merge_nodes_in_place;
    MergeEdgesInPlaceConfig merge_edges_in_place;

    /// Overwrites every field that the YAML file names. A key that is missing or null leaves its
    /// field as it is; so does a value of the wrong type, which is told as a warning on the console
    /// channel "ros.vorund". Every value read is logged there too, as an information line.
    ///
    /// @param path  A YAML file.
    /// @return false, with one error line on the console channel, if the file cannot be read or
    ///         parsed; fields read before the failure keep their new values. Throws nothing of its
    ///         own.
    bool loadFromYaml(const std::string& path);
};

}  // namespace vorund
