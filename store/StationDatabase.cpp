#include "store/StationDatabase.h"

#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <optional>

#include "app/Application.h"
#include "platform/ado/AdoError.h"
#include "platform/ado/DatabaseFile.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/FileDraft.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/ReplaceFile.h"
#include "store/FileError.h"
#include "store/FormStuff.h"
#include "store/StationConversion.h"
#include "store/StationPanel.h"

namespace rillbook {

std::unique_ptr<Connection> StationConnection;
QString StationConnectionString;
QString StationPath;
QString StationTitle;
StationPanel* TheStationPanel = nullptr;

const QStringList& StationTables() {
    static const QStringList tables{QStringLiteral("Information"), QStringLiteral("Records"),
                                    QStringLiteral("Calibration"), QStringLiteral("ConversionEq"),
                                    QStringLiteral("ConversionT")};
    return tables;
}

QString RemoveCompanions(const QString& path) {
    for (const QString& name : CompanionsOf(path)) {
        QFile companion(name);
        if (!companion.remove()) {
            return companion.errorString();
        }
    }
    return {};
}

QString ConnectionTo(const QString& path) {
    return QStringLiteral("Provider = Microsoft.Jet.OLEDB.4.0; Data Source = ") + path;
}

namespace {

// Why a file that exists can't be opened, on a line of its own.
QString ReasonLine(const QString& path, const AdoError& error) {
    if (!QFileInfo::exists(path)) {
        return {};
    }
    return u'\n' + (error.Cause() == AdoCause::Locked
                        ? QStringLiteral("Another program is using the file.")
                        : error.Description());
}

// Nothing if a record without a proper time prevents it. An error of the file is raised, and
// refuses the opening.
std::optional<RecordStatistics> StatisticsOfLeftStation() {
    try {
        return ReadRecordStatistics();
    } catch (const AdoError& error) {
        if (error.IsOfFile()) {
            throw;
        }
        return std::nullopt;
    }
}

}  // namespace

bool OpenDB(const QString& path) {
    StationConnectionString = ConnectionTo(path);
    StationConnection->OwnTables = StationTables();
    ConversionCommand conversion;
    if (!conversion.MakeStation(path)) {
        return false;
    }
    // Left by a program that was killed, or closed on a full disk, perhaps before the header got
    // the statistics of what had been imported.
    const bool wasLeftOpen = ado::HasCompanion(path);
    try {
        StationConnection->Open(StationConnectionString);
        const std::optional<RecordStatistics> counted =
            wasLeftOpen ? StatisticsOfLeftStation() : std::nullopt;
        ReadStationInfo();
        if (counted) {
            ShowRecordStatistics(*counted);
        }
    } catch (const AdoError& error) {
        StationConnection->Close();
        if (error.Number() == adErrGeneral) {
            MsgBox(path + QStringLiteral(" not found!") + ReasonLine(path, error),
                   MsgBoxButtons::Ok, MsgBoxIcon::Information);
        }
        return false;
    }
    TheStationPanel->ShowPanel(true);
    TheStationPanel->EnableStationMenus(true);
    return true;
}

void CloseDB() {
    SaveStationInfo();
    if (StationConnection->State() == 0) {
        return;
    }
    const QString reason = StationConnection->Close();
    // A companion that is gone doesn't come back after a loss of power.
    SyncFolderOf(QFileInfo(StationPath).canonicalFilePath());
    if (!reason.isEmpty()) {
        MsgBox(QStringLiteral("The last changes of %1 could not be brought into the file: %2\n"
                              "They are in %1-wal beside it. Keep the two files together; the next "
                              "opening brings the changes into the file.")
                   .arg(StationPath, reason),
               MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
    ShowNoStation();
}

namespace {

// Nobody can answer any more.
class MessagesToStandardError : public MsgBoxDoor {
public:
    MsgBoxAnswer Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon, const QString&,
                      std::optional<MsgBoxAnswer>) override {
        std::fputs(qPrintable(text + u'\n'), stderr);
        return buttons == MsgBoxButtons::YesNo ? MsgBoxAnswer::No : MsgBoxAnswer::Cancel;
    }
};

}  // namespace

void CloseAtExit() {
    if (!StationConnection || StationConnection->State() == 0) {
        return;
    }
    MessagesToStandardError messages;
    TheDesktop().messages = &messages;
    if (TheStationPanel != nullptr) {
        SaveStationInfo();
    }
    StationConnection->Close();
    TheDesktop().messages = nullptr;
}

void ShowNoStation() {
    TheStationPanel->ShowPanel(false);
    TheStationPanel->EnableStationMenus(false);
    TheStationPanel->SetWindowCaption(Application::Title());
}

void CloseOpenStation() {
    if (StationConnection->State() != 0) {
        CloseDB();
    }
}

QByteArray StationTemplate() {
    QFile source(Application::Path() + QStringLiteral("/template.mdb"));
    if (!source.open(QIODevice::ReadOnly)) {
        throw FileError(source.fileName(), source.errorString());
    }
    const QByteArray bytes = source.readAll();
    if (bytes.isEmpty() || source.error() != QFileDevice::NoError) {
        throw FileError(source.fileName(), source.errorString());
    }
    return bytes;
}

void CopyStationTemplate(const QString& path) {
    const QString reason =
        ReplaceFile(path, StationTemplate(), [&path] { return RemoveCompanions(path); });
    if (!reason.isEmpty()) {
        throw FileError(path, reason);
    }
    SyncFolderOf(QFileInfo(path).canonicalFilePath());
}

bool IsUsablePath(const QString& path) {
    return !path.contains(QLatin1Char('"'));
}

void ResetStationDatabase() {
    StationConnection = std::make_unique<Connection>();
    StationConnectionString.clear();
    StationPath.clear();
    StationTitle.clear();
}

}  // namespace rillbook
