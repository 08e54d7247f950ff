#include "room_keeper.h"

#include <ros/console.h>
#include <ros/init.h>
#include <sys/stat.h>

#include <chrono>
#include <utility>

#include "segmentation.h"

namespace vorund_ros {
namespace {

using Source = NewestWorker::Source;

std::string sizeText(const FoundRooms& found) {
    return std::to_string(found.graph.info.width) + " x " +
           std::to_string(found.graph.info.height) + " cells";
}

bool isThere(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

}  // namespace

RoomKeeper::RoomKeeper(NewestWorker& worker, const Choices& choices, Options options)
    : worker_(worker), options_(std::move(options)), choices_(choices) {
    readSaved();
}

void RoomKeeper::readSaved() {
    if (options_.save_path.empty() || !isThere(options_.save_path)) return;
    try {
        saved_ = std::make_shared<const SavedRooms>(loadRooms(options_.save_path));
    } catch (const SaveError& error) {
        ROS_WARN("Saved rooms are not used: %s", error.what());
    }
}

void RoomKeeper::takeMap(const nav_msgs::OccupancyGrid::ConstPtr& map) {
    const std::string hash = mapHash(*map);
    const std::lock_guard<std::mutex> lock(mutex_);
    newest_map_ = map;
    begin({hash, choices_.text()});
}

void RoomKeeper::setChoices(const Choices& choices) {
    const std::lock_guard<std::mutex> lock(mutex_);
    choices_ = choices;
    if (newest_map_) begin({newest_->map_hash, choices_.text()});
}

void RoomKeeper::begin(const Key& key) {
    if (newest_ == key) return;
    newest_ = key;
    status_.problem.clear();
    status_.is_busy = !(in_force_ == key);
    ++status_.version;
    if (!status_.is_busy) return worker_.cancel(Source::kMap);
    const bool is_saved =
        saved_ && saved_->found.graph.map_hash == key.map_hash && saved_->choices == key.choices;
    Run next{key, newest_map_, choices_, is_saved ? saved_ : nullptr};
    worker_.submit(
        Source::kMap,
        {[this, next = std::move(next)](const std::atomic<bool>& stop) { run(next, stop); }, {}});
}

void RoomKeeper::run(const Run& run, const std::atomic<bool>& cancelled) {
    if (run.saved) {
        const auto output = std::make_shared<const RoomOutput>(toOutput(*run.saved));
        if (!end(run, "", output, cancelled)) return;
        ROS_INFO("%s, restored from %s", countText(run.saved->found).c_str(),
                 options_.save_path.c_str());
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = segment(*run.map, run.choices, options_.debug_directory, cancelled);
    std::shared_ptr<const RoomOutput> output;
    if (outcome.found) {
        output = std::make_shared<const RoomOutput>(toOutput({*outcome.found, run.key.choices}));
    }
    if (!end(run, outcome.cause, output, cancelled)) return;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    ROS_INFO("%s, %s, %.2f s", countText(*outcome.found).c_str(), sizeText(*outcome.found).c_str(),
             elapsed.count());
    keepInFile(output->rooms);
    const std::lock_guard<std::mutex> lock(mutex_);
    status_.seconds = elapsed.count();
}

/// @return whether the rooms came into force.
bool RoomKeeper::end(const Run& run, const std::string& problem,
                     std::shared_ptr<const RoomOutput> output, const std::atomic<bool>& cancelled) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++status_.version;
    // Set under this lock, so what was cancelled never comes into force.
    if (cancelled || ros::isShuttingDown()) {
        ++status_.cancelled;
        return false;
    }
    const bool is_newest = newest_ == run.key;
    if (is_newest) status_.is_busy = false;
    if (!output) {
        ++status_.failed;
        if (is_newest) status_.problem = problem;
        ROS_ERROR("No rooms found: %s", problem.c_str());
        return false;
    }
    ++status_.finished;
    putInForce(std::move(output), run.key);
    return true;
}

void RoomKeeper::putInForce(std::shared_ptr<const RoomOutput> output, const Key& key) {
    output_ = std::move(output);
    in_force_ = key;
    saved_.reset();
    const FoundRooms& found = output_->rooms.found;
    status_.has_rooms = true;
    status_.rooms = found.graph.rooms.size();
    status_.borders = found.graph.borders.size();
    status_.map = sizeText(found) + ", " + found.graph.map_hash;
    ++status_.version;
    if (!found.graph.cells_are_labels) {
        ROS_WARN("%s: more than the cells of the topic rooms can number; rooms/image has them all",
                 countText(found).c_str());
    }
    options_.publish(*output_);
}

void RoomKeeper::keepInFile(const SavedRooms& rooms) {
    if (options_.save_path.empty()) return;
    std::string problem;
    try {
        saveRooms(options_.save_path, rooms);
    } catch (const SaveError& error) {
        problem = error.what();
        ROS_WARN("Rooms are not saved: %s", error.what());
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    status_.save_problem = problem;
    ++status_.version;
}

Choices RoomKeeper::choices() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return choices_;
}

std::shared_ptr<const RoomOutput> RoomKeeper::inForce() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return output_;
}

std::string RoomKeeper::pathOr(const std::string& path) const {
    if (!path.empty()) return path;
    if (options_.save_path.empty()) throw SaveError("no path is given, and ~save_path is empty");
    return options_.save_path;
}

std::string RoomKeeper::save(const std::string& path) {
    const std::string target = pathOr(path);
    const std::shared_ptr<const RoomOutput> output = inForce();
    if (!output) throw SaveError("there are no rooms to save yet");
    saveRooms(target, output->rooms);
    return countText(output->rooms.found) + " saved to " + target;
}

std::string RoomKeeper::load(const std::string& path) {
    const std::string source = pathOr(path);
    auto output = std::make_shared<const RoomOutput>(toOutput(loadRooms(source)));
    const std::string hash = output->rooms.found.graph.map_hash;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (newest_map_ && newest_->map_hash != hash) {
        throw SaveError(source + ": holds the rooms of another map");
    }
    worker_.cancel(Source::kMap);
    status_.is_busy = false;
    status_.problem.clear();
    // As if the choices of now had given them: they stay until choices or map change.
    newest_ = Key{hash, choices_.text()};
    putInForce(std::move(output), *newest_);
    return countText(output_->rooms.found) + " loaded from " + source;
}

KeeperStatus RoomKeeper::status() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return status_;
}

}  // namespace vorund_ros
