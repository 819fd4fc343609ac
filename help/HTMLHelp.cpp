#include "help/HTMLHelp.h"

#include <QFileInfo>
#include <memory>

#include "app/Application.h"
#include "help/ChmFile.h"
#include "help/HelpWindow.h"
#include "platform/desktop/MsgBox.h"

namespace rillbook {

namespace {

void Tell(const QString& text) {
    MsgBox(text, MsgBoxButtons::Ok, MsgBoxIcon::None, QStringLiteral("HTML Help Class"));
}

std::unique_ptr<HTMLHelp>& HelpObject() {
    static std::unique_ptr<HTMLHelp> object;
    return object;
}

HTMLHelp& HelpOnThisProgram() {
    if (!HelpObject()) {
        HelpObject() = std::make_unique<HTMLHelp>();
    }
    HelpObject()->CHMFile = Application::Path() + QStringLiteral("/rillbook.chm");
    return *HelpObject();
}

}  // namespace

void HTMLHelp::HHDisplayContents(QWidget* form) {
    Display(form, HelpWindow::Side::Contents, QStringLiteral("HHDisplayContents"));
}

void HTMLHelp::HHDisplayIndex(QWidget* form) {
    Display(form, HelpWindow::Side::Index, QStringLiteral("HHDisplayIndex"));
}

void HTMLHelp::HHDisplayTopic(const QString& topic, QWidget* form) {
    Display(form, HelpWindow::Side::Contents, QStringLiteral("HHDisplayTopic"), topic);
}

void HTMLHelp::HHClose() {
    HelpWindow::CloseAll();
}

bool HTMLHelp::EnsureFileExists() const {
    if (QFileInfo(CHMFile).isFile()) {
        return true;
    }
    Tell(QStringLiteral("The file ") + CHMFile +
         QStringLiteral(" does not exist.\n"
                        "Please make sure the correct path and file name have been specified."));
    return false;
}

void HTMLHelp::Display(QWidget* form, HelpWindow::Side side, const QString& operation,
                       const QString& topic) {
    if (!CHMFile.endsWith(u"chm")) {
        Tell(CHMFile + QStringLiteral(" is not a valid HTML Help file."));
        return;
    }
    if (!EnsureFileExists()) {
        return;
    }
    const bool namesWindow = !HHWindow.trimmed().isEmpty();
    const QString text = namesWindow ? CHMFile + u'>' + HHWindow : CHMFile;
    if (HHShowOnTop && form == nullptr) {
        Tell(QStringLiteral("The ") + operation +
             QStringLiteral(" method was called without a form being specified, while "
                            "HHShowOnTop was set to True."));
        return;
    }
    HHWndHandle = 0;
    try {
        HHWndHandle = HelpWindow::Display(HHShowOnTop ? form : nullptr, text, side, topic).winId();
    } catch (const HelpFileError&) {
        Tell(QStringLiteral("The file ") + CHMFile +
             QStringLiteral(" cannot be displayed.\n"
                            "It is damaged, or is not a compiled HTML Help file."));
    }
}

void ShowHelpContents() {
    HelpOnThisProgram().HHDisplayContents();
}

void ShowHelpIndex() {
    HelpOnThisProgram().HHDisplayIndex();
}

void ShowHelpTopic(const QString& topic) {
    HelpOnThisProgram().HHDisplayTopic(topic);
}

void ReleaseHelp() {
    if (HelpObject()) {
        HelpObject()->HHClose();
        HelpObject().reset();
    }
}

}  // namespace rillbook
