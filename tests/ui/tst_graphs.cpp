#include <QClipboard>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QtTest/QtTest>

#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "graphs/frmDailyG.h"
#include "graphs/frmInstG.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/qt/PictureBox.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "store/StationDatabase.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

const int kLoadings = 2;  // pointers set by one: the hourglass and the normal one

// What a drawing shows of the station: its titles, the unit's letters in one word, and its lines
// and dots. Grid, frame and the axes' labels are left out.
QString GraphText(const QStringList& drawing) {
    static const QRegularExpression title(QStringLiteral("^text .* bold .*\"(.*)\"$"));
    static const QRegularExpression curve(QStringLiteral("^(line|circle) .*$"));
    QStringList parts;
    QString unit;
    for (const QString& operation : drawing) {
        const QString text = title.match(operation).captured(1);
        if (text.size() == 1) {
            unit += text;
        } else if (!text.isEmpty() || curve.match(operation).hasMatch()) {
            parts += text.isEmpty() ? operation : text;
        }
    }
    return (parts << unit).join(u'\n');
}

// A curve is readings every quarter of an hour, but for one that is late.
void LateReading(StationFixture& station) {
    station.WithReadings("2002-01-01", 15, {2, 4}).WithReadings("2002-01-01 01:15", 15, {5, 6});
}

// Readings at midnight and noon, so that a day's mean is plain; January 3 has none, and the
// midnight that ends the period is a day of its own.
void WinterDays(StationFixture& station) {
    station.WithReadings("2002-01-01", 720, {1, 3, 2, 6})
        .WithReadings("2002-01-04", 720, {4, 4, 5});
}

}  // namespace

class TestGraphs : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void Draws_data();
    void Draws();
    void LeavesTheSurface_data();
    void LeavesTheSurface();
    void ReadsAnewWithEachSize();
    void TellsOnceThoughItOpensMaximised();
    void SharesOnePlace();
    void CopiesWhatItShows();
    void RebuildsAfterSettings();
    void Prints();
    void PrintsAsTheUserTurnsThePage();
    void PrintsNothing_data();
    void PrintsNothing();
    void TellsOnceWhatCantBeRead();

private:
    std::unique_ptr<GraphForm> MakeForm(bool daily) {
        const QString project = QStringLiteral("Upper basin");
        if (daily) {
            return std::make_unique<frmDailyG>(project, cdbprinter_);
        }
        return std::make_unique<frmInstG>(project, cdbprinter_);
    }
    // Shows a graph and does this in it.
    void InGraph(const std::function<void(QWidget&)>& steps, bool daily = false) {
        const std::unique_ptr<GraphForm> form = MakeForm(daily);
        const NextWindow window([&](QWidget& shown) {
            QCoreApplication::processEvents();
            steps(shown);
            shown.close();
        });
        form->exec();
    }
    // Since the last time.
    std::size_t Loadings() {
        const std::size_t loadings = doors_->pointers.size() / kLoadings;
        doors_->pointers.clear();
        return loadings;
    }

    CommonDialog cdbprinter_;
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

void TestGraphs::init() {
    FailOnAnyWarning();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>();
    DescribeReportedChannel();
    cdbprinter_ = {};
    StationInfo.TimeIncrement = 1.0 / 96;
    ChannelInfoData& channel = ChannelInfo[1];
    channel.GraphMin = 0;
    channel.GraphMax = 10;
    channel.OutputSeries = 11000;
    ReportEndDate = At("2002-01-04");
}

void TestGraphs::cleanup() {
    station_.reset();
    doors_.reset();
}

