#include <QLocale>
#include <cstdlib>
#include <optional>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "forms/main/DesktopApplication.h"
#include "forms/main/Icons.h"
#include "forms/main/frmMain.h"
#include "platform/qt/FontListAhead.h"
#include "platform/qt/QtDoors.h"
#include "platform/text/Regional.h"
#include "store/StationDatabase.h"

namespace rillbook {

namespace {

void Main() {
    LoadAppSettings();
    FillMonthNames();
    StationConnection = std::make_unique<Connection>();
    std::atexit(CloseAtExit);
    auto* form = new frmMain;
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->show();
}

}  // namespace

}  // namespace rillbook

int main(int argc, char* argv[]) {
    std::optional<rillbook::FontListAhead> fontList(std::in_place);
    rillbook::DesktopApplication application(argc, argv);
    fontList.reset();
    rillbook::DesktopApplication::setDesktopFileName(QStringLiteral("rillbook"));
    rillbook::DesktopApplication::setWindowIcon(rillbook::PictureIcon(rillbook::Picture::Program));
    const rillbook::QtDoors doors(rillbook::Application::Title());
    rillbook::RegionalSettings() = rillbook::RegionalFromLocale(QLocale::system());
    rillbook::Main();
    return rillbook::DesktopApplication::exec();
}
