#pragma once

namespace vorund::internal {

/// What values of the pyramid say of the map around them, for one scale and threshold.
///
/// They differ from those of `cv::GaussianBlur` in that its kernel ends at 4 sigma and is scaled to
/// a sum of 1, by interpolation, and by rounding. How far they vary within a distance is bounded as
/// well: for an image of values from 0 to 1, blurred by a Gaussian, sigma times the normal quantile
/// of the result changes by at most 1 per pixel (D. Bakry and M. Ledoux, "Levy-Gromov's
/// isoperimetric inequality for an infinite dimensional diffusion generator", 1996).
class ContourBounds {
 public:
    /// @param sigma      Of the blur, at least 4. [pixels]
    /// @param threshold  As compared, between 0 and 1.
    /// @param spacing    Of the nodes, at most sigma / 2. [pixels]
    ContourBounds(double sigma, double threshold, int spacing);

    /// Up to this value every pixel within the distance is at or below the threshold. [pixels]
    float surelyAtMost(double distance) const;

    /// Above this value every pixel within the distance is above the threshold.
    float surelyAbove(double distance) const;

 private:
    double step_;   ///< Change of the normal quantile per pixel.
    double error_;  ///< Of a value of the pyramid.
    double low_;    ///< Normal quantiles of the true blur at which the threshold may be reached.
    double high_;
};

}  // namespace vorund::internal
