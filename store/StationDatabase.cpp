#include "store/StationDatabase.h"

#include <QFile>

#include "app/Application.h"
#include "platform/ado/AdoError.h"
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

QStringList CompanionsOf(const QString& path) {
    QStringList companions;
    for (const QString& suffix :
         {QStringLiteral("-wal"), QStringLiteral("-shm"), QStringLiteral("-journal")}) {
        if (QFile::exists(path + suffix)) {
            companions += path + suffix;
        }
    }
    return companions;
}

namespace {

// A companion of the file that goes would be taken for one of the file that comes. Returns the
// reason where one can't be removed.
QString RemoveCompanions(const QString& path) {
    for (const QString& name : CompanionsOf(path)) {
        QFile companion(name);
        if (!companion.remove()) {
            return companion.errorString();
        }
    }
    return {};
}

}  // namespace

QString ConnectionTo(const QString& path) {
    return QStringLiteral("Provider = Microsoft.Jet.OLEDB.4.0; Data Source = ") + path;
}

bool OpenDB(const QString& path) {
    StationConnectionString = ConnectionTo(path);
    StationConnection->OwnTables = StationTables();
    ConversionCommand conversion;
    if (!conversion.MakeStation(path)) {
        return false;
    }
    try {
        StationConnection->Open(StationConnectionString);
        ReadStationInfo();
        TheStationPanel->ShowPanel(true);
        TheStationPanel->EnableStationMenus(true);
        return true;
    } catch (const AdoError& error) {
        if (error.Number() == adErrGeneral) {
            MsgBox(path + QStringLiteral(" not found!"), MsgBoxButtons::Ok,
                   MsgBoxIcon::Information);
        }
        return false;
    }
}

void CloseDB() {
    SaveStationInfo();
    StationConnection->Close();
    ShowNoStation();
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
