#pragma once

namespace vorund::internal {

/// Isolated rooms below this part of the area of all rooms are small whatever the settings say.
inline constexpr double kSmallPartOfMap = 0.01;

}  // namespace vorund::internal
