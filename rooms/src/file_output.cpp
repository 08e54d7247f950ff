#include "vorund/rooms/file_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <system_error>

namespace vorund::rooms {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kFileMode = 0666;       // Less the user's umask.
constexpr mode_t kDirectoryMode = 0777;  // Likewise.

[[noreturn]] void fail(const std::string& path, const std::string& cause) {
    throw std::runtime_error(path + ": " + cause);
}

[[noreturn]] void failWith(const std::string& path, int error) {
    fail(path, std::generic_category().message(error));
}

void removeEmptyDirectories(const std::vector<std::string>& directories) noexcept {
    for (auto path = directories.rbegin(); path != directories.rend(); ++path) {
        ::rmdir(path->c_str());  // Fails for one that is not empty, as it should.
    }
}

/// Makes the directory and its missing parents. Those it made go into `created`, parents first.
void makeDirectories(const std::string& directory, std::vector<std::string>& created) {
    fs::path path;
    for (const fs::path& part : fs::path(directory)) {
        path /= part;
        if (::mkdir(path.c_str(), kDirectoryMode) == 0) {
            created.push_back(path.string());
            continue;
        }
        const int error = errno;
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0) failWith(path.string(), error);
        if (!S_ISDIR(status.st_mode)) failWith(path.string(), ENOTDIR);
    }
}

/// @return 0 or the error's number.
int writeAll(int file, const std::vector<std::uint8_t>& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(file, bytes.data() + done, bytes.size() - done);
        if (written >= 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void removeAll(const std::string& path, bool is_directory) noexcept {
    std::error_code ignored;  // Nothing is to be done about it, least of all while unwinding.
    if (is_directory) {
        fs::remove_all(path, ignored);
    } else {
        ::unlink(path.c_str());
    }
}

}  // namespace

FileOutput::FileOutput(const std::string& directory) : directory_(directory) {
    if (directory.empty()) throw std::runtime_error("the output directory has no name");
    try {
        makeDirectories(directory, created_);
        if (::access(directory.c_str(), W_OK | X_OK) != 0) failWith(directory, errno);
    } catch (const std::runtime_error&) {
        removeEmptyDirectories(created_);
        throw;
    }
}

FileOutput::~FileOutput() {
    for (const Entry& entry : entries_) removeAll(entry.temporary, entry.is_directory);
    removeEmptyDirectories(created_);
}

std::string FileOutput::pathOf(const std::string& name) const {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        throw std::invalid_argument("FileOutput: '" + name + "' is not the name of a file.");
    }
    return (fs::path(directory_) / name).string();
}

std::string FileOutput::unusedPath() {
    struct stat status {};
    std::string path;
    do {
        const std::string name =
            ".vorund-" + std::to_string(::getpid()) + "-" + std::to_string(++last_number_);
        path = (fs::path(directory_) / name).string();
    } while (::lstat(path.c_str(), &status) == 0);
    return path;
}

void FileOutput::write(const std::string& name, const std::vector<std::uint8_t>& bytes) {
    const std::string target = pathOf(name);
    std::string temporary;
    int file = -1;
    do {  // Again, if another thread or process took the name meanwhile.
        temporary = unusedPath();
        file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
    } while (file < 0 && errno == EEXIST);
    if (file < 0) failWith(target, errno);
    entries_.push_back({temporary, target, false, {}, false});
    int error = writeAll(file, bytes);
    // Some file systems tell of a full disk only here.
    if (::close(file) != 0 && error == 0) error = errno;
    if (error == 0) return;
    removeAll(temporary, false);
    entries_.pop_back();
    failWith(target, error);
}

void FileOutput::writeImage(const std::string& name, const cv::Mat& image) {
    const std::string target = pathOf(name);
    const std::string ending = fs::path(name).extension().string();
    if (image.empty()) fail(target, "the image is empty");
    // OpenCV would narrow other types without a word.
    if (image.depth() != CV_8U && image.depth() != CV_16U) {
        fail(target, "only images of 8 or 16 bits per channel can be written");
    }
    if (ending.empty() || !cv::haveImageWriter(name)) {
        fail(target, "no image format goes by the ending '" + ending + "'");
    }
    std::vector<std::uint8_t> bytes;
    try {
        if (!cv::imencode(ending, image, bytes)) fail(target, "the image cannot be encoded");
    } catch (const cv::Exception& error) {
        fail(target, "the image cannot be encoded: " + error.err);
    }
    write(name, bytes);
}

std::string FileOutput::openDirectory(const std::string& name) {
    const std::string target = pathOf(name);
    std::string temporary;
    int made = -1;
    do {
        temporary = unusedPath();
        made = ::mkdir(temporary.c_str(), kDirectoryMode);
    } while (made != 0 && errno == EEXIST);
    if (made != 0) failWith(target, errno);
    entries_.push_back({temporary, target, true, {}, false});
    return temporary;
}

void FileOutput::place(Entry& entry) {
    struct stat status {};
    if (::lstat(entry.target.c_str(), &status) == 0) {
        const bool is_directory = S_ISDIR(status.st_mode);
        if (is_directory != entry.is_directory) {
            failWith(entry.target, is_directory ? EISDIR : ENOTDIR);
        }
        const std::string old = unusedPath();
        // A second name keeps the older file in its place until the new one replaces it.
        // Directories cannot have one, nor can files on some file systems.
        if (is_directory || ::link(entry.target.c_str(), old.c_str()) != 0) {
            if (std::rename(entry.target.c_str(), old.c_str()) != 0) failWith(entry.target, errno);
        }
        entry.old = old;
    }
    if (std::rename(entry.temporary.c_str(), entry.target.c_str()) != 0) {
        failWith(entry.target, errno);
    }
    entry.placed = true;
}

void FileOutput::takeBack(Entry& entry) noexcept {
    if (entry.placed) std::rename(entry.target.c_str(), entry.temporary.c_str());
    if (!entry.old.empty() && std::rename(entry.old.c_str(), entry.target.c_str()) == 0) {
        // Of two names of one file rename leaves both.
        if (!entry.is_directory) ::unlink(entry.old.c_str());
    }
    entry.placed = false;
    entry.old.clear();
}

void FileOutput::commit() {
    try {
        for (Entry& entry : entries_) place(entry);
    } catch (const std::runtime_error&) {
        for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) takeBack(*entry);
        throw;
    }
    for (const Entry& entry : entries_) {
        if (!entry.old.empty()) removeAll(entry.old, entry.is_directory);
    }
    entries_.clear();
    created_.clear();
}

}  // namespace vorund::rooms
