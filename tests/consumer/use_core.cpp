// A program that knows the core library only as it is installed.
#include <vorund/vorund.h>

#include <cstdint>
#include <iostream>

#include "drawn_map.h"

int main() {
    vorund::setPlainOutput(nullptr);
    vorund::FloorplanSegmenter segmenter(vorund::Config(), vorund::Debugger::create({}));
    const cv::Mat labels = segmenter.doSegment(drawn_map::draw());
    const int left = labels.at<std::uint8_t>(drawn_map::centre(drawn_map::kLeft));
    const int right = labels.at<std::uint8_t>(drawn_map::centre(drawn_map::kRight));
    const int wall = labels.at<std::uint8_t>(0, 0);
    std::cout << "left " << left << ", right " << right << ", wall " << wall << '\n';
    return left != 0 && right != 0 && left != right && wall == 0 ? 0 : 1;
}
