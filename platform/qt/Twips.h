#pragma once

namespace rillbook {

// Sizes on forms are in twips, 1440 to the inch; a pixel is 15 of them at the screen's logical 96
// dots to the inch.
constexpr int kTwipsPerPixel = 15;

constexpr int ToPixels(int twips) {
    return (twips + (twips < 0 ? -7 : 7)) / kTwipsPerPixel;
}
constexpr int ToTwips(int pixels) {
    return pixels * kTwipsPerPixel;
}

}  // namespace rillbook
