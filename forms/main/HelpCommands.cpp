#include "forms/main/HelpCommands.h"

#include "forms/main/frmAbout.h"

namespace rillbook {

void ShowAbout(QWidget* owner) {
    frmAbout form(owner);
    form.exec();
}

}  // namespace rillbook
