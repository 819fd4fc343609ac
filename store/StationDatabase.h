#pragma once

#include <QString>
#include <memory>

#include "platform/ado/Connection.h"

namespace rillbook {

// Created once at start, closed until a station is opened; its State alone tells whether one is
// open.
extern std::unique_ptr<Connection> StationConnection;
extern QString StationConnectionString;

// Name the last open station; they survive its closing.
extern QString StationPath;
extern QString StationTitle;  // file name without folder

// The connection text of a station's file.
QString ConnectionTo(const QString& path);

// Opens the station and loads its header; true on success. If the file can't be opened or its
// header can't be read, the user gets a message with the reason, and no station is open. An Access
// file is made a station first, if the user wants it (see StationConversion.h). StationPath and
// StationTitle are the caller's to set, on true only. REQUIRES: StationConnection closed.
bool OpenDB(const QString& path);

// SaveStationInfo, and closes the connection. If the changes can't be brought from the companion
// into the file, the user gets a message. REQUIRES: StationConnection open.
void CloseDB();

// The same when the process exits with a station open, for instance because the display is gone:
// without a message on the screen, and without a window. Only for a process that exits.
void CloseAtExit();

// What CloseDB leaves on the screen; by itself, for a station whose file was lost.
void ShowNoStation();

// CloseDB if a station is open.
void CloseOpenStation();

// The five tables of a station.
const QStringList& StationTables();

// The bytes of the program's template, a station without readings. Raises FileError.
QByteArray StationTemplate();

// Removes the companions of a file that another one is to replace: they would be taken for those of
// the new file. Returns the system's reason if one can't be removed; empty if none is left.
QString RemoveCompanions(const QString& path);

// Puts a copy of the program's template at `path`, replacing what is there together with any
// companion that a killed program left beside it. Raises FileError; what stood at `path` is whole
// then.
void CopyStationTemplate(const QString& path);

// A double quote can't stand in a project file, so that no path may hold one.
bool IsUsablePath(const QString& path);

void ResetStationDatabase();

}  // namespace rillbook
