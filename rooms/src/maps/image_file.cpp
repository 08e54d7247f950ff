#include "maps/image_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <opencv2/imgcodecs.hpp>
#include <optional>
#include <system_error>

#include "vorund/rooms/map_reader.h"

namespace vorund::rooms {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// More is no map; without a limit a device that never ends would eat all memory.
constexpr std::size_t kMostBytes = std::size_t{1} << 30;

constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::array<std::uint8_t, 3> kJpegSignature{0xFF, 0xD8, 0xFF};
constexpr std::array<std::uint8_t, 2> kJpegScan{0xFF, 0xDA};
constexpr std::array<std::uint8_t, 2> kJpegEnd{0xFF, 0xD9};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string systemMessage(int error) {
    return std::generic_category().message(error);
}

template <std::size_t N>
bool startsWith(const Bytes& bytes, const std::array<std::uint8_t, N>& signature) {
    return bytes.size() >= N && std::equal(signature.begin(), signature.end(), bytes.begin());
}

/// Whether the chunks go on to the closing one.
bool isWholePng(const Bytes& bytes) {
    constexpr std::size_t kAroundData = 12;  // Length, type and checksum.
    std::size_t at = kPngSignature.size();
    while (bytes.size() - at >= kAroundData) {
        const std::uint8_t* chunk = bytes.data() + at;
        const std::size_t length = (std::size_t{chunk[0]} << 24) | (std::size_t{chunk[1]} << 16) |
                                   (std::size_t{chunk[2]} << 8) | std::size_t{chunk[3]};
        if (length > bytes.size() - at - kAroundData) return false;
        if (std::memcmp(chunk + 4, "IEND", 4) == 0) return true;
        at += length + kAroundData;
    }
    return false;
}

/// Whether the end marker follows the last scan: the decoder fills what is missing with grey.
bool isWholeJpeg(const Bytes& bytes) {
    const auto scan = std::find_end(bytes.begin(), bytes.end(), kJpegScan.begin(), kJpegScan.end());
    return std::search(scan, bytes.end(), kJpegEnd.begin(), kJpegEnd.end()) != bytes.end();
}

/// The header of a PBM, PGM or PPM file.
struct Pnm {
    char kind = '5';  ///< "P1" to "P6"
    std::size_t width = 0;
    std::size_t height = 0;
    int most = 1;          ///< The value of white.
    std::size_t data = 0;  ///< Where the pixels of a binary file start.

    bool isText() const { return kind <= '3'; }
    bool isBitmap() const { return kind == '1' || kind == '4'; }
};

/// The next number of a header. Comments run from # to the end of their line.
std::optional<int> nextNumber(const Bytes& bytes, std::size_t& at) {
    while (at < bytes.size() && (std::isspace(bytes[at]) != 0 || bytes[at] == '#')) {
        if (bytes[at] == '#') {
            while (at < bytes.size() && bytes[at] != '\n') ++at;
        } else {
            ++at;
        }
    }
    std::optional<int> number;
    for (; at < bytes.size() && std::isdigit(bytes[at]) != 0; ++at) {
        const int digit = bytes[at] - '0';
        if (number.value_or(0) > (std::numeric_limits<int>::max() - digit) / 10) return {};
        number = number.value_or(0) * 10 + digit;
    }
    return number;
}

std::optional<Pnm> pnmHeader(const Bytes& bytes) {
    if (bytes.size() < 3 || bytes[0] != 'P' || bytes[1] < '1' || bytes[1] > '6') return {};
    Pnm pnm;
    pnm.kind = static_cast<char>(bytes[1]);
    std::size_t at = 2;
    const std::optional<int> width = nextNumber(bytes, at);
    const std::optional<int> height = nextNumber(bytes, at);
    const std::optional<int> most = pnm.isBitmap() ? 1 : nextNumber(bytes, at);
    if (!width || !height || !most || *most == 0) return {};
    pnm.width = static_cast<std::size_t>(*width);
    pnm.height = static_cast<std::size_t>(*height);
    pnm.most = *most;
    pnm.data = at + 1;  // After a single blank.
    return pnm;
}

bool isWholePnm(const Pnm& pnm, const Bytes& bytes) {
    if (pnm.isText()) return true;  // The decoder misses every number that is not there.
    const std::size_t samples = pnm.kind == '6' ? 3 * pnm.width : pnm.width;
    const std::size_t row =
        pnm.isBitmap() ? (pnm.width + 7) / 8 : samples * (pnm.most > 255 ? 2 : 1);
    if (row == 0 || pnm.height == 0) return true;  // For the decoder to reject.
    return bytes.size() >= pnm.data && (bytes.size() - pnm.data) / row >= pnm.height;
}

bool isWhole(const Bytes& bytes, const std::optional<Pnm>& pnm) {
    if (startsWith(bytes, kPngSignature)) return isWholePng(bytes);
    if (startsWith(bytes, kJpegSignature)) return isWholeJpeg(bytes);
    return !pnm || isWholePnm(*pnm, bytes);
}

cv::Mat decode(const std::string& path, const Bytes& bytes) {
    try {
        return cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
    } catch (const cv::Exception&) {
        return {};  // Its cause is a line of OpenCV's source.
    } catch (const std::bad_alloc&) {
        throw MapError(path + ": the image is too large for the memory");
    }
}

bool isSupported(const cv::Mat& image) {
    const int channels = image.channels();
    return (image.depth() == CV_8U || image.depth() == CV_16U) &&
           (channels == 1 || channels == 3 || channels == 4);
}

/// OpenCV brings text files of up to 8 bits to the range of a byte, and leaves all others alone.
int fullRange(const std::optional<Pnm>& pnm, const cv::Mat& image) {
    const int of_type = image.depth() == CV_8U ? 255 : 65535;
    if (!pnm || pnm->isBitmap() || (pnm->isText() && of_type == 255)) return of_type;
    return pnm->most;
}

}  // namespace

std::vector<std::uint8_t> readBytes(const std::string& path) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file) throw MapError(path + ": " + systemMessage(errno));
    Bytes bytes;
    std::array<std::uint8_t, 65536> block{};
    std::size_t count = block.size();
    while (count == block.size()) {
        count = std::fread(block.data(), 1, block.size(), file.get());
        if (std::ferror(file.get()) != 0) throw MapError(path + ": " + systemMessage(errno));
        bytes.insert(bytes.end(), block.data(), block.data() + count);
        if (bytes.size() > kMostBytes) throw MapError(path + ": the file is larger than 1 GiB");
    }
    if (bytes.empty()) throw MapError(path + ": the file is empty");
    return bytes;
}

ImageFile readImageFile(const std::string& path) {
    Bytes bytes = readBytes(path);
    const std::optional<Pnm> pnm = pnmHeader(bytes);
    if (!isWhole(bytes, pnm)) throw MapError(path + ": the image is cut off");
    // The decoder wants a blank after the last number too.
    if (pnm && pnm->isText()) bytes.push_back('\n');
    const cv::Mat image = decode(path, bytes);
    if (image.empty()) throw MapError(path + ": it cannot be decoded as an image");
    if (!isSupported(image)) {
        throw MapError(path +
                       ": unsupported pixel type: only 8 or 16 bits per channel and 1, 3 or 4 "
                       "channels are read");
    }
    return {image, fullRange(pnm, image)};
}

}  // namespace vorund::rooms
