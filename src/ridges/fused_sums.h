#pragma once

namespace vorund::internal {

/// Sums of products of floats, as filters need them, that every processor rounds alike: a product
/// is added to its sum by a fused multiply-add (one rounding, IEEE 754), in the order of the
/// kernel. OpenCV's filters do the same where the processor has that instruction, but where it has
/// not, as many an Intel Atom or Celeron, they round twice; here it is then computed.

/// Filters along a row: `sums[i]` is the sum of `kernel[t] * values[i + t]` by ascending t.
/// @param values  `count + taps - 1` values.
/// @param taps    At least 1.
void sumAlongRow(const float* values, const float* kernel, int taps, float* sums, int count);

/// Whether the two halves of a kernel are equal or opposite.
enum class Symmetry { kEven, kOdd };

/// Filters down columns: `sums[i]` is that of `kernel[0] * rows[0][i]` and, by ascending t, of
/// `kernel[t] * (rows[t][i] + rows[-t][i])`; with kOdd the rows are subtracted and the middle one
/// left out.
/// @param rows    Points to the middle one of `2 * reach + 1` rows.
/// @param kernel  Points to the middle one of its entries; those after it are used.
void sumDownColumns(const float* const* rows, const float* kernel, int reach, Symmetry symmetry,
                    float* sums, int count);

/// The same computed without the instruction, for tests on a processor that has it.
void sumAlongRowComputed(const float* values, const float* kernel, int taps, float* sums,
                         int count);
void sumDownColumnsComputed(const float* const* rows, const float* kernel, int reach,
                            Symmetry symmetry, float* sums, int count);

}  // namespace vorund::internal
