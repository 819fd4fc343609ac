// What takes another file's place (import setup, conversion, project): failed or killed at each of
// its file calls, raced by another program, and whom it lets read.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include "import/StationShape.h"
#include "platform/desktop/KeptFile.h"
#include "platform/desktop/ReplaceFile.h"
#include "store/ConvertFile.h"
#include "store/FileError.h"
#include "tests/support/CoreTest.h"
#include "tests/support/FileCalls.h"

using namespace rillbook;

namespace {

using Lasting = FileCalls::Lasting;

const QString kFull = QStringLiteral("The disk is full");
const QString kSample = QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/station_2000.mdb");
constexpr const char* kOthersTime = "2005-01-01 00:15";

mode_t ModeOf(const QString& path) {
    struct stat status {};
    return ::stat(qPrintable(path), &status) == 0 ? status.st_mode & ACCESSPERMS : 0;
}

// The first file of a folder that more people can open than one of mode 0600.
QString OpenToOthers(const QString& folder) {
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
        if ((ModeOf(folder + u'/' + name) & 0177) != 0) {
            return name;
        }
    }
    return {};
}

QString NamesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden).join(u' ');
}

// One operation on a folder of its own. Returns the reason of a failure.
class Operation {
public:
    virtual ~Operation() = default;
    virtual QString Folder() const = 0;
    virtual QString Run() = 0;
    virtual void Open() {}
    virtual void Close() {}
    // Closed, and read by other means than the program's.
    virtual QString Content() = 0;
    virtual QString Names() const = 0;  // of the files, before it and after it

    bool IsWhole() {
        const QString names = NamesIn(Folder());
        return names == Names().section(u',', 0, 0) || names == Names().section(u',', -1);
    }
};

class Setup : public Operation {
public:
    explicit Setup(bool hasFreePages) {
        station_.WithRecord("2002-01-01 00:15", {1.5, 2.5})
            .WithRecord("2002-01-01 00:30", {1.75, {}})
            .WithJournalRow("2002-02-01", 1, 2, 2, false, 40, u"weeds"_qs);
        if (hasFreePages) {
            StationConnection->Execute(u"CREATE TABLE Rest (a TEXT)"_qs);
            StationConnection->Execute(u"DROP TABLE Rest"_qs);
        }
        station_.Close();
        QFile::setPermissions(station_.Path(), QFile::ReadOwner | QFile::WriteOwner);
        station_.Open();
    }
    QString Folder() const override { return station_.Folder(); }
    QString Path() const { return station_.Path(); }
    QString Names() const override { return u"station.mdb"_qs; }
    void Open() override { station_.Open(); }
    void Close() override { CloseOpenStation(); }
    QString Run() override {
        StationShape shape{.importType = 3, .dateWidth = 12, .channels = {{}, {}, {}}};
        try {
            ReshapeStation(shape);
            return {};
        } catch (const AdoError& error) {
            return error.Description();
        }
    }
    QString Content() override {
        Close();
        QStringList text;
        for (const char* table : {"SELECT channels, importdtwidth FROM Information", "Records",
                                  "Calibration", "PRAGMA integrity_check"}) {
            text += station_.Dump(table);
        }
        return text.join(u'\n');
    }

private:
    MessageLog messages_;
    StationFixture station_{2};
};

class Conversion : public Operation {
public:
    Conversion() {
        WriteBytes(Path(), ReadBytes(kSample));
        QFile::setPermissions(Path(), QFile::ReadOwner | QFile::WriteOwner);
    }
    QString Folder() const override { return folder_.path(); }
    QString Names() const override { return u"creek.mdb,creek.access.mdb creek.mdb"_qs; }
    QString Run() override {
        try {
            ConvertFile(Path());
            return {};
        } catch (const ConversionError& error) {
            return QString::fromUtf8(error.what());
        }
    }
    QString Content() override {
        const QByteArray original = ReadBytes(kSample);
        const QByteArray kept = ReadBytes(folder_.filePath(u"creek.access.mdb"_qs));
        if (ReadBytes(Path()) == original) {
            return u"Access file"_qs;
        }
        return kept == original ? DumpTable(Path(), u"SELECT count(*), sum(chan1) FROM Records"_qs)
                                : u"lost"_qs;
    }

private:
    QString Path() const { return folder_.filePath(u"creek.mdb"_qs); }
    QTemporaryDir folder_;
};

