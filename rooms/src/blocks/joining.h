#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "blocks/block_seeds.h"
#include "blocks/division.h"

namespace vorund::rooms {

/// The seeds that were found in a block.
struct SeededBlock {
    Block block;
    Seeds seeds;  ///< Of the view.
};

/// The seeds of all blocks in one image.
///
/// Every pixel takes the seed that the block has found in whose core it lies. Two blocks find the
/// same where both see well: in half of what they see beyond their cores. There, seeds of which
/// most of the smaller one lies in the other are one, and so is everything that is one with them in
/// turn. They are numbered by their births, as the core does it in one piece: at lines between
/// rooms it matters which of the two has the smaller number.
/// @return `CV_32SC1`: 0 = floor without a seed, 255 = wall (also where no block is), other values
///         = seeds.
cv::Mat joinSeeds(const std::vector<SeededBlock>& blocks, const cv::Size& size);

}  // namespace vorund::rooms
