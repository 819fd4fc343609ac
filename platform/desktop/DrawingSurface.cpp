#include "platform/desktop/DrawingSurface.h"

namespace rillbook {

void DrawingSurface::Print(const QString& text) {
    DrawText(CurrentX, CurrentY, text);
    CurrentX = 0;
    CurrentY += TextHeight(text);
}

void DrawingSurface::PrintOn(const QString& text) {
    DrawText(CurrentX, CurrentY, text);
    CurrentX += TextWidth(text);
}

}  // namespace rillbook
