#include "segmentation.h"

#include <ros/init.h>

#include <array>

#include "vorund/rooms/find_rooms.h"

namespace vorund_ros {
namespace {

namespace rooms = vorund::rooms;

constexpr std::array<const char*, 12> kStages{
    vorund::kStageDenoise, vorund::kStageDilate,      vorund::kStageRidges,
    vorund::kStageScales,  vorund::kStageOverSegment, vorund::kStageFill,
    vorund::kStageRestore, vorund::kStageFinished,    rooms::kStepSeparate,
    rooms::kStepIslands,   rooms::kStepMergePassages, rooms::kStepCuts};

/// What takes another's place: in blocks, and where the settings ask for both passes.
constexpr std::array<std::array<const char*, 2>, 3> kInPlaceOf{
    {{rooms::kStageBlocks, vorund::kStageOverSegment},
     {rooms::kStepMergeNodes, rooms::kStepMergePassages},
     {rooms::kStepMergeEdges, rooms::kStepMergePassages}}};

std::string oneLine(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    for (char& letter : text) {
        if (letter == '\n' || letter == '\r') letter = ' ';
    }
    return text;
}

std::shared_ptr<vorund::Debugger> newDebugger(const rooms::Settings& settings,
                                              const std::string& directory) {
    vorund::DebuggerConfig config;
    config.show_images = false;  // Windows belong to a program's main thread.
    config.save_images = settings.core.debug.save_images;
    if (config.save_images) config.output_dir = directory;
    return vorund::Debugger::create(config);
}

FoundRooms run(const nav_msgs::OccupancyGrid& map, const Choices& choices,
               const std::string& debug_directory, const std::atomic<bool>& cancelled,
               const std::function<void(const Progress&)>& tell) {
    rooms::FlowObserver observer;
    observer.progress = [&](const std::string& stage, int done, int total) {
        if (tell) tell({stage, stageNumber(stage), stageCount(), done, total});
        return !cancelled && !ros::isShuttingDown();
    };
    const rooms::GridMap grid = toGridMap(map, choices.occupied_threshold);
    const rooms::Rooms found = rooms::findRooms(
        grid, choices.settings, newDebugger(choices.settings, debug_directory), observer);
    return toMessages(found, map, mapHash(map));
}

}  // namespace

Outcome segment(const nav_msgs::OccupancyGrid& map, const Choices& choices,
                const std::string& debug_directory, const std::atomic<bool>& cancelled,
                const std::function<void(const Progress&)>& tell) {
    Outcome outcome;
    try {
        outcome.found =
            std::make_shared<const FoundRooms>(run(map, choices, debug_directory, cancelled, tell));
    } catch (const vorund::Cancelled&) {
        outcome.cancelled = true;
        outcome.cause = "cancelled";
    } catch (const std::exception& error) {  // A bad map must not end the node, whatever it does.
        outcome.cause = oneLine(error.what());
    }
    return outcome;
}

int stageNumber(const std::string& stage) {
    std::string usual = stage;
    for (const auto& [other, place] : kInPlaceOf) {
        if (stage == other) usual = place;
    }
    for (std::size_t i = 0; i < kStages.size(); ++i) {
        if (usual == kStages[i]) return static_cast<int>(i) + 1;
    }
    return 0;
}

int stageCount() {
    return static_cast<int>(kStages.size());
}

}  // namespace vorund_ros
