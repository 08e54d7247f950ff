#include "report.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>

namespace vorund::app {
void printResult(const std::string& text) {
    std::cout << text << std::flush;
    if (!std::cout) throw std::runtime_error("standard output: cannot be written to");
}

std::string errorLine(const std::string& text) {
    const auto is_control = [](char letter) {
        return static_cast<unsigned char>(letter) < ' ' || letter == '\x7f';
    };
    std::string line = "vorund: " + text;
    while (is_control(line.back())) line.pop_back();
    std::replace_if(line.begin(), line.end(), is_control, ' ');
    return line + "\n";
}

std::string causeOf(const std::exception& error) {
    if (const auto* const of_opencv = dynamic_cast<const cv::Exception*>(&error)) {
        if (of_opencv->code == cv::Error::StsNoMem) return "not enough memory";
        return of_opencv->err + " (in " + of_opencv->func + " of OpenCV)";
    }
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "not enough memory";
    return error.what();
}

}  // namespace vorund::app
