#pragma once

class QWidget;

namespace rillbook {

// What the Help menus of the main window and of the reports share.

// Shows the box with the program's version over `owner` and waits.
void ShowAbout(QWidget* owner);

}  // namespace rillbook
