#include "ridges/hessian.h"

#include <gmock/gmock.h>

#include <opencv2/imgproc.hpp>

#include "support/mat_matchers.h"
#include "support/random_images.h"
#include "vorund/ridge_filter.h"

namespace vorund::internal {
namespace {

using test::MatEq;

/// Whether OpenCV adds products to its sums by fused multiply-adds here.
bool openCvFuses() {
#if defined(__aarch64__)
    return true;
#else
    return cv::checkHardwareSupport(CV_CPU_AVX2) && cv::checkHardwareSupport(CV_CPU_FMA3);
#endif
}

TEST(Hessian, IsWhatOpenCvsFiltersGive) {
    test::RandomImages random(61);
    for (const double sigma : {0.5, 1.0, 1.4142, 3.0}) {
        const cv::Mat image = random.floats(cv::Size(150, 90), 1000);
        const cv::Mat smooth = RidgeFilter::getGaussianKernel1D(0, sigma, 0);
        const cv::Mat derive = RidgeFilter::getGaussianKernel1D(0, sigma, 1);
        const auto filter = [](const cv::Mat& source, const cv::Mat& row, const cv::Mat& column) {
            cv::Mat result;
            cv::sepFilter2D(source, result, CV_32F, row, column, cv::Point(-1, -1), 0.0,
                            cv::BORDER_REFLECT_101);
            return result;
        };
        const cv::Mat x = filter(image, derive, smooth);
        const cv::Mat y = filter(image, smooth, derive);
        Hessian hessian(image, smooth, derive, cv::BORDER_REFLECT_101);
        hessian.filterRows({0, image.rows});
        const auto expectEqual = [](const cv::Mat& own, const cv::Mat& theirs) {
            EXPECT_LE(cv::norm(own, theirs, cv::NORM_INF), 1e-6 * cv::norm(theirs, cv::NORM_INF));
            if (openCvFuses()) {
                EXPECT_THAT(own, MatEq(theirs));
            }
        };
        SCOPED_TRACE(sigma);
        expectEqual(hessian.xx, filter(x, derive, smooth));
        expectEqual(hessian.xy, filter(x, smooth, derive));
        expectEqual(hessian.yy, filter(y, smooth, derive));
    }
}

TEST(Hessian, OfSomeRowsIsPartOfThatOfAll) {
    test::RandomImages random(62);
    const cv::Mat image = random.floats(cv::Size(40, 60), 1000);
    const cv::Mat smooth = RidgeFilter::getGaussianKernel1D(0, 1.5, 0);
    const cv::Mat derive = RidgeFilter::getGaussianKernel1D(0, 1.5, 1);
    for (const int border : {cv::BORDER_REFLECT_101, cv::BORDER_REPLICATE, cv::BORDER_CONSTANT}) {
        Hessian all(image, smooth, derive, border);
        all.filterRows({0, image.rows});
        Hessian some(image, smooth, derive, border);
        for (const cv::Range& rows :
             {cv::Range(59, 60), cv::Range(0, 1), cv::Range(20, 45), cv::Range(3, 58)}) {
            some.filterRows(rows);
            EXPECT_THAT(some.xx, MatEq(all.xx.rowRange(rows)));
            EXPECT_THAT(some.xy, MatEq(all.xy.rowRange(rows)));
            EXPECT_THAT(some.yy, MatEq(all.yy.rowRange(rows)));
        }
    }
}

}  // namespace
}  // namespace vorund::internal