void TestGraphs::Draws_data() {
    QTest::addColumn<bool>("daily");
    QTest::addColumn<Story>("story");
    QTest::addColumn<QString>("graph");

    // On the surface below, a quarter of an hour is 25 twips from 820 on, and a foot is 100 up from
    // 1620.
    QTest::newRow("a late reading breaks the line")
        << false << Story(LateReading)
        << "line 820,1420 845,1220 width 1 (0,0,225)\nline 945,1120 970,1020 width 1 (0,0,225)\n"
           "Kettle Creek - Stage\nUpper basin\nDate\nft";
    QTest::newRow("the last day is shown whole") << false << Story([](StationFixture& station) {
        station.WithReadings("2002-01-04 23:45", 15, {5, 5, 5});
    })
                                                 << "line 10395,1120 10420,1120 width 1 (0,0,225)\n"
                                                    "Kettle Creek - Stage\nUpper basin\nDate\nft";
    const Story rated([](StationFixture& station) {
        LateReading(station);
        station.WithEquation("2000-01-01", 1, 0, 1, 1)
            .WithJournalRow("2002-01-02", 1, 3, 4, true, 7)
            .WithJournalRow("2002-01-03", 1, 3, 4);
        ChannelInfo[1].Conversion = 1;
    });
    QTest::newRow("a rated channel") << false << rated
                                     << "line 820,1420 845,1220 width 1 (0,0,225)\n"
                                        "line 945,1120 970,1020 width 1 (0,0,225)\n"
                                        "Kettle Creek - Flow\nUpper basin\nDate\ncfs";
    QTest::newRow("measured discharge of a rated channel")
        << false << Story([rated](StationFixture& station) {
               rated(station);
               ShowMeasured = true;
           })
        << "line 820,1420 845,1220 width 1 (0,0,225)\nline 945,1120 970,1020 width 1 (0,0,225)\n"
           "circle 3220,920 radius 34 black, filled black\n"
           "circle 8770,820 radius 34 black, filled black\n"  // of the legend
           "Kettle Creek - Flow\nUpper basin\nDate\ncfs";
    QTest::newRow("means, and a day that is missing")
        << true << Story(WinterDays)
        << "line 820,1420 3220,1220 width 1 (0,0,225)\nline 8020,1220 10420,1120 width 1 "
           "(0,0,225)\n"
           "Kettle Creek - Daily Mean Stage\nUpper basin\nDate\nft";
    QTest::newRow("each series in its own colour")
        << true << Story([](StationFixture& station) {
               WinterDays(station);
               ChannelInfo[1].OutputSeries = 10111;
           })
        << "line 820,1520 3220,1420 width 1 (0,128,255)\n"
           "line 8020,1220 10420,1120 width 1 (0,128,255)\n"
           "line 820,1320 3220,1020 width 1 (0,140,0)\n"
           "line 8020,1220 10420,1120 width 1 (0,140,0)\n"
           "line 820,1220 3220,820 width 1 (255,128,0)\n"
           "line 8020,820 10420,1120 width 1 (255,128,0)\n"
           "Kettle Creek - Daily Min, Max, Total Stage\nUpper basin\nDate\nft";
    QTest::newRow("no series") << true << Story([](StationFixture& station) {
        WinterDays(station);
        ChannelInfo[1].OutputSeries = 10000;
    }) << "Kettle Creek - Daily  Stage\nUpper basin\nDate\nft";
    QTest::newRow("a single reading") << false << Story([](StationFixture& station) {
        station.WithReadings("2002-01-01", 15, {2});
    }) << "Kettle Creek - Stage\nUpper basin\nDate\nft";
    QTest::newRow("a single reading makes no day") << true << Story([](StationFixture& station) {
        station.WithReadings("2002-01-01", 15, {2});
    }) << "";
}

void TestGraphs::Draws() {
    QFETCH(bool, daily);
    QFETCH(Story, story);
    if (daily) {
        StationInfo.TimeIncrement = 0.5;
    }
    story(*station_);
    RecordingSurface surface(9600 + 820 + 420, 1000 + 620 + 520);
    MakeForm(daily)->LoadGraph(false, surface);
    QTEST(GraphText(surface.recording.lines), "graph");
    QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
}

void TestGraphs::LeavesTheSurface_data() {
    QTest::addColumn<Story>("story");
    QTest::addColumn<QString>("message");
    QTest::newRow("no reading") << Story([](StationFixture&) {}) << "No data within dates!";
    QTest::newRow("an axis of no span") << Story([](StationFixture& station) {
        WinterDays(station);
        ChannelInfo[1].GraphMin = 10;
    }) << "";
    QTest::newRow("an axis upside down") << Story([](StationFixture& station) {
        WinterDays(station);
        ChannelInfo[1].GraphMin = 11;
    }) << "";
    QTest::newRow("a period of no length") << Story([](StationFixture& station) {
        WinterDays(station);
        ReportEndDate = At("2001-12-31");
    }) << "";
}

