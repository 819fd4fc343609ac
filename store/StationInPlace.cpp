#include "store/StationInPlace.h"

#include <QFileInfo>
#include <utility>

#include "platform/ado/AdoError.h"
#include "platform/ado/DatabaseFile.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/FileDraft.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Screen.h"
#include "store/StationDatabase.h"
#include "store/StationPanel.h"

namespace rillbook {

namespace {

void Require(const QString& reason) {
    if (!reason.isEmpty()) {
        throw AdoError(adErrGeneral, reason, AdoCause::Access);
    }
}

// Puts what the connection holds at a path, complete and synced, or raises AdoError and leaves the
// present file unchanged.
void CopyStationTo(const QString& path) {
    const Hourglass hourglass;
    const QFileInfo present(path);
    const QString place = present.exists() ? present.canonicalFilePath() : path;
    FileDraft draft(place);
    Require(draft.Create());
    StationConnection->CopyTo(draft.Path());
    // The pages of a file that was written over may belong to two stations.
    ado::RequireSound(ado::OpenUntouched(draft.Path()).get(), draft.Path());
    Require(draft.TakePlace([&place] { return RemoveCompanions(place); }));
}

// The name that the user gives; empty if the user cancels.
QString AskForName() {
    CommonDialog dialog;
    dialog.DialogTitle = QStringLiteral("Save Station As");
    dialog.Filter = QStringLiteral("Access Files (*.mdb)|*.mdb|All Files (*.*)|*.*");
    dialog.Flags = cdlOFNOverwritePrompt | cdlOFNHideReadOnly;
    dialog.InitDir = QFileInfo(StationPath).absolutePath();
    try {
        dialog.ShowSave();
    } catch (const DialogCancelledError&) {
        return {};
    }
    return dialog.FileName;
}

QString FaultOfName(const QString& path) {
    const QString station = QFileInfo(StationPath).canonicalFilePath();
    if (!station.isEmpty() && QFileInfo(path).canonicalFilePath() == station) {
        return QStringLiteral("Another file has this name now.");
    }
    return IsUsablePath(path) ? QString()
                              : QStringLiteral("The name of a station can't hold a double quote.");
}

// Makes the copy the open station.
void SwitchTo(const QString& path) {
    const QString former = std::exchange(StationPath, path);
    StationTitle = QFileInfo(path).fileName();
    StationConnectionString = ConnectionTo(path);
    StationConnection->Close();
    TheStationPanel->StationRenamed(former);
    StationConnection->Open(StationConnectionString);
}

bool SaveElsewhere() {
    for (;;) {
        const QString path = AskForName();
        if (path.isEmpty()) {
            return false;
        }
        QString fault = FaultOfName(path);
        try {
            if (fault.isEmpty()) {
                CopyStationTo(path);
                SwitchTo(path);
                return true;
            }
        } catch (const AdoError& error) {
            fault = error.Description();
        }
        if (StationConnection->State() == 0) {
            TellFault(QStringLiteral("The station was saved as %1, but cannot be opened").arg(path),
                      fault);
            ShowNoStation();
            return false;
        }
        TellFault(QStringLiteral("The station could not be saved as %1").arg(path), fault);
    }
}

}  // namespace

bool StationIsInPlace() {
    if (StationConnection->IsInPlace()) {
        return true;
    }
    // Only a clear No gives the station up: without a copy, all that it holds is lost.
    while (StationConnection->State() != 0 &&
           MsgBox(QStringLiteral("%1 was removed or replaced by another program while it was open. "
                                 "Nothing can be saved in it. Save the station under another name?")
                      .arg(StationPath),
                  MsgBoxButtons::YesNo, MsgBoxIcon::Exclamation) == MsgBoxAnswer::Yes) {
        if (SaveElsewhere()) {
            return true;
        }
    }
    return false;
}

void RequireStationInPlace() {
    if (!StationIsInPlace()) {
        throw AdoError(adErrGeneral,
                       QStringLiteral("The file was removed or replaced by another program: %1")
                           .arg(StationPath),
                       AdoCause::Moved);
    }
}

}  // namespace rillbook
