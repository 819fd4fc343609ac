#include "platform/desktop/Screen.h"

#include "platform/desktop/Desktop.h"

namespace rillbook {

Hourglass::Hourglass() : isOutermost_(TheScreen().MousePointer() != vbHourglass) {
    if (isOutermost_) {
        TheScreen().SetMousePointer(vbHourglass);
    }
}

Hourglass::~Hourglass() {
    if (isOutermost_) {
        TheScreen().SetMousePointer(vbDefault);
    }
}

}  // namespace rillbook
