// An import, a save and a closing on a medium that fails at each of their writes in turn, once or
// from then on, for script/check-media: the argument is a folder of the medium. Prints how many
// writes failed, and how often a reported change was missing at the next opening without a message.
// Not a part of media_station, as the watch on file calls lets no sync wait for the disk.
#include <QCoreApplication>
#include <cerrno>
#include <cstdio>

#include "app/SharedState.h"
#include "platform/ado/AdoError.h"
#include "store/Journal.h"
#include "store/StationDatabase.h"
#include "tests/media/StationSteps.h"
#include "tests/support/FileCalls.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

constexpr unsigned kWrites = FileCalls::Write | FileCalls::Sync | FileCalls::Truncate;

// One station on the failing medium: what was reported as done, and whether a message came.
struct Trial {
    bool isImported = false;
    bool isSaved = false;
    bool isWarned = false;
};

Trial RunTrial(MessageLog& messages) {
    constexpr int rows = 20;
    Trial trial;
    trial.isImported = ImportRows(QStringLiteral("2002-01-01T00:00:00"), rows, 1, messages);
    try {
        WriteJournal(1, {{true, At("2003-01-01"), 3, 4, {}, {}}});
        trial.isSaved = true;
    } catch (const AdoError&) {
    }
    messages.texts.clear();
    CloseDB();
    trial.isWarned = !messages.texts.isEmpty();
    return trial;
}

// Returns false if a reported change was missing without a message.
bool FailEachWrite(const QString& folder) {
    MessageLog messages;
    const QString path = StationIn(folder);
    int writes = 0;
    int missing = 0;
    for (const auto lasting : {FileCalls::Lasting::Once, FileCalls::Lasting::FromThenOn}) {
        for (int call = 1;; ++call) {
            CopyStationTemplate(path);
            if (!OpenDB(path)) {
                std::printf("refused\t%s\n", qPrintable(OneLine(messages.texts)));
                return true;
            }
            FileCalls calls(folder);
            calls.Fail(call, lasting, EIO, kWrites);
            const Trial trial = RunTrial(messages);
            if (!calls.HasStruck()) {
                break;
            }
            calls.Fail(0);
            ++writes;
            messages.texts.clear();
            QString found = QStringLiteral("not opened");
            if (OpenDB(path)) {
                found = OpenDigest();
                CloseDB();
            }
            const bool isThere =
                (!trial.isImported || found.startsWith(QStringLiteral("20 records of 20"))) &&
                (!trial.isSaved || found.contains(QStringLiteral(" 1 visits")));
            if (!isThere && !trial.isWarned) {
                ++missing;
                std::printf("missing\twrite %d%s: %s %s\n", call,
                            lasting == FileCalls::Lasting::Once ? "" : " and all that follow",
                            qPrintable(found), qPrintable(OneLine(messages.texts)));
            }
        }
    }
    std::printf("failed\t%d\t%d\n", writes, missing);
    return missing == 0;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        return 2;
    }
    const ScriptedDoors doors;
    const FakePanel panel;
    ResetSharedState();
    const bool isAllThere = FailEachWrite(QString::fromLocal8Bit(argv[1]));
    ResetSharedState();
    return isAllThere ? 0 : 1;
}
