// The program's main road through its real windows, from an empty start to every report and to
// paper. Leaves a picture of each window, the text of the yearly sheet and the printed pages in a
// folder (the argument, or "tour" here), and fails where the sheet isn't the one that was worked
// out.
#include <QAbstractButton>
#include <QCheckBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeWidget>
#include <QtTest>
#include <cstdio>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "forms/main/DesktopApplication.h"
#include "forms/main/frmMain.h"
#include "platform/ado/Recordset.h"
#include "platform/desktop/Desktop.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/qt/QtDoors.h"
#include "platform/qt/QtPrinter.h"
#include "store/StationDatabase.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

using namespace rillbook;

namespace {

QString folderOfTour;

QString InFolder(const QString& name) {
    return QDir(folderOfTour).filePath(name);
}

QString ReadText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll())
                                          : path + QStringLiteral(" can't be read");
}

// What the hydrographer read on the sheet: titles, peak, and every cell.
QString SheetText(QWidget& form) {
    QString text = Child<QLabel>(form, QStringLiteral("lblTitle1")).text() + u'\n' +
                   Child<QLabel>(form, QStringLiteral("lblTitle2")).text() + u'\n' +
                   Child<QLineEdit>(form, QStringLiteral("tbPMax")).text() + u'\n';
    const auto& grid = Child<MSFlexGrid>(form, QStringLiteral("MSFlexGrid1"));
    for (int row = 1; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 1; col < grid.Cols(); ++col) {
            cells << grid.TextMatrix(row, col);
        }
        text += cells.join(u'\t') + u'\n';
    }
    return text;
}

}  // namespace