class ProjectSave : public Operation {
public:
    ProjectSave() {
        WriteBytes(Path(), "old");
        QFile::setPermissions(Path(), QFile::ReadOwner | QFile::WriteOwner);
    }
    QString Folder() const override { return folder_.path(); }
    QString Names() const override { return u"p.prj"_qs; }
    QString Run() override {
        try {
            WriteProjectFile(Path(), {.stations = {{u"/a.mdb"_qs, u"a"_qs}},
                                      .reportBeginDate = 0,
                                      .reportPeriodCode = u"921"_qs,
                                      .name = u"Creeks"_qs});
            return {};
        } catch (const FileError& error) {
            return error.Reason();
        }
    }
    QString Content() override { return QString::fromLatin1(ReadBytes(Path())); }

private:
    QString Path() const { return folder_.filePath(u"p.prj"_qs); }
    QTemporaryDir folder_;
};

std::unique_ptr<Operation> MakeOperation(const QString& name) {
    if (name == u"conversion") {
        return std::make_unique<Conversion>();
    }
    if (name == u"project") {
        return std::make_unique<ProjectSave>();
    }
    return std::make_unique<Setup>(name == u"setup with free pages");
}

const QStringList kOperations{u"setup"_qs, u"setup with free pages"_qs, u"project"_qs,
                              u"conversion"_qs};

// The other program: adds a record, and writes what became of it.
int AddRecord(const QString& path) {
    FakePanel panel;
    MessageLog messages;
    ResetSharedState();
    std::puts("here");
    std::fflush(stdout);
    bool isStored = false;
    if (OpenDB(path)) {
        try {
            Recordset records;
            records.Open(u"Records"_qs, *StationConnection, adOpenUnspecified, adLockOptimistic);
            records.AddNew();
            records.Fields(0).SetValue(At(kOthersTime));
            records.Update();
            isStored = true;
        } catch (const AdoError&) {
        }
        CloseDB();
    }
    std::puts(isStored ? "stored" : "refused");
    ResetSharedState();
    return 0;
}

}  // namespace

class TestReplaceFaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Success or a reason; the old file or the new one, whole; nothing beside it; and at no call
    // anything that others may read.
    void failsWhole_data() {
        const DataRows<QString> row("story");
        for (const QString& operation : kOperations) {
            for (const char* fault : {"one call", "full disk"}) {
                row(operation + u", "_qs + QLatin1String(fault));
            }
        }
    }
    void failsWhole() {
        QFETCH(QString, story);
        const QString operation = story.section(u", "_qs, 0, 0);
        const QString fault = story.section(u", "_qs, 1);
        const bool isFull = fault == u"full disk";
        QString before = MakeOperation(operation)->Content();
        QString after;
        {
            const auto whole = MakeOperation(operation);
            QCOMPARE(whole->Run(), QString());
            after = whole->Content();
        }
        QVERIFY(before != after);
        int failures = 0;
        for (int call = 1;; ++call) {
            const auto tried = MakeOperation(operation);
            QString reason;
            QString exposed;
            bool hasStruck = false;
            {
                FileCalls calls(tried->Folder());
                calls.BeforeEach = [&](FileCalls::Kind) {
                    exposed += OpenToOthers(tried->Folder());
                };
                if (isFull) {
                    calls.Fail(call, Lasting::FromThenOn, ENOSPC, FileCalls::Write);
                } else {
                    calls.Fail(call);
                }
                reason = tried->Run();
                hasStruck = calls.HasStruck();
            }
            const QString found = tried->Content();
            const QByteArray why = u"call %1: %2; %3; %4"_qs.arg(call)
                                       .arg(reason, NamesIn(tried->Folder()), found)
                                       .toUtf8();
            QVERIFY2(found == after || (!reason.isEmpty() && found == before), why.constData());
            QVERIFY2(exposed.isEmpty(), exposed.toUtf8().constData());
            QVERIFY2(!isFull || reason.isEmpty() || reason == kFull, why.constData());
            QVERIFY2(tried->IsWhole(), why.constData());
            failures += reason.isEmpty() ? 0 : 1;
            if (!hasStruck) {
                QVERIFY2(reason.isEmpty(), why.constData());
                break;
            }
        }
        QVERIFY(failures > 0);
    }

    // What a killed program leaves does not hinder the next try, which removes it.
    void killedAtEachCall_data() {
        const DataRows<QString> row("operation");
        for (const QString& operation : kOperations) {
            row(operation);
        }
    }
    void killedAtEachCall() {
        QFETCH(QString, operation);
        const QString before = MakeOperation(operation)->Content();
        const auto whole = MakeOperation(operation);
        whole->Run();
        const QString after = whole->Content();
        bool isKilled = true;
        for (int call = 1; isKilled; ++call) {
            const auto tried = MakeOperation(operation);
            tried->Close();
            const pid_t child = fork();
            if (child == 0) {
                tried->Open();
                FileCalls calls(tried->Folder());
                int count = 0;
                calls.BeforeEach = [&](FileCalls::Kind kind) {
                    if ((kind & (FileCalls::Read | FileCalls::Lock)) == 0 && ++count == call) {
                        std::raise(SIGKILL);
                    }
                };
                tried->Run();
                _exit(0);
            }
            int status = 0;
            waitpid(child, &status, 0);
            isKilled = WIFSIGNALED(status);
            QCOMPARE(OpenToOthers(tried->Folder()), QString());
            tried->Open();
            const QString found = tried->Content();
            QVERIFY2(found == after || (isKilled && found == before), qPrintable(found));
            if (found == before) {
                tried->Open();
                QCOMPARE(tried->Run(), QString());
                QCOMPARE(tried->Content(), after);
            }
            QVERIFY2(tried->IsWhole(), qPrintable(NamesIn(tried->Folder())));
        }
    }

    // Another program opens the station and adds a record, at each sync and each renaming of the
    // setup. `waits`: it comes while the setup has the lock, and still waits when that ends.
    void losesNobodysRecord_data() {
        const DataRows<bool, bool> row("hasFreePages", "waits");
        row(false, false);
        row(false, true);
        row(true, true);
    }
    void losesNobodysRecord() {
        QFETCH(bool, hasFreePages);
        QFETCH(bool, waits);
        QStringList answers;
        bool hasCome = true;
        for (int call = 1; hasCome; ++call) {
            Setup setup(hasFreePages);
            std::unique_ptr<OtherProgram> other;
            QByteArray answer;
            QString reason;
            int count = 0;
            {
                FileCalls calls(setup.Folder());
                calls.BeforeEach = [&](FileCalls::Kind kind) {
                    if ((kind & (FileCalls::Sync | FileCalls::Name)) == 0 || ++count != call) {
                        return;
                    }
                    other = std::make_unique<OtherProgram>(u"--add"_qs, QStringList(setup.Path()));
                    QCOMPARE(other->NextLine(), "here");
                    if (waits) {
                        QThread::msleep(40);
                    } else {
                        answer = other->NextLine();
                    }
                };
                reason = setup.Run();
            }
            hasCome = other != nullptr;
            if (hasCome && waits) {
                answer = other->NextLine();
            }
            const QString found = setup.Content();
            QVERIFY2(found.endsWith(u"\nok"), qPrintable(found));
            QVERIFY2(reason.isEmpty() || reason.contains(u"in use") || reason.contains(u"locked"),
                     qPrintable(reason));
            QVERIFY2(!hasCome || found.contains(u"2005-01-01"_qs) == (answer == "stored"),
                     qPrintable(u"call %1: %2; %3; %4"_qs.arg(call).arg(QString::fromLatin1(answer),
                                                                        reason, found)));
            answers += QString::fromLatin1(answer);
        }
        QVERIFY(answers.contains(u"stored"_qs) && answers.contains(u"refused"_qs));
    }

    // The list's owner, a named person (65533), the group, the mask and the others.
    void carriesAccess_data() {
        const DataRows<int, bool, bool> row("mode", "list", "listOfFolder");
        for (const int mode : {0600, 0640, 0604, 0666}) {
            row(mode, false, false);
        }
        row(0600, false, true);
        row(0660, true, false);
    }
    void carriesAccess() {
        QFETCH(int, mode);
        QFETCH(bool, list);
        QFETCH(bool, listOfFolder);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"p.prj"_qs);
        WriteBytes(path, "old");
        const QByteArray entries = QByteArray::fromHex(
            "02000000"
            "01000600ffffffff"
            "02000600fdff0000"
            "04000000ffffffff"
            "10000600ffffffff"
            "20000000ffffffff");
        const auto setList = [&entries](const QString& file, const char* name) {
            return ::setxattr(qPrintable(file), name, entries.constData(),
                              static_cast<size_t>(entries.size()), 0) == 0;
        };
        ::chmod(qPrintable(path), static_cast<mode_t>(mode));
        if (::geteuid() == 0) {
            QCOMPARE(::chown(qPrintable(path), 65534, 65533), 0);
        }
        if ((list && !setList(path, "system.posix_acl_access")) ||
            (listOfFolder && !setList(folder.path(), "system.posix_acl_default"))) {
            QSKIP("No access lists on this file system");
        }
        struct stat former {};
        ::stat(qPrintable(path), &former);
        const mode_t mask = ::umask(0);
        {
            FileCalls calls(folder.path());
            calls.BeforeEach = [&](FileCalls::Kind) {
                const mode_t draft = ModeOf(path + u"qvx"_qs);
                QVERIFY2((draft & ~static_cast<mode_t>(mode)) == 0,
                         qPrintable(QString::number(draft, 8)));
            };
            QCOMPARE(ReplaceFile(path, "new"), QString());
        }
        ::umask(mask);
        struct stat present {};
        ::stat(qPrintable(path), &present);
        QVERIFY(former.st_ino != present.st_ino && ReadBytes(path) == "new");
        QCOMPARE(present.st_mode, former.st_mode);
        QCOMPARE(present.st_uid, former.st_uid);
        QCOMPARE(present.st_gid, former.st_gid);
        QByteArray now(200, '\0');
        now.resize(std::max<qsizetype>(
            0, ::getxattr(qPrintable(path), "system.posix_acl_access", now.data(), 200)));
        QCOMPARE(now, list ? entries : QByteArray());
    }

    // A group that this user isn't in gets no more than others do.
    void withholdsTheGroupsRights() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"p.prj"_qs);
        WriteBytes(path, "old");
        ::chmod(qPrintable(path), 0664);
        QFile::setPermissions(folder.path(), QFile::Permissions(0x7777));
        if (::geteuid() != 0 || ::chown(qPrintable(path), static_cast<uid_t>(-1), 12345) != 0) {
            QSKIP("Only the administrator has files of other groups");
        }
        {
            const OrdinaryUser user;
            QCOMPARE(ReplaceFile(path, "new"), QString());
        }
        QCOMPARE(ModeOf(path), mode_t{0644});
    }

    void leavesPipesAlone() {
        const QTemporaryDir folder;
        const QString pipe = folder.filePath(u"pipe"_qs);
        const QString file = folder.filePath(u"file"_qs);
        WriteBytes(file, "bytes");
        QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
        QVERIFY(!ReadProjectFile(pipe).isProject);
        QVERIFY_EXCEPTION_THROWN(WriteProjectFile(pipe, {}, OldProject::Keep), FileError);
        QCOMPARE(ReplaceFile(pipe, "new"), NotAFileText());
        QVERIFY(!QFileInfo(pipe).isFile());
        QCOMPARE(ErrorOf([&] { Connection().Open(u"Data Source = "_qs + pipe); }), adErrGeneral);
        const auto name = [&](int number) { return number == 1 ? pipe : file + u".bak"_qs; };
        QCOMPARE(KeepUnderName(file, name).path, file + u".bak"_qs);
    }

    // A page that changed is found, though size and time of the file are those of before.
    void findsDamageWithTheSameTime() {
        MessageLog messages;
        StationFixture station;
        station.Close();
        struct stat status {};
        ::stat(qPrintable(station.Path()), &status);
        QByteArray bytes = ReadBytes(station.Path());
        WriteBytes(station.Path(), bytes.replace(4096, 8192, QByteArray(8192, 'x')));
        const timespec times[2] = {status.st_atim, status.st_mtim};
        QCOMPARE(::utimensat(AT_FDCWD, qPrintable(station.Path()), times, 0), 0);
        QVERIFY(!OpenDB(station.Path()));
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--add") {
        return AddRecord(arguments.value(2));
    }
    TestReplaceFaults test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_replacefaults.moc"
