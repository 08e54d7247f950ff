// Rooms in a file, so that a robot has them again after a restart without finding them anew.
#pragma once

#include <stdexcept>
#include <string>

#include "room_messages.h"

namespace vorund_ros {

/// A file that cannot be written or used: what() is one line that names it and the cause.
class SaveError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

struct SavedRooms {
    FoundRooms found;
    /// All besides the map that decided on the rooms: see `Choices::text`.
    std::string choices;
};

/// Writes the file under a temporary name and renames it, with the directories above it if they are
/// missing: whoever reads sees the older file or the whole new one.
/// @throws SaveError  also if something else than saved rooms has that name already.
void saveRooms(const std::string& path, const SavedRooms& saved);

/// @throws SaveError  if the file is missing, was cut or changed, holds something else, or was
///         written with other message definitions.
SavedRooms loadRooms(const std::string& path);

}  // namespace vorund_ros
