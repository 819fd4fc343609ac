#include "platform/qt/FontListAhead.h"

#include <fontconfig/fontconfig.h>

namespace rillbook {

FontListAhead::FontListAhead() : reading_([] { FcInit(); }) {}

}  // namespace rillbook