void TestGraphs::LeavesTheSurface() {
    QFETCH(Story, story);
    QFETCH(QString, message);
    story(*station_);
    for (const bool daily : {false, true}) {
        if (!message.isEmpty()) {
            doors_->ExpectMessage(message);
        }
        RecordingSurface surface(9600, 6000);
        MakeForm(daily)->LoadGraph(false, surface);
        QCOMPARE(surface.recording.Text(), QString());
        QCOMPARE(doors_->MousePointer(), static_cast<int>(vbDefault));
    }
}

void TestGraphs::ReadsAnewWithEachSize() {
    LateReading(*station_);
    InGraph([&](QWidget& form) {
        QCOMPARE(form.windowTitle(), QStringLiteral("Instantaneous Graph - Upper basin"));
        QCOMPARE(Loadings(), std::size_t{1});
        const auto& picture = Child<PictureBox>(form, QStringLiteral("Picture1"));
        QCOMPARE(picture.size(), QSize(605, 387));  // 9195 - 125, 6495 - 685 twips
        const QImage before = picture.Image();

        ChannelInfo[1].RecDesc = QStringLiteral("Depth of the water");
        form.resize(700, 500);
        QCOMPARE(picture.size(), QSize(692, 454));
        QCOMPARE(picture.Image().copy(before.rect()), before);
        QCoreApplication::processEvents();
        QCOMPARE(Loadings(), std::size_t{1});
        QVERIFY(picture.Image().copy(before.rect()) != before);

        form.setMinimumSize(1, 1);
        form.resize(24, 33);
        QCOMPARE(picture.size(), QSize(692, 454));
    });
}

void TestGraphs::TellsOnceThoughItOpensMaximised() {
    // The window gets its size while the user reads the message.
    struct ReadMessage : MessageLog {
        MsgBoxAnswer Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                          const QString& title) override {
            const MsgBoxAnswer answer = MessageLog::Show(text, buttons, icon, title);
            QTest::qWait(20);
            return answer;
        }
    } messages;
    GraphM = 2;
    InGraph([&](QWidget& form) {
        QTest::qWait(20);
        QVERIFY(form.isMaximized());
    });
    QCOMPARE(messages.texts.join(u' '), QStringLiteral("! No data within dates!"));
    QCOMPARE((QList<int>{GraphL, GraphT, GraphW, GraphH, GraphM}),
             (QList<int>{100, 100, 9200, 6500, 2}));
}

void TestGraphs::SharesOnePlace() {
    WinterDays(*station_);
    InGraph([](QWidget& form) {
        form.move(20, 30);
        form.resize(640, 400);
    });
    QCOMPARE((QList<int>{GraphL, GraphT, GraphW, GraphH, GraphM}),
             (QList<int>{300, 450, 9600, 6000, 0}));
    InGraph(
        [](QWidget& form) {
            QCOMPARE(form.windowTitle(), QStringLiteral("Daily Values Graph - Upper basin"));
            QCOMPARE(QRect(form.pos(), form.size()), QRect(20, 30, 640, 400));
            form.showMaximized();
        },
        true);
    QCOMPARE((QList<int>{GraphL, GraphT, GraphW, GraphH, GraphM}),
             (QList<int>{300, 450, 9600, 6000, 2}));
}

void TestGraphs::CopiesWhatItShows() {
    LateReading(*station_);
    InGraph([](QWidget& form) {
        const QImage picture = Child<PictureBox>(form, QStringLiteral("Picture1")).Image();
        QImage white = picture;
        white.fill(Qt::white);
        QVERIFY(picture != white);
        Trigger(form, QStringLiteral("mnuEditCopy"));
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(picture.format()), picture);
    });
}

void TestGraphs::RebuildsAfterSettings() {
    LateReading(*station_);
    for (const bool daily : {false, true}) {
        InGraph(
            [&](QWidget& form) {
                Loadings();
                for (const auto& [button, loadings] : {std::pair{"cmdCancel", 0U}, {"cmdOK", 1U}}) {
                    const NextWindow settings([&, name = button](QWidget& dialog) {
                        QCOMPARE(Child<QWidget>(dialog, QStringLiteral("chkMean")).isVisible(),
                                 daily);
                        Click(dialog, QString::fromLatin1(name));
                    });
                    Trigger(form, QStringLiteral("mnuEditSettings"));
                    QCOMPARE(Loadings(), std::size_t{loadings});
                }
                Trigger(form, QStringLiteral("mnuEditRefresh"));
                QCOMPARE(Loadings(), std::size_t{1});
            },
            daily);
    }
}

