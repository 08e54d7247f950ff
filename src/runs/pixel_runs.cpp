#include "runs/pixel_runs.h"

#include <cstdint>

#include "internal/runs.h"

namespace vorund::internal {

PixelRuns pixelsNotAbove(const cv::Mat& values, double threshold) {
    PixelRuns runs(values.rows);
    // As bytes, which are searched much faster than floats.
    std::vector<std::uint8_t> above(static_cast<std::size_t>(values.cols) + 1);
    std::uint8_t* const bytes = above.data();
    const int cols = values.cols;
    const auto limit = static_cast<float>(threshold);
    for (int row = 0; row < values.rows; ++row) {
        const float* const value = values.ptr<float>(row);
        for (int col = 0; col < cols; ++col) bytes[col] = value[col] > limit ? 1 : 0;
        for (int begin = findByte(bytes, 0, cols, 0); begin < cols;) {
            const int end = findByte(bytes, begin, cols, 1);
            runs.add(begin, end);
            begin = findByte(bytes, end, cols, 0);
        }
        runs.closeRow();
    }
    return runs;
}

PixelRuns nonZeroPixels(const cv::Mat& bytes) {
    PixelRuns runs(bytes.rows);
    for (int row = 0; row < bytes.rows; ++row) {
        forEachRun(bytes.ptr<std::uint8_t>(row), bytes.cols,
                   [&](int begin, int end, std::uint8_t value) {
                       if (value != 0) runs.add(begin, end);
                   });
        runs.closeRow();
    }
    return runs;
}

PixelRuns complement(const PixelRuns& runs, int cols) {
    PixelRuns others(runs.rows());
    for (int row = 0; row < runs.rows(); ++row) {
        int begin = 0;
        for (std::size_t i = runs.rowBegin(row); i < runs.rowBegin(row + 1); ++i) {
            if (begin < runs[i].begin) others.add(begin, runs[i].begin);
            begin = runs[i].end;
        }
        if (begin < cols) others.add(begin, cols);
        others.closeRow();
    }
    return others;
}

cv::Rect boundsOf(const PixelRuns& runs) {
    cv::Rect bounds;
    runs.visit([&](int row, const PixelRun& run) {
        bounds |= cv::Rect(run.begin, row, run.end - run.begin, 1);
    });
    return bounds;
}

}  // namespace vorund::internal
