#pragma once

class QPainter;

namespace rillbook {

// Draws the program's icon, the one that the desktop shows too, on a field of 16 by 16 units. Reads
// data/icons/rillbook.svg, which keeps to the few things that its head names; warns of any other.
void DrawProgramIcon(QPainter& painter);

}  // namespace rillbook
