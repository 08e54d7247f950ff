#include "presets.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "arguments.h"

namespace vorund::app {
namespace {

namespace fs = std::filesystem;

constexpr char kEnding[] = ".yaml";

fs::path folderOfPresets() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).parent_path() / VORUND_PRESETS;
}

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (entry->path().extension() == kEnding) names.push_back(entry->path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

std::string presetFile(const std::string& name) {
    const fs::path folder = folderOfPresets();
    const std::vector<std::string> names = namesIn(folder);
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        return (folder / (name + kEnding)).lexically_normal().string();
    }
    std::string all;
    for (const std::string& known : names) all += (all.empty() ? "" : ", ") + known;
    if (all.empty()) all = "none in " + folder.lexically_normal().string();
    throw UsageError("--preset: no preset " + name + " (there are: " + all + ")");
}

}  // namespace vorund::app
