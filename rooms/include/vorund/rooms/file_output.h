#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "vorund/export.h"

namespace vorund::rooms {

/// Files that appear together or not at all: each is written under a temporary name beside its
/// final one, and `commit` renames them. What is not committed is removed again by the destructor,
/// and so is every directory that the constructor made, if it is still empty.
class VORUND_EXPORT FileOutput {
 public:
    /// Creates the directory, with its parents, if it is missing.
    /// @throws std::runtime_error  if it cannot be created or written to: one line that names it
    ///         and the cause.
    explicit FileOutput(const std::string& directory);
    ~FileOutput();
    FileOutput(const FileOutput&) = delete;
    FileOutput& operator=(const FileOutput&) = delete;

    /// @param name  File name within the directory.
    /// @throws std::runtime_error  with file and cause, for example a full disk.
    /// @throws std::invalid_argument  if the name is empty or a path.
    void write(const std::string& name, const std::vector<std::uint8_t>& bytes);

    /// Encodes by the ending of the name. @throws std::runtime_error  with file and cause.
    /// @param image  8 or 16 bits per channel.
    void writeImage(const std::string& name, const cv::Mat& image);

    /// A directory that is filled by somebody else under a temporary name; `commit` puts it in
    /// place of an older one of that name, whose contents go. @return the path to fill.
    std::string openDirectory(const std::string& name);

    /// Puts everything in place, in the order in which it was written; older files of the same
    /// names are replaced. If one cannot be put in place, those before it are taken back and the
    /// older files are as they were. @throws std::runtime_error  with file and cause.
    void commit();

 private:
    struct Entry {
        std::string temporary;
        std::string target;
        bool is_directory = false;
        std::string old;      ///< Where `commit` keeps the older one, empty if there is none.
        bool placed = false;  ///< Stands under its final name.
    };

    std::string pathOf(const std::string& name) const;
    std::string unusedPath();
    void place(Entry& entry);
    void takeBack(Entry& entry) noexcept;

    std::string directory_;
    std::vector<std::string> created_;  ///< Directories made by the constructor, parents first.
    std::vector<Entry> entries_;
    int last_number_ = 0;  ///< Of the temporary names.
};

}  // namespace vorund::rooms
