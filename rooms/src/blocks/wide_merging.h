#pragma once

#include "flow/merging.h"

namespace vorund::rooms {

/// As `mergeBySizeAndBorderLength`, and with the same result. The library's passes search the whole
/// graph again and go through both images for every merge; here the graph alone is merged, the next
/// merge is taken from an ordered set, and the images follow once at the end of a pass.
///
/// Isolated small rooms are not looked for: `removeIslands` has left none.
void mergeWide(RoomGraph& rooms, const Config& config, const PassObserver& after_pass);

}  // namespace vorund::rooms