class Tour : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QDir().mkpath(folderOfTour);
        for (const char* name :
             {"creek.mdb", "upper-basin.prj", "yearly-sheet.pdf", "stage-graph.pdf"}) {
            QFile::remove(InFolder(QString::fromLatin1(name)));
        }
        ResetSharedState();
        LoadAppSettings();
        FillMonthNames();
        InitDir = folderOfTour + u'/';
        window_ = std::make_unique<frmMain>();
        window_->show();
        Picture(*window_, "start");
    }
    void init() { FailOnAnyWarning(); }

    void makesAProject() {
        const NextWindow dialog([this](QWidget& form) { ChooseFile(form, "upper-basin"); });
        Trigger(*window_, QStringLiteral("mnuFileProjectNew"));
        TypeText(*window_, QStringLiteral("tbProjectName"), QStringLiteral("Upper basin"));
        QVERIFY(IsUsable(Child<QTreeWidget>(*window_, QStringLiteral("TreeView1"))));
    }

    void addsAStation() {
        const NextWindow dialog([this](QWidget& form) { ChooseFile(form, "creek"); });
        Trigger(*window_, QStringLiteral("mnuFileStationNew"));
        QCOMPARE(StationPath, InFolder(QStringLiteral("creek.mdb")));
        TypeText(*window_, QStringLiteral("tbName"), QStringLiteral("Alder Creek above the mill"));
        TypeText(*window_, QStringLiteral("tbNotes"),
                 QStringLiteral("Staff gauge on the left bank, read at each visit."));
    }

    void importsALoggerFile() {
        QString counts;
        const NextWindow dialog([this](QWidget& form) {
            ChooseFile(form, RILLBOOK_SOURCE_DIR "/samples/type1_stage_hourly.csv");
        });
        const NextWindow message([&](QWidget& form) {
            Picture(form, "import-counts");
            auto& box = dynamic_cast<QMessageBox&>(form);
            counts = box.text();
            box.button(QMessageBox::Ok)->click();
        });
        Trigger(*window_, QStringLiteral("mnuFileImport"));
        QCOMPARE(counts, QStringLiteral(" 8755 Readable Records,  4 Unreadable Records(s), and  6 "
                                        "Dupulicate(s)."));
        Picture(*window_, "imported");
    }

    // Both have no editor yet.
    void writesJournalAndRating() {
        AddRow("Calibration", {{"DateTime", At("2002-01-15 10:00")},
                               {"chan", 1},
                               {"read1", 1.20},
                               {"actual1", 1.25},
                               {"read2", 1}});
        AddRow("Calibration", {{"DateTime", At("2002-07-15 10:00")},
                               {"chan", 1},
                               {"read1", 2.10},
                               {"actual1", 2.00},
                               {"read2", 1}});
        AddRow("ConversionEq", {{"DateTime", At("2002-01-01")},
                                {"chan", 1},
                                {"A", 0.3},
                                {"r", 1.6},
                                {"c", 25},
                                {"RatingTable", 0}});
    }

    void readsTheYearlySheet() {
        const NextWindow settings([this](QWidget& form) {
            Child<DTPicker>(form, QStringLiteral("DTPicker1")).SetValue(At("2002-01-01"));
            TypeText(form, QStringLiteral("tbIncre"), QStringLiteral("1"));
            Click(form, QStringLiteral("cbxRating"));
            Click(form, QStringLiteral("cbxCal"));
            Picture(form, "output-settings");
            Click(form, QStringLiteral("cmdOK"));
        });
        QString sheet;
        const NextWindow report([&](QWidget& form) {
            sheet = SheetText(form);
            Picture(form, "yearly-sheet");
            Trigger(form, QStringLiteral("mnuTotal"));
            sheet += SheetText(form);
            Picture(form, "yearly-sheet-totals");
            const NextWindow choice([this](QWidget& dialog) {
                Picture(dialog, "print-settings");
                Click(dialog, QStringLiteral("cmdOK"));
            });
            PrintTo(form, "yearly-sheet");
            Trigger(form, QStringLiteral("mnuFileExit"));
        });
        Trigger(*window_, QStringLiteral("mnuOutAnnual"));
        QFile dump(InFolder(QStringLiteral("yearly-sheet.txt")));
        QVERIFY(dump.open(QIODevice::WriteOnly));
        dump.write(sheet.toUtf8());
        QCOMPARE(sheet, ReadText(QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/tour-sheet.txt")));
    }

    void readsTables() {
        ShowReport("mnuOutInstT", "instantaneous-table");
        ShowReport("mnuOutDailyT", "daily-table");
    }

    void drawsTheStage() {
        ShowReport(
            "mnuOutInstG", "instantaneous-graph",
            [](QWidget& settings) {
                TypeText(settings, QStringLiteral("tbMin"), QStringLiteral("0"));
                TypeText(settings, QStringLiteral("tbMax"), QStringLiteral("4"));
                Click(settings, QStringLiteral("chbPoints"));
                Click(settings, QStringLiteral("cbxRating"));
            },
            [this](QWidget& report) {
                Trigger(report, QStringLiteral("mnuEditCopy"));
                PrintTo(report, "stage-graph");
            });
    }

    void drawsTheDailyFlow() {
        ShowReport("mnuOutDailyG", "daily-graph", [](QWidget& settings) {
            TypeText(settings, QStringLiteral("tbMax"), QStringLiteral("240"));
            Click(settings, QStringLiteral("cbxRating"));
            Click(settings, QStringLiteral("chkMax"));
        });
    }

    void showsTheAboutBox() {
        const NextWindow about([this](QWidget& form) {
            Picture(form, "about");
            Click(form, QStringLiteral("cmdOK"));
        });
        Trigger(*window_, QStringLiteral("mnuHelpAbout"));
    }

    void leavesProjectAndStationBehind() {
        Trigger(*window_, QStringLiteral("mnuFileExit"));
        QVERIFY(!window_->isVisible());
        QCOMPARE(ReadText(InFolder(QStringLiteral("upper-basin.prj"))).section(u'\n', 1, 1),
                 QStringLiteral("1\r"));
        QCOMPARE(DumpTable(InFolder(QStringLiteral("creek.mdb")),
                           QStringLiteral("SELECT Name, noofrec, Conversion, calibration "
                                          "FROM Information")),
                 QStringLiteral("Alder Creek above the mill | 8755 | 1 | 1"));
    }

private:
    using Values = std::vector<std::pair<const char*, double>>;

    void Picture(QWidget& form, const char* name) {
        const QString file = QString::asprintf("%02d-%s.png", ++pictures_, name);
        QVERIFY(form.grab().save(InFolder(file)));
    }

    void ChooseFile(QWidget& dialog, const char* name) {
        Picture(dialog, qPrintable(QStringLiteral("choose-") +
                                   QFileInfo(QString::fromLocal8Bit(name)).baseName()));
        // At once: typed key by key, the name would open the list of completions over the dialog.
        Child<QLineEdit>(dialog, QStringLiteral("fileNameEdit"))
            .setText(QString::fromLocal8Bit(name));
        dynamic_cast<QDialog&>(dialog).accept();
    }

    using Steps = std::function<void(QWidget& form)>;

    // Settles a report, has a look at it, and does this with it before it is closed.
    void ShowReport(const char* item, const char* name, const Steps& settle = {},
                    const Steps& use = {}) {
        const NextWindow settings([&](QWidget& form) {
            if (settle) {
                settle(form);
            }
            Click(form, QStringLiteral("cmdOK"));
        });
        const NextWindow report([&](QWidget& form) {
            QCoreApplication::processEvents();
            Picture(form, name);
            if (use) {
                use(form);
            }
            Trigger(form, QStringLiteral("mnuFileExit"));
        });
        Trigger(*window_, QString::fromLatin1(item));
    }

    void PrintTo(QWidget& report, const char* name) {
        const QString pdf = InFolder(QString::fromLatin1(name) + QStringLiteral(".pdf"));
        const NextWindow dialog([&](QWidget& form) { ChooseFile(form, qPrintable(pdf)); });
        Trigger(report, QStringLiteral("mnuFilePrint"));
        QVERIFY(ReadText(pdf).startsWith(u"%PDF-"));
    }

    static void AddRow(const char* table, const Values& values) {
        Recordset rows;
        rows.LockType = adLockOptimistic;
        rows.Open(QString::fromLatin1(table), *StationConnection, adOpenDynamic);
        rows.AddNew();
        for (const auto& [column, value] : values) {
            rows.Fields(QString::fromLatin1(column)).SetValue(value);
        }
        rows.Update();
        rows.Close();
    }

    std::unique_ptr<frmMain> window_;
    int pictures_ = 0;
};

int main(int argc, char** argv) {
    DesktopApplication application(argc, argv);
    folderOfTour =
        QDir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("tour")).absolutePath();
    const QtDoors doors(Application::Title());
    // The pages become files, whatever printers the machine has.
    QtPrinterDoor files(QPageSize(QPageSize::A4));
    TheDesktop().printers = &files;
    Tour tour;
    const int failures = QTest::qExec(&tour, QStringList{application.arguments().first()});
    std::printf("Pictures, printed pages and the sheet's text: %s\n", qPrintable(folderOfTour));
    return failures;
}

#include "Tour.moc"
