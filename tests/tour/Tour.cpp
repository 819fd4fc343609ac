// The program's main road through its real windows, from an empty start to every report and to
// paper. Leaves a picture of each window, the text of the yearly sheet and the printed pages in a
// folder (the argument, or "tour" here), and fails where the sheet isn't the one that was worked
// out.
#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTreeWidget>
#include <QtTest>
#include <algorithm>
#include <cstdio>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "forms/main/DesktopApplication.h"
#include "forms/main/frmMain.h"
#include "platform/desktop/Desktop.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/DataGrid.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/qt/QtDoors.h"
#include "platform/qt/QtPrinter.h"
#include "platform/qt/UpDown.h"
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

QString GridText(QWidget& form) {
    QString text;
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

// What the hydrographer read on the sheet: titles, peak, and every cell.
QString SheetText(QWidget& form) {
    return Child<QLabel>(form, QStringLiteral("lblTitle1")).text() + u'\n' +
           Child<QLabel>(form, QStringLiteral("lblTitle2")).text() + u'\n' +
           Child<QLineEdit>(form, QStringLiteral("tbPMax")).text() + u'\n' + GridText(form);
}

}  // namespace

class Tour : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QDir().mkpath(folderOfTour);
        for (const char* name : {"creek.mdb", "spring.mdb", "upper-basin.prj", "yearly-sheet.pdf",
                                 "stage-graph.pdf", "spring-journal.pdf"}) {
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
        AddStation("creek", "Alder Creek above the mill",
                   "Staff gauge on the left bank, read at each visit.");
    }

    void importsALoggerFile() {
        ImportSample("type1_stage_hourly.csv",
                     " 8755 Readable Records,  4 Unreadable Records(s), "
                     "and  6 Dupulicate(s).");
    }

    void writesTheJournal() {
        KeepJournal({{" x", "1/15/2002 10:00", "1.20", "1.25", "", "ice at the edges"},
                     {"", "4/2/2002 9:30", "1.31", "1.33", "33.5", "high water, wading only half"},
                     {" x", "7/15/2002 10:00", "2.10", "2.00", "58.2", "logger cleaned"}},
                    "journal", {});
    }

    void ratesByAnEquation() {
        EditRatings([this](QWidget& list) {
            AddEquation(list, {"1/1/2002", "25", "0.3", "1.6", "six measurements"}, "equation");
            QCOMPARE(GridText(list),
                     QStringLiteral("1/1/2002\tEquation\tQ = 25*(ght - 0.3)^1.6\tsix "
                                    "measurements\n"));
        });
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
        CompareSheet(sheet, "yearly-sheet.txt");
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

    void setsUpAFourChannelLogger() {
        AddStation("spring", "Mill Spring", "");
        const NextWindow setup([this](QWidget& form) {
            Child<QComboBox>(form, QStringLiteral("cmbFileType")).setCurrentIndex(3);
            for (int step = 1; step < 4; ++step) {
                Child<UpDown>(form, QStringLiteral("updChan")).Step(1);
            }
            const std::vector<Cells> channels{{"9", "ft", "Stage", "Pool below the weir"},
                                              {"9", "C", "Temperature", "Water at the intake"},
                                              {"9", "V", "Battery", "Logger"},
                                              {"9", "uS/cm", "Conductance", "Water at the intake"}};
            TypeCell(form, 1, 1, QStringLiteral("15"));
            int row = 1;
            for (const Cells& channel : channels) {
                ++row;
                int col = 0;
                for (const char* text : channel) {
                    TypeCell(form, row, ++col, QString::fromLatin1(text));
                }
            }
            Picture(form, "import-setup");
            Click(form, QStringLiteral("cmdOK"));
        });
        Trigger(*window_, QStringLiteral("mnuFileImportSetup"));
        ImportSample("campbell.dat",
                     " 1440 Readable Records,  1 Unreadable Records(s), and  12 "
                     "Dupulicate(s).");
    }

    void visitsAndRatesTheSpring() {
        KeepJournal(
            {{" x", "6/3/2002 11:00", "2.05", "2.07", "31", "weir clear"},
             {" x", "6/17/2002 8:15", "1.55", "1.50", "", "weeds cut"},
             {"", "6/28/2002 16:40", "1.27", "1.20", "11.9",
              "Silt behind the weir, a hand high, dug out by two; staff under water for an hour."}},
            "spring-journal", QStringLiteral("spring-journal"));
        EditRatings([this](QWidget& list) {
            AddEquation(list, {"6/1/2002", "12.5", "0.4", "1.5", ""}, "spring-equation");
            AddTable(list, "6/15/2002 12:00", {{"1.0", "6"}, {"1.5", "14.5"}, {"2.5", "41"}},
                     "spring-table");
            Picture(list, "ratings");
            QCOMPARE(GridText(list), QStringLiteral("6/1/2002\tEquation\tQ = 12.5*(ght - "
                                                    "0.4)^1.5\t\n6/15/2002 12:00:00 PM\tTable\t\t"
                                                    "weir rating\n"));
        });
    }

    // A reading changed, and changed back: the reports are of what the logger brought.
    void editsTheRecords() {
        const NextWindow editor([this](QWidget& form) {
            auto& grid = Child<DataGrid>(form, QStringLiteral("DataGrid1"));
            const QModelIndex stage = grid.model()->index(3, 1);
            const QString before = stage.data().toString();
            for (const QString& reading : {QStringLiteral("9.75"), before}) {
                grid.setFocus();
                grid.setCurrentIndex(stage);
                QTest::keyClicks(&grid, reading.left(1));
                QTest::keyClicks(form.focusWidget(), reading.mid(1));
                if (reading != before) {
                    Picture(form, "record-in-edit");
                }
                QTest::keyClick(form.focusWidget(), Qt::Key_Return);
                Picture(form, "records");
                QCOMPARE(stage.data().toString(), reading);
            }
            grid.setCurrentIndex(stage);
            const NextWindow deletion([this](QWidget& dialog) {
                Click(dialog, QStringLiteral("cmdSelectALl"));
                Picture(dialog, "delete");
                Click(dialog, QStringLiteral("cmdCancel"));
            });
            Click(form, QStringLiteral("cmdDelete"));
            Click(form, QStringLiteral("cmdOK"));
        });
        Trigger(*window_, QStringLiteral("mnuEditRecords"));
        QCOMPARE(Child<QLabel>(*window_, QStringLiteral("lblNOR")).text(), QStringLiteral("1440"));
    }

    void reportsTheSpring() {
        const Steps june = [](QWidget& settings) {
            Child<DTPicker>(settings, QStringLiteral("DTPicker1")).SetValue(At("2002-06-01"));
            Click(settings, QStringLiteral("optMonths"));
            for (int months = 12; months > 1; --months) {
                Child<UpDown>(settings, QStringLiteral("updN")).Step(-1);
            }
        };
        ShowReport(
            "mnuOutAnnual", "spring-sheet",
            [](QWidget& settings) {
                TypeText(settings, QStringLiteral("tbIncre"), QStringLiteral("0.5"));
                Click(settings, QStringLiteral("cbxRating"));
                Click(settings, QStringLiteral("cbxCal"));
            },
            [](QWidget& report) { CompareSheet(SheetText(report), "spring-sheet.txt"); });
        ShowReport("mnuOutInstT", "spring-instantaneous-table", june);
        ShowReport("mnuOutDailyT", "spring-daily-table");
        ShowReport("mnuOutInstG", "spring-instantaneous-graph", [](QWidget& settings) {
            TypeText(settings, QStringLiteral("tbMax"), QStringLiteral("60"));
        });
        ShowReport("mnuOutDailyG", "spring-daily-graph");
    }

    void showsTheHelp() {
        for (const auto& [item, name] : {std::pair("mnuHelpContent", "help-contents"),
                                         std::pair("mnuHelpIndex", "help-index")}) {
            Trigger(*window_, QString::fromLatin1(item));
            const QWidgetList windows = QApplication::topLevelWidgets();
            const auto help = std::find_if(
                windows.begin(), windows.end(),
                [](const QWidget* shown) { return shown->objectName() == u"HelpWindow"; });
            QVERIFY(help != windows.end());
            Picture(**help, name);
        }
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
                 QStringLiteral("2\r"));
        QCOMPARE(DumpTable(InFolder(QStringLiteral("creek.mdb")),
                           QStringLiteral("SELECT Name, noofrec, Conversion, calibration "
                                          "FROM Information")),
                 QStringLiteral("Alder Creek above the mill | 8755 | 1 | 1"));
    }

