#include "platform/desktop/Screen.h"

#include "platform/desktop/Desktop.h"

namespace rillbook {

Hourglass::Hourglass() {
    TheScreen().SetMousePointer(vbHourglass);
}

Hourglass::~Hourglass() {
    TheScreen().SetMousePointer(vbDefault);
}

}  // namespace rillbook
