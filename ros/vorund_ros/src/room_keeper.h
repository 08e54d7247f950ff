// Maps in, rooms out: which map counts, which rooms are in force, and what is known of both.
#pragma once

#include <nav_msgs/OccupancyGrid.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "choices.h"
#include "newest_worker.h"
#include "room_output.h"

namespace vorund_ros {

/// For the diagnostics.
struct KeeperStatus {
    bool has_rooms = false;
    bool is_busy = false;
    std::string problem;       ///< Why the newest map has no rooms; empty if it has or waits.
    std::string save_problem;  ///< Why the rooms in force are in no file.
    std::size_t rooms = 0;
    std::size_t borders = 0;
    std::string map;  ///< Size and hash of the map of the rooms in force.
    int finished = 0;
    int cancelled = 0;
    int failed = 0;
    double seconds = 0.0;  ///< Of the last run that ended with rooms.
    int version = 0;       ///< Grows with every change.
};

/// Keeps the rooms of the newest map in force. A map that is the same as the one before (equal
/// cells, geometry and frame) changes nothing; if its rooms are in the file, they are taken from
/// there. A map without rooms leaves the last good ones in force.
///
/// All functions may be called from any thread; none of them waits for a run.
class RoomKeeper {
 public:
    struct Options {
        std::string save_path;        ///< Empty: rooms are not kept in a file.
        std::string debug_directory;  ///< See `segment`.
        /// Called in order whenever other rooms come into force; the keeper's lock is held.
        std::function<void(const RoomOutput&)> publish;
    };

    /// Reads the saved rooms, if there are any.
    RoomKeeper(NewestWorker& worker, const Choices& choices, Options options);

    void takeMap(const nav_msgs::OccupancyGrid::ConstPtr& map);

    /// The newest map is done again if they differ from those in force.
    void setChoices(const Choices& choices);
    Choices choices() const;

    /// Empty before the first.
    std::shared_ptr<const RoomOutput> inForce() const;

    /// @param path  Empty for the options' own. @return what was done, in one line.
    /// @throws SaveError  if that cannot be.
    std::string save(const std::string& path);
    std::string load(const std::string& path);

    KeeperStatus status() const;

 private:
    /// A map together with what decides on its rooms.
    struct Key {
        std::string map_hash;
        std::string choices;
        bool operator==(const Key& other) const {
            return map_hash == other.map_hash && choices == other.choices;
        }
    };
    struct Run {
        Key key;
        nav_msgs::OccupancyGrid::ConstPtr map;
        Choices choices;
        std::shared_ptr<const SavedRooms> saved;  ///< Instead of finding them, if not empty.
    };

    void readSaved();
    void begin(const Key& key);
    void run(const Run& run, const std::atomic<bool>& cancelled);
    bool end(const Run& run, const std::string& problem, std::shared_ptr<const RoomOutput> output,
             const std::atomic<bool>& cancelled);
    void putInForce(std::shared_ptr<const RoomOutput> output, const Key& key);
    void keepInFile(const SavedRooms& rooms);
    std::string pathOr(const std::string& path) const;

    NewestWorker& worker_;
    const Options options_;

    mutable std::mutex mutex_;  ///< Guards all that follows.
    Choices choices_;
    nav_msgs::OccupancyGrid::ConstPtr newest_map_;
    std::optional<Key> newest_;    ///< What was last asked for, whatever became of it.
    std::optional<Key> in_force_;  ///< What `output_` is for.
    std::shared_ptr<const RoomOutput> output_;
    std::shared_ptr<const SavedRooms> saved_;  ///< As read at start.
    KeeperStatus status_;
};

}  // namespace vorund_ros
