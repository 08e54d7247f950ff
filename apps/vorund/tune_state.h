#pragma once

#include <map>
#include <string>

#include "tune_space.h"

namespace vorund::app {

/// The runs of a search that are done, in a file that a later search goes on from.
class TuneState {
 public:
    /// Reads the file if it is there.
    /// @param problem  Tells searches apart: maps with their pixels, settings that are not
    /// searched.
    /// @throws std::runtime_error  if the file cannot be read, or if it is of another problem.
    TuneState(std::string path, std::string problem);

    /// Null if that map was not run with these values.
    const double* score(const TuneValues& values, const std::string& map) const;

    void add(const TuneValues& values, const std::string& map, double score);

    /// Puts a new file in place. @throws std::runtime_error  with file and cause.
    void write() const;

    std::size_t size() const { return scores_.size(); }
    const std::string& path() const { return path_; }

 private:
    void read(const std::string& text);

    std::string path_;
    std::string problem_;
    std::map<TuneValues, std::map<std::string, double>> scores_;
};

/// A number that differs for other bytes.
std::string fingerprint(const std::string& bytes);

}  // namespace vorund::app
