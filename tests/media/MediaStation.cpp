// Uses stations on one medium for script/check-media, and prints what it saw, a line of fields with
// tabs between them for each step. The first argument says what to do:
//
//     life FOLDER ACCESSFILE    each step of a station's life: "step NAME REASON", no reason if
//     done saves FOLDER              the same, and waits for a line of input after each reported
//     save:
//                               "saved NAME DIGEST"
//     digest FOLDER             what a copy of the medium holds
//     write PATH WRITER IMPORTS imports of twenty rows: "rows N" for each that is reported as
//     stored speed FOLDER ROWS         an import against the bare engine failures FOLDER a medium
//     that fails at each write
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <cstdio>
#include <iostream>
#include <string>

#include "app/SharedState.h"
#include "store/ProjectFile.h"
#include "store/StationDatabase.h"
#include "tests/media/MediumSpeed.h"
#include "tests/media/StationSteps.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

void Print(const char* kind, const QString& name, const QString& text) {
    std::printf("%s\t%s\t%s\n", kind, qPrintable(name), qPrintable(text));
    std::fflush(stdout);
}

void Live(const QString& folder, const QString& accessFile) {
    MessageLog messages(MsgBoxAnswer::Yes);
    for (const StationStep& step : StationSteps(folder)) {
        Print("step", QString::fromLatin1(step.name), RunStep(step, messages));
    }
    const QString access = folder + QStringLiteral("/access.mdb");
    const StationStep conversion{"Access conversion", false, [&] {
                                     WriteBytes(access, ReadBytes(accessFile));
                                     if (!OpenDB(access)) {
                                         return QStringLiteral("not opened");
                                     }
                                     CloseDB();
                                     return QString();
                                 }};
    Print("step", QString::fromLatin1(conversion.name), RunStep(conversion, messages));
    QStringList left =
        QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const char* expected : {"creek.mdb", "basin.prj", "access.mdb", "access.access.mdb"}) {
        left.removeAll(QString::fromLatin1(expected));
    }
    Print("step", QStringLiteral("other files"), left.join(u' '));
}

// Of the open station and the project beside it.
QString FolderDigest(const QString& folder) {
    const QString project = folder + QStringLiteral("/basin.prj");
    return OpenDigest() + (QFile::exists(project) ? QStringLiteral(", project ") +
                                                        ReadProjectFile(project).contents.name
                                                  : QString());
}

void SaveAndWait(const QString& folder) {
    MessageLog messages;
    for (const StationStep& step : StationSteps(folder)) {
        const QString reason = RunStep(step, messages);
        const bool isOpen = StationConnection->State() != 0;
        const QString name = QString::fromLatin1(step.name);
        if (!reason.isEmpty()) {
            Print("refused", name, reason);
        } else if (name == u"new station") {
            Print("saved", name,
                  FileDigest(QCoreApplication::applicationDirPath() +
                             QStringLiteral("/template.mdb")));
        } else if (name == u"close") {
            break;  // what it folds back was reported before
        } else if (isOpen) {
            Print("saved", name, FolderDigest(folder));
        } else {
            continue;
        }
        std::string line;
        if (!std::getline(std::cin, line)) {
            break;
        }
    }
    CloseOpenStation();
}

void PrintDigest(const QString& folder) {
    MessageLog messages(MsgBoxAnswer::Yes);
    QString found = QFile::exists(StationIn(folder)) ? QStringLiteral("not opened")
                                                     : QStringLiteral("no station");
    if (OpenDB(StationIn(folder))) {
        found = FolderDigest(folder);
        CloseDB();
    }
    Print("holds", found, OneLine(messages.texts));
    Print("names", QDir(folder).entryList(QDir::Files | QDir::Hidden).join(u' '), {});
}

// The answer No: nobody takes a station from another machine.
void Write(const QString& path, int writer, int imports) {
    constexpr int rows = 20;
    MessageLog messages(MsgBoxAnswer::No);
    if (!OpenDB(path)) {
        Print("refused", OneLine(messages.texts), {});
        return;
    }
    StationPath = path;
    Print("opened", OneLine(messages.texts), {});
    for (int i = 0; i < imports && StationConnection->State() != 0; ++i) {
        messages.texts.clear();
        const QString from = QStringLiteral("20%1-%2-01T00:00:00")
                                 .arg(writer + 10)
                                 .arg(i % 12 + 1, 2, 10, QChar(u'0'));
        if (ImportRows(from, rows, writer, messages)) {
            Print("rows", QString::number(rows), {});
        } else {
            Print("unstored", OneLine(messages.texts), {});
        }
    }
    messages.texts.clear();
    CloseOpenStation();
    Print("closed", OneLine(messages.texts), {});
}

// Does what the arguments say, and returns the exit code: 1 if something that was reported as
// stored is missing.
int Run(const QStringList& words) {
    if (words.size() < 3) {
        return 2;
    }
    const QString& deed = words[1];
    const QString& place = words[2];
    if (deed == u"life" && words.size() == 4) {
        Live(place, words[3]);
    } else if (deed == u"saves") {
        SaveAndWait(place);
    } else if (deed == u"digest") {
        PrintDigest(place);
    } else if (deed == u"write" && words.size() == 5) {
        Write(place, words[3].toInt(), words[4].toInt());
    } else if (deed == u"speed" && words.size() == 4) {
        MeasureImport(place, words[3].toInt());
    } else {
        return 2;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const ScriptedDoors doors;
    const FakePanel panel;
    ResetSharedState();
    const int result = Run(QCoreApplication::arguments());
    ResetSharedState();
    return result;
}
