#pragma once

#include <gtest/gtest.h>

#include "flow/cuts.h"

namespace vorund::rooms {

/// Bit for bit.
inline void expectSameCuts(const Cuts& actual, const Cuts& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (const auto& [edge, line] : expected) {
        ASSERT_EQ(actual.count(edge), 1U) << edge.first << " " << edge.second;
        const GraphProcessor::OptimalLine& other = actual.at(edge);
        EXPECT_EQ(other.center, line.center);
        EXPECT_EQ(other.start, line.start);
        EXPECT_EQ(other.end, line.end);
        EXPECT_EQ(other.angle, line.angle);
        EXPECT_EQ(other.effective_length, line.effective_length);
        EXPECT_EQ(other.direction_weight, line.direction_weight);
        EXPECT_EQ(other.score, line.score);
    }
}

}  // namespace vorund::rooms
