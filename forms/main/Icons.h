#pragma once

#include <QIcon>

namespace rillbook {

enum class Picture { New, Open, Save, Station, Channel, Program };

// An icon from data/icons, drawn from its SVG at each size, so that it is sharp at any pixel ratio.
QIcon PictureIcon(Picture picture);

}  // namespace rillbook