private:
    using Steps = std::function<void(QWidget& form)>;
    using Cells = std::vector<const char*>;

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

    void AddStation(const char* file, const char* name, const char* notes) {
        const NextWindow dialog([&](QWidget& form) { ChooseFile(form, file); });
        Trigger(*window_, QStringLiteral("mnuFileStationNew"));
        QCOMPARE(StationPath, InFolder(QString::fromLatin1(file) + QStringLiteral(".mdb")));
        TypeText(*window_, QStringLiteral("tbName"), QString::fromLatin1(name));
        TypeText(*window_, QStringLiteral("tbNotes"), QString::fromLatin1(notes));
    }

    void ImportSample(const char* name, const char* counts) {
        const NextWindow dialog([&](QWidget& form) {
            ChooseFile(form, (QByteArray(RILLBOOK_SOURCE_DIR "/samples/") + name).constData());
        });
        const NextWindow message([&](QWidget& form) {
            Picture(form, "import-counts");
            auto& box = dynamic_cast<QMessageBox&>(form);
            QCOMPARE(box.text(), QString::fromLatin1(counts));
            box.button(QMessageBox::Ok)->click();
        });
        Trigger(*window_, QStringLiteral("mnuFileImport"));
        Picture(*window_, "imported");
    }

    // Types visits: use, time, logger, actual, discharge, notes. Prints the journal where `pdf` has
    // a name, and closes the window with a save.
    void KeepJournal(const std::vector<Cells>& visits, const char* picture, const QString& pdf) {
        const NextWindow journal([&](QWidget& form) {
            int row = 0;
            for (const Cells& visit : visits) {
                ++row;
                int col = 0;
                for (const int place : {2, 3, 4, 6, 7}) {
                    TypeCell(form, row, place, QString::fromLatin1(visit[++col]));
                }
                if (*visit[0] != 0) {
                    auto& grid = Child<MSFlexGrid>(form, QStringLiteral("MSFlexGrid1"));
                    grid.SetSelection(row, 1, row, 1);
                    QTest::keyClick(&grid, Qt::Key_Space);
                }
            }
            Picture(form, picture);
            if (!pdf.isEmpty()) {
                PrintTo(form, qPrintable(pdf));
            }
            const NextWindow question([](QWidget& box) {
                dynamic_cast<QMessageBox&>(box).button(QMessageBox::Yes)->click();
            });
            Trigger(form, QStringLiteral("mnuFileExit"));
        });
        Trigger(*window_, QStringLiteral("mnuEditCalibration"));
    }

    void EditRatings(const Steps& steps) {
        const NextWindow list([&](QWidget& form) {
            TypeText(form, QStringLiteral("tbConvLabel"), QStringLiteral("cfs"));
            TypeText(form, QStringLiteral("tbConvDesc"), QStringLiteral("Discharge"));
            steps(form);
            Click(form, QStringLiteral("cmdOK"));
        });
        Trigger(*window_, QStringLiteral("mnuRat"));
    }

    // Types time, C, A, R and notes.
    void AddEquation(QWidget& list, const Cells& texts, const char* picture) {
        const NextWindow editor([&](QWidget& form) {
            int i = 0;
            for (const char* box : {"tbDate", "tbC", "tbA", "tbR", "tbNotes"}) {
                TypeText(form, QString::fromLatin1(box), QString::fromLatin1(texts[i++]));
            }
            Picture(form, picture);
            Click(form, QStringLiteral("cmdOK"));
        });
        Trigger(list, QStringLiteral("mnuNewEquation"));
    }

    void AddTable(QWidget& list, const char* time, const std::vector<Cells>& points,
                  const char* picture) {
        const NextWindow editor([&](QWidget& form) {
            TypeText(form, QStringLiteral("tbRatingDate"), QString::fromLatin1(time));
            TypeText(form, QStringLiteral("tbNotes"), QStringLiteral("weir rating"));
            int row = 0;
            for (const Cells& point : points) {
                ++row;
                TypeCell(form, row, 1, QString::fromLatin1(point[0]));
                TypeCell(form, row, 2, QString::fromLatin1(point[1]));
            }
            Picture(form, picture);
            Click(form, QStringLiteral("cmdOK"));
        });
        Trigger(list, QStringLiteral("mnuNewTable"));
    }

    static void CompareSheet(const QString& sheet, const char* name) {
        QFile dump(InFolder(QString::fromLatin1(name)));
        QVERIFY(dump.open(QIODevice::WriteOnly));
        dump.write(sheet.toUtf8());
        QCOMPARE(sheet, ReadText(QStringLiteral(RILLBOOK_SOURCE_DIR "/tests/data/tour-") +
                                 QString::fromLatin1(name)));
    }

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

    std::unique_ptr<frmMain> window_;
    int pictures_ = 0;
};

int main(int argc, char** argv) {
    DesktopApplication application(argc, argv);
    folderOfTour =
        QDir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("tour")).absolutePath();
    const QtDoors doors(Application::Title());
    // The pages become files, whatever printers the machine has.
    QtPrinterDoor files{QPageSize(QPageSize::A4)};
    TheDesktop().printers = &files;
    Tour tour;
    const int failures = QTest::qExec(&tour, QStringList{application.arguments().first()});
    std::printf("Pictures, printed pages and the sheet's text: %s\n", qPrintable(folderOfTour));
    return failures;
}

#include "Tour.moc"
