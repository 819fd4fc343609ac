#pragma once

#include <QIcon>

namespace rillbook {

enum class Picture { New, Open, Save, Station, Channel, Program };

// Drawn anew for each size that is asked for, so that it is sharp at any pixel ratio.
QIcon PictureIcon(Picture picture);

}  // namespace rillbook
