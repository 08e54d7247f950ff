#pragma once

#include <functional>
#include <map>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vorund/export.h"
#include "vorund/rooms/room_fates.h"
#include "vorund/rooms/score.h"

/// Scores of image files, one by one or a folder at a time, and how they are shown.
namespace vorund::rooms {

/// What the file with the true rooms is.
enum class TruthKind {
    kDrawing,  ///< The floor plan with thin lines between rooms (see `truthFromDrawing`).
    kLabels,   ///< A label image.
};

struct ScoreOptions {
    TruthKind truth = TruthKind::kDrawing;
    bool keep_detached = false;    ///< As in `truthFromDrawing`.
    std::optional<int> unreached;  ///< As in `scoreRooms`.
};

/// The images behind a score.
struct ScoreImages {
    std::string name;  ///< NAME of a batch, without the variant; else empty.
    cv::Mat predicted;
    Truth truth;
    cv::Mat map;  ///< Empty if there is none.
};

/// Is given the images of every score.
using ScoreObserver = std::function<void(const ScoreImages&)>;

/// Scores one label image.
///
/// The truth of the map NAME.png is customarily called NAME_gt_segmentation.png. If it is, areas
/// are detached by NAME.png beside it, which has no furniture, and by nothing if that is missing or
/// has another size; a truth of any other name goes by `map_path`.
/// @param map_path  The map whose free pixels count. If empty, NAME.png beside the truth; all
///                  pixels count if that is missing too.
/// @throws MapError  if a file cannot be read, if sizes differ, or if no pixel counts.
VORUND_EXPORT Score scoreFiles(const std::string& predicted_path, const std::string& truth_path,
                               const std::string& map_path = "", const ScoreOptions& options = {},
                               const ScoreObserver& observer = {});

/// The score of one map of a batch.
struct MapScore {
    std::string name;   ///< NAME, without the variant.
    Score score;        ///< 0 everywhere if there is an error, `n_gt` and `unlabelled` excepted.
    std::string error;  ///< Why the prediction cannot be scored; empty if it was.
};

/// The variant whose files have no suffix.
inline constexpr char kBareVariant[] = "bare";

/// The maps of a folder with their truths, by the rules of `scoreBatch`; `predicted` is empty.
/// @throws MapError  as `scoreBatch`.
VORUND_EXPORT std::vector<ScoreImages> readMapsWithTruth(const std::string& maps_dir,
                                                         const std::string& variant = kBareVariant,
                                                         const ScoreOptions& options = {});

/// Scores the predictions for all maps of a folder that have a truth NAME_gt_segmentation.png, in
/// the order of the truths' file names. Maps without the variant are left out, and so are those
/// where it has another size than the truth.
/// @param results_dir  Holds NAME_VARIANT/rooms.png or, where that is missing, NAME_VARIANT.png
///                     (NAME/rooms.png, NAME.png for the bare maps).
/// @param maps_dir     Holds NAME.png, NAME_VARIANT.png and NAME_gt_segmentation.png.
/// @throws MapError  if a folder, a map or a truth cannot be read, or if no map is left.
VORUND_EXPORT std::vector<MapScore> scoreBatch(const std::string& results_dir,
                                               const std::string& maps_dir,
                                               const std::string& variant = kBareVariant,
                                               const ScoreOptions& options = {},
                                               const ScoreObserver& observer = {});

/// A figure over the maps of a batch.
struct FigureSummary {
    std::string name;
    double mean = 0.0;
    double deviation = 0.0;  ///< Standard deviation of the sample; 0 for a single map.
};

/// All figures over the maps of a batch, those that could not be scored included.
/// @throws std::invalid_argument  if there are no maps.
VORUND_EXPORT std::vector<FigureSummary> summarize(const std::vector<MapScore>& maps);

/// One figure a line: name, value.
VORUND_EXPORT std::string scoreText(const Score& score);

/// A line for each map with the main figures and the error, if any; then the lines "mean" and
/// "std". @throws std::invalid_argument  if there are no maps.
VORUND_EXPORT std::string scoreText(const std::vector<MapScore>& maps);

/// An object with all figures by name.
VORUND_EXPORT std::string scoreJson(const Score& score);

/// The same, and "rooms": for each true room an object with "room" (its number), "iou", "missed",
/// "split" (the labels of the pieces, none for a whole room) and "joined" (null, or an object with
/// "in", the predicted room's label, and "with", the numbers of the other true rooms in it).
VORUND_EXPORT std::string scoreJson(const Score& score, const std::vector<RoomFate>& fates);

/// An object with "maps" (by name: the figures, and "error" if there is one) and "summary" ("maps"
/// and "missing": how many there are and how many of them have an error; then for each figure
/// [mean, deviation]). @throws std::invalid_argument  if there are no maps.
/// @param fates  By the map's name: its object then has "rooms", as above.
VORUND_EXPORT std::string scoreJson(const std::vector<MapScore>& maps,
                                    const std::map<std::string, std::vector<RoomFate>>& fates = {});

}  // namespace vorund::rooms
