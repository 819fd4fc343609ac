#pragma once

#include <QString>

namespace rillbook {

// Whether an errno means that the disk, or this user's share of it, has no room for the bytes.
bool IsDiskFull(int error);

// The reason of a failed system call, for the user: "The disk is full", or the system's own text.
QString SystemReason(int error);

}  // namespace rillbook
