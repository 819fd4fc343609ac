#include "platform/text/SystemReason.h"

#include <cerrno>

namespace rillbook {

bool IsDiskFull(int error) {
    return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

QString SystemReason(int error) {
    return IsDiskFull(error) ? QStringLiteral("The disk is full") : qt_error_string(error);
}

}  // namespace rillbook
