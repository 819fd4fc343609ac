#pragma once

#include <QString>
#include <QWidget>

#include "help/HelpWindow.h"

namespace rillbook {

// Shows a compiled help file in the help window. What hinders it is told in a message box.
class HTMLHelp {
public:
    QString CHMFile;           // full path of the help file
    QString HHWindow;          // name of a window type within the file; may be empty
    bool HHShowOnTop = false;  // the help window is owned by the calling form
    WId HHWndHandle = 0;       // of the window that the last display opened; 0 if it didn't

    void HHDisplayContents(QWidget* form = nullptr);
    void HHDisplayIndex(QWidget* form = nullptr);
    // `topic` is a path within the file, perhaps with an anchor.
    void HHDisplayTopic(const QString& topic, QWidget* form = nullptr);
    // Closes every help window of the program.
    void HHClose();

private:
    bool EnsureFileExists() const;
    // `operation` is the name under which the caller knows it.
    void Display(QWidget* form, HelpWindow::Side side, const QString& operation,
                 const QString& topic = {});
};

// The Help commands of all windows, on one object that is made at its first use.
void ShowHelpContents();
void ShowHelpIndex();
// Without a topic, shows the contents.
void ShowHelpTopic(const QString& topic);
// Closes the help, and lets go of the object.
void ReleaseHelp();

}  // namespace rillbook
