#include "platform/qt/RememberedWindow.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>
#include <QWidget>
#include <algorithm>

#include "platform/qt/Twips.h"
#include "platform/text/Numbers.h"

namespace rillbook {

namespace {

enum WindowState : std::int16_t { vbNormal = 0, vbMinimized = 1, vbMaximized = 2 };

// As much of a window's head as the user needs to take hold of it.
constexpr QSize kGrip(60, 20);

}  // namespace

QPoint PlaceInView(const QRect& window) {
    const QRect head(window.topLeft(), QSize(window.width(), kGrip.height()));
    const QList<QScreen*> screens = QGuiApplication::screens();
    const bool seen = std::any_of(screens.begin(), screens.end(), [&head](const QScreen* screen) {
        const QRect shared = screen->availableGeometry().intersected(head);
        return shared.width() >= std::min(kGrip.width(), head.width()) &&
               shared.height() >= kGrip.height();
    });
    if (seen || screens.isEmpty()) {
        return window.topLeft();
    }
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    return {std::clamp(window.left(), room.left(),
                       std::max(room.left(), room.right() + 1 - window.width())),
            std::clamp(window.top(), room.top(),
                       std::max(room.top(), room.bottom() + 1 - window.height()))};
}

void StoreTwips(std::int16_t& twips, int pixels) {
    if (ToPixels(twips) != pixels) {
        twips = ToInt16(ToTwips(pixels));
    }
}

void RememberedWindow::Restore(QWidget& window) const {
    window.resize(ToPixels(width), ToPixels(height));
    window.move(PlaceInView(QRect(QPoint(ToPixels(left), ToPixels(top)), window.size())));
    if (state == vbMaximized) {
        window.setWindowState(Qt::WindowMaximized);
    } else if (state == vbMinimized) {
        window.setWindowState(Qt::WindowMinimized);
    }
}

void RememberedWindow::Remember(const QWidget& window) const {
    if (window.isMinimized()) {
        state = vbMinimized;
    } else if (window.isMaximized() || window.isFullScreen()) {
        state = vbMaximized;
    } else {
        state = vbNormal;
        StoreTwips(height, window.height());
        StoreTwips(width, window.width());
        StoreTwips(top, window.y());
        StoreTwips(left, window.x());
    }
}

}  // namespace rillbook
