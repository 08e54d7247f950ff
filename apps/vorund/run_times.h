#pragma once

#include <chrono>
#include <ctime>
#include <string>
#include <vector>

#include "vorund/rooms/file_output.h"
#include "vorund/rooms/find_rooms.h"

namespace vorund::app {

/// The stages of a run beside those of the libraries.
inline constexpr char kStageRead[] = "read";        ///< Settings and map.
inline constexpr char kStagePrepare[] = "prepare";  ///< Directories; the map at 0.05 m per pixel.
inline constexpr char kStageRecords[] = "records";  ///< Rooms numbered and measured.
inline constexpr char kStageWrite[] = "write";      ///< Files but for this one's own.

/// Measures a run stage by stage. Some stage is always under way, so that their times add up to
/// the whole.
class RunTimes {
 public:
    /// Starts with `kStageRead`.
    RunTimes();

    /// Ends the stage before. A name that was there counts on.
    void begin(const std::string& stage);

    /// Since the start. [s]
    double seconds() const;

    /// Has the times follow a run of `findRooms`, beside what the observer does already.
    void follow(rooms::FlowObserver& observer);

    /// All up to now as JSON (`schemas/timings.schema.json`).
    std::string asJson(double megapixels);

 private:
    /// What both clocks show. [s]
    struct Moment {
        double wall;
        double cpu;
    };
    struct StageTime {
        std::string name;
        Moment time;
    };

    static Moment now();
    void endStage();

    Moment start_;
    Moment stage_start_;
    std::size_t current_ = 0;
    std::vector<StageTime> stages_;
};

/// The file of a run's times, placed like the results or not at all.
class TimesFile {
 public:
    /// @param results  Directory of the results, none of which it may be.
    /// @throws UsageError          if the path cannot be that of such a file.
    /// @throws std::runtime_error  if its directory cannot be written to, and if it is a directory.
    TimesFile(const std::string& path, const std::string& results);

    void write(const std::string& json);
    void commit() { output_.commit(); }

 private:
    std::string name_;
    rooms::FileOutput output_;
};

}  // namespace vorund::app