void TestGraphs::Prints() {
    LateReading(*station_);
    const std::shared_ptr<PrintRecording> page = doors_->ExpectPrint();
    InGraph([](QWidget& form) { Trigger(form, QStringLiteral("mnuFilePrint")); });
    QCOMPARE(QStringLiteral("%1 %2, %3 %4")
                 .arg(page->dialogTitle)
                 .arg(page->dialogOrientation)
                 .arg(page->name)
                 .arg(page->orientation),
             QStringLiteral("Print 2, Instantaneous Graph - Upper basin 2"));
    // The plot is 11792 by 8364 twips, its corner at 1972, 1628.
    QCOMPARE(GraphText(page->lines).section(u'\n', 0, 2),
             QStringLiteral("line 1972,8319 2003,6646 width 4 (0,0,225)\n"
                            "line 2126,5810 2156,4974 width 4 (0,0,225)\nKettle Creek - Stage"));
    const QStringList foot = page->lines.last(3);
    QVERIFY(foot.at(0).startsWith(QStringLiteral("text 1152,10732 Arial 8 italic black \"") +
                                  StationTitle));
    QCOMPARE(foot.at(2), QStringLiteral("end of document"));
    QCOMPARE(doors_->MousePointer(), static_cast<int>(vbDefault));
}

void TestGraphs::PrintsAsTheUserTurnsThePage() {
    LateReading(*station_);
    const std::shared_ptr<PrintRecording> page = doors_->ExpectPrint();
    page->turnedTo = cdlPortrait;
    InGraph([](QWidget& form) { Trigger(form, QStringLiteral("mnuFilePrint")); });
    QCOMPARE(page->orientation, static_cast<int>(cdlPortrait));
}

void TestGraphs::PrintsNothing_data() {
    QTest::addColumn<int>("linesUntilFailure");
    QTest::addColumn<QString>("message");
    QTest::newRow("cancelled") << -1 << "";
    QTest::newRow("no paper") << 0 << "could not be printed: Out of paper";
    QTest::newRow("no paper left in the middle") << 9 << "could not be printed: Out of paper";
}

void TestGraphs::PrintsNothing() {
    QFETCH(int, linesUntilFailure);
    QFETCH(QString, message);
    LateReading(*station_);
    std::shared_ptr<PrintRecording> page;
    if (message.isEmpty()) {
        doors_->CancelPrinter();
    } else {
        page = doors_->ExpectPrint();
        page->linesUntilFailure = linesUntilFailure;
        doors_->ExpectMessage(QStringLiteral("Instantaneous Graph - Upper basin ") + message);
    }
    InGraph([](QWidget& form) {
        Trigger(form, QStringLiteral("mnuFilePrint"));
        QVERIFY(form.isVisible());
    });
    QVERIFY(page == nullptr || page->lines.last() == u"given up");
    QCOMPARE(doors_->MousePointer(), static_cast<int>(vbDefault));
}

void TestGraphs::TellsOnceWhatCantBeRead() {
    LateReading(*station_);
    InGraph([&](QWidget& form) {
        const auto& picture = Child<PictureBox>(form, QStringLiteral("Picture1"));
        const QImage before = picture.Image();
        const std::shared_ptr<PrintRecording> page = doors_->ExpectPrint();
        for (const char* table : {"Calibration", "Records"}) {
            RunPlainSql(station_->Path(), QByteArray("DROP TABLE ") + table);
            MessageLog log;
            Trigger(form, QStringLiteral("mnuEditRefresh"));
            QCOMPARE(log.texts.size(), 1);
            QVERIFY(form.isVisible());
            QCOMPARE(picture.Image(), before);
            QCOMPARE(doors_->MousePointer(), static_cast<int>(vbDefault));
            if (page->lines.isEmpty()) {
                Trigger(form, QStringLiteral("mnuFilePrint"));
                QCOMPARE(log.texts.size(), 2);
                QCOMPARE(page->Text(), QStringLiteral("given up"));
            }
        }
    });
}

}  // namespace rillbook

QTEST_MAIN(rillbook::TestGraphs)
#include "tst_graphs.moc"
