// export_inputs SIDE SETTINGS DIRECTORY: writes what the stages that others have as well take, as
// .npy files, and the map as map.png.
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>

#include "inputs.h"

namespace vorund::bench {
namespace {

/// NumPy's format, version 1.0: magic, length of the header, header, rows.
void writeNpy(const std::string& path, const cv::Mat& image) {
    if (image.type() != CV_32FC1 && image.type() != CV_32SC1) {
        throw std::invalid_argument(path + ": only 32-bit images are written");
    }
    constexpr std::size_t kPrefix = 10;
    constexpr std::size_t kAlignment = 64;
    std::string header = std::string("{'descr': '") + (image.depth() == CV_32F ? "<f4" : "<i4") +
                         "', 'fortran_order': False, 'shape': (" + std::to_string(image.rows) +
                         ", " + std::to_string(image.cols) + "), }";
    header.append(kAlignment - (kPrefix + header.size() + 1) % kAlignment, ' ');
    header += '\n';
    std::ofstream file(path, std::ios::binary);
    file << "\x93NUMPY" << '\x01' << '\x00' << static_cast<char>(header.size() % 256)
         << static_cast<char>(header.size() / 256) << header;
    const cv::Mat rows = image.isContinuous() ? image : image.clone();
    file.write(reinterpret_cast<const char*>(rows.data),
               static_cast<std::streamsize>(rows.total() * rows.elemSize()));
    if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

void run(int side, Kind kind, const std::string& directory) {
    const Tile& tile = tileOf(side, kind);
    writeNpy(directory + "/denoised.npy", enlarged(tile.denoised, side));
    writeNpy(directory + "/ridges.npy", enlarged(tile.ridges, side));
    writeNpy(directory + "/markers.npy", enlarged(tile.markers, side));
    writeNpy(directory + "/boundary.npy", enlarged(tile.boundary, side));
    writeNpy(directory + "/fill_seeds.npy", enlarged(tile.fill_seeds, side));
    if (!cv::imwrite(directory + "/map.png", enlarged(tile.map.picture, side))) {
        throw std::runtime_error(directory + "/map.png: cannot be written");
    }
}

}  // namespace
}  // namespace vorund::bench

int main(int argc, char** argv) {
    try {
        if (argc != 4) throw std::invalid_argument("export_inputs SIDE SETTINGS DIRECTORY");
        vorund::bench::beQuietAndSingleThreaded();
        vorund::bench::run(std::stoi(argv[1]), vorund::bench::kindOf(argv[2]), argv[3]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
