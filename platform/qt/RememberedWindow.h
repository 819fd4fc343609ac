#pragma once

#include <QPoint>
#include <QRect>
#include <cstdint>

class QWidget;

namespace rillbook {

// Where a window that would open beyond every screen (a second monitor that is gone) can be taken
// hold of on the first one; its own place where it is in view. In pixels.
QPoint PlaceInView(const QRect& window);

// Stores a number of pixels as twips, held at the limits of 16 bits. A pixel is several twips: a
// number that stands for the same pixels stays as it is.
void StoreTwips(std::int16_t& twips, int pixels);

// Where a window stood when it was last closed, in twips: the shared settings that hold it. `state`
// is 0 normal, 1 minimised, 2 maximised; any other number counts as normal.
struct RememberedWindow {
    std::int16_t& height;
    std::int16_t& width;
    std::int16_t& top;
    std::int16_t& left;
    std::int16_t& state;

    // Sets size, position (in view) and state of a window that hasn't been shown.
    void Restore(QWidget& window) const;

    // Stores the state, and size and position if the window is in the normal state: what is closed
    // maximised keeps the size that it goes back to. Beyond 16 bits a number stays at the limit.
    void Remember(const QWidget& window) const;
};

}  // namespace rillbook
