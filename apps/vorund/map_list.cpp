#include "map_list.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "arguments.h"

namespace vorund::app {
namespace {

namespace fs = std::filesystem;

constexpr char kTruthMark[] = "_gt_segmentation";
constexpr std::array<const char*, 10> kImageEndings{".bmp", ".jpeg", ".jpg", ".pbm",  ".pgm",
                                                    ".png", ".ppm",  ".tif", ".tiff", ".webp"};

/// In small letters.
std::string endingOf(const fs::path& path) {
    std::string ending = path.extension().string();
    for (char& letter : ending) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    }
    return ending;
}

bool isYaml(const fs::path& path) {
    const std::string ending = endingOf(path);
    return ending == ".yaml" || ending == ".yml";
}

bool isImage(const fs::path& path) {
    const std::string ending = endingOf(path);
    return std::find(kImageEndings.begin(), kImageEndings.end(), ending) != kImageEndings.end();
}

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

bool holdsTruth(const fs::path& path) {
    return path.filename().string().find(kTruthMark) != std::string::npos;
}

/// The image that a YAML file names, as a path; empty if it names none.
fs::path imageOf(const fs::path& yaml) {
    if (!isFile(yaml)) return {};
    try {
        const YAML::Node root = YAML::LoadFile(yaml.string());
        if (!root.IsMap() || !root["image"] || !root["image"].IsScalar()) return {};
        return yaml.parent_path() / root["image"].Scalar();
    } catch (const YAML::Exception&) {
        return {};
    }
}

bool isBrokenYaml(const fs::path& path) {
    try {
        YAML::LoadFile(path.string());
        return false;
    } catch (const YAML::Exception&) {
        return true;
    }
}

/// A broken YAML file counts, so that it is told; one about something else does not.
bool isMap(const fs::path& path) {
    if (path.filename().string().front() == '.' || !isFile(path)) return false;
    if (isYaml(path)) return !imageOf(path).empty() || isBrokenYaml(path);
    return isImage(path);
}

std::vector<fs::path> mapsOfFolder(const std::string& folder) {
    std::vector<fs::path> maps;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (isMap(entry->path())) maps.push_back(entry->path());
    }
    if (error) throw std::runtime_error(folder + ": " + error.message());
    if (maps.empty()) throw std::runtime_error(folder + ": it holds no map");
    return maps;
}

bool isFolder(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

bool isSameFile(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return fs::equivalent(a, b, error) && !error;
}

std::vector<fs::path> allFiles(const std::vector<std::string>& given) {
    std::vector<fs::path> files;
    for (const std::string& path : given) {
        if (!isFolder(path)) {
            files.emplace_back(path);
            continue;
        }
        const std::vector<fs::path> more = mapsOfFolder(path);
        files.insert(files.end(), more.begin(), more.end());
    }
    return files;
}

void removeImagesOfYamls(std::vector<fs::path>& files) {
    std::vector<fs::path> images;
    for (const fs::path& file : files) {
        if (!isYaml(file)) continue;
        const fs::path image = imageOf(file);
        if (!image.empty()) images.push_back(image);
    }
    const auto is_named = [&](const fs::path& file) {
        return !isYaml(file) &&
               std::any_of(images.begin(), images.end(),
                           [&](const fs::path& image) { return isSameFile(file, image); });
    };
    files.erase(std::remove_if(files.begin(), files.end(), is_named), files.end());
}

}  // namespace

bool isBatch(const std::vector<std::string>& given) {
    return given.size() > 1 || (given.size() == 1 && isFolder(given.front()));
}

std::vector<NamedMap> findMaps(const std::vector<std::string>& given) {
    std::vector<fs::path> files = allFiles(given);
    files.erase(std::remove_if(files.begin(), files.end(), holdsTruth), files.end());
    removeImagesOfYamls(files);
    std::vector<NamedMap> maps;
    for (const fs::path& file : files) maps.push_back({file.stem().string(), file.string()});
    if (maps.empty()) throw std::runtime_error(given.front() + ": it holds no map");
    std::sort(maps.begin(), maps.end(), [](const NamedMap& a, const NamedMap& b) {
        return a.name != b.name ? a.name < b.name : a.path < b.path;
    });
    const auto twin =
        std::adjacent_find(maps.begin(), maps.end(),
                           [](const NamedMap& a, const NamedMap& b) { return a.name == b.name; });
    if (twin != maps.end()) {
        throw UsageError("two maps are called " + twin->name + ": " + twin->path + " and " +
                         (twin + 1)->path);
    }
    return maps;
}

}  // namespace vorund::app
