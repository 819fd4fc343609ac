#include <QClipboard>
#include <QRegularExpression>

#include "compute/Compute.h"
#include "graphs/frmDailyG.h"
#include "graphs/frmInstG.h"
#include "platform/qt/PictureBox.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// What a drawing shows of the station: its titles, the unit's letters in one word, and its lines
// and dots. Grid, frame and the axes' labels are left out.
QString GraphText(const QStringList& drawing) {
    static const QRegularExpression title(u"^text .* bold .*\"(.*)\"$"_qs);
    QStringList parts;
    QString unit;
    for (const QString& operation : drawing) {
        const QString text = title.match(operation).captured(1);
        if (text.size() == 1) {
            unit += text;
        } else if (!text.isEmpty()) {
            parts += text;
        } else if (operation.startsWith(u"line ") || operation.startsWith(u"circle ")) {
            parts += operation;
        }
    }
    return (parts << unit).join(u'\n');
}

// A curve is readings every quarter of an hour, but for one that is late.
void LateReading(StationFixture& station) {
    station.WithReadings("2002-01-01", 15, {2, 4}).WithReadings("2002-01-01 01:15", 15, {5, 6});
}

}  // namespace

class TestGraphs : public FormTest {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FormTest::init();
        StationInfo.TimeIncrement = 1.0 / 96;
        ReportEndDate = At("2002-01-04");
    }
    // Readings at midnight and noon, none on January 3; the midnight that ends the period is a day
    // of its own. A day is 2400 twips from 820 on, and a foot is 100 up from 1620.
    void DrawsDays() {
        station_->WithReadings("2002-01-01", 720, {1, 3, 2, 6})
            .WithReadings("2002-01-04", 720, {4, 4, 5});
        StationInfo.TimeIncrement = 0.5;
        ChannelInfo[1].OutputSeries = 11101;
        QCOMPARE(GraphText(Drawing(true)),
                 u"line 820,1420 3220,1220 width 1 (0,0,225)\n"
                 "line 8020,1220 10420,1120 width 1 (0,0,225)\n"
                 "line 820,1520 3220,1420 width 1 (0,128,255)\n"
                 "line 8020,1220 10420,1120 width 1 (0,128,255)\n"
                 "line 820,1220 3220,820 width 1 (255,128,0)\n"
                 "line 8020,820 10420,1120 width 1 (255,128,0)\n"
                 "Kettle Creek - Daily Mean, Min, Total Stage\nUpper basin\nDate\nft"_qs);
        QCOMPARE(doors_->pointers, (std::vector<int>{vbHourglass, vbDefault}));
    }

    void DrawsNothing() {
        doors_->ExpectMessage(u"No data within dates!"_qs);
        QCOMPARE(Drawing(false), QStringList());
        LateReading(*station_);
        ChannelInfo[1].GraphMin = 10;  // an axis of no span
        QCOMPARE(Drawing(false), QStringList());
        ChannelInfo[1].GraphMin = 0;
        ReportEndDate = At("2001-12-31");  // a period of no length
        QCOMPARE(Drawing(false), QStringList());
    }

    void ReadsAnewWithEachSize() {
        LateReading(*station_);
        InGraph(false, [&](QWidget& form) {
            QCOMPARE(Loadings(), std::size_t{1});
            const auto& picture = Child<PictureBox>(form, u"Picture1"_qs);
            const QImage before = picture.Image();
            form.resize(700, 500);
            QCOMPARE(picture.Image().copy(before.rect()), before);
            QCoreApplication::processEvents();
            QCOMPARE(Loadings(), std::size_t{1});
            const QImage after = picture.Image();
            QVERIFY(after.copy(before.rect()) != before);
            QVERIFY(QTest::qWaitForWindowActive(&form));
            QTest::keyClick(&form, Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(after.format()), after);
            Trigger(form, u"mnuEditRefresh"_qs);
            QCOMPARE(Loadings(), std::size_t{1});
        });
    }

    void RebuildsAfterSettingsAndSharesOnePlace() {
        LateReading(*station_);
        for (const bool daily : {false, true}) {
            InGraph(daily, [&](QWidget& form) {
                QCOMPARE(QRect(form.pos(), form.size()) == QRect(20, 30, 640, 400), daily);
                Loadings();
                const NextWindow settings([&](QWidget& dialog) {
                    QCOMPARE(Child<QWidget>(dialog, u"chkMean"_qs).isVisible(), daily);
                    Click(dialog, u"cmdOK"_qs);
                });
                Trigger(form, u"mnuEditSettings"_qs);
                QCOMPARE(Loadings(), std::size_t{1});
                form.move(20, 30);
                form.resize(640, 400);
            });
        }
    }

    // Until the user asks for the graph again.
    void ReportsMissingReadingsOnce() {
        doors_->ExpectMessage(u"No data within dates!"_qs);
        InGraph(false, [&](QWidget& form) {
            for (const int width : {700, 500}) {
                form.resize(width, 500);
                QCoreApplication::processEvents();
            }
            doors_->ExpectMessage(u"No data within dates!"_qs);
            Trigger(form, u"mnuEditRefresh"_qs);
            LateReading(*station_);
            Trigger(form, u"mnuEditRefresh"_qs);
            Loadings();
            form.resize(700, 500);
            QCoreApplication::processEvents();
            QCOMPARE(Loadings(), std::size_t{1});
        });
    }

    void DrawsAtTheSizeThatItGotDuringAMessage() {
        struct ResizingLog : MessageLog {
            QWidget* form = nullptr;
            MsgBoxAnswer Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                              const QString& title, std::optional<MsgBoxAnswer> byEnter) override {
                if (form != nullptr) {
                    form->resize(700, 500);
                    QCoreApplication::processEvents();
                }
                return MessageLog::Show(text, buttons, icon, title, byEnter);
            }
        } log;
        LateReading(*station_);
        station_->WithJournalRow("2002-01-02", 1, 3, 4);
        RunPlainSql(station_->Path(), "INSERT INTO Calibration(chan, read2) VALUES (1, 1)");
        ChannelInfo[1].Calibration = 1;
        InGraph(false, [&](QWidget& form) {
            log.form = &form;
            BeginReport();
            Loadings();
            Trigger(form, u"mnuEditRefresh"_qs);
            QCoreApplication::processEvents();
            QCOMPARE(Loadings(), std::size_t{2});
        });
        QCOMPARE(log.texts.size(), 2);
    }

    void PrintsNoEmptyGraph_data() {
        const DataRows<QString, bool, QString> row("records", "daily", "reason");
        row("none", false, "");
        row("without a value", false, "No data within dates!");
        row("without a value", true, "No data within dates!");
        row("but no axis", false, "Max value must be greater than Min Value");
    }
    // Records without a value for the channel open an empty graph without a message.
    void PrintsNoEmptyGraph() {
        QFETCH(QString, records);
        QFETCH(bool, daily);
        QFETCH(QString, reason);
        if (records == u"without a value") {
            station_->WithRecord("2002-01-01", {std::nullopt, 1});
        } else if (records == u"but no axis") {
            LateReading(*station_);
            ChannelInfo[1].GraphMin = ChannelInfo[1].GraphMax;
        }
        if (reason.isEmpty()) {
            doors_->ExpectMessage(u"No data within dates!"_qs);
        }
        const auto page = doors_->ExpectPrint();
        InGraph(daily, [&](QWidget& form) {
            doors_->ExpectMessage(reason.isEmpty() ? u"No data within dates!"_qs
                                                   : form.windowTitle() +
                                                         u" could not be printed: "_qs + reason);
            Trigger(form, u"mnuFilePrint"_qs);
        });
        QCOMPARE(page->Text(), u"given up"_qs);
    }

    // The refusal comes before the readings are loaded.
    void ReportsARefusingPrinter() {
        LateReading(*station_);
        const auto page = doors_->ExpectPrint();
        page->refusal = u"The printer Office does not accept documents."_qs;
        InGraph(false, [&](QWidget& form) {
            RunPlainSql(station_->Path(), "DROP TABLE Calibration");
            doors_->ExpectMessage(u"Instantaneous Graph - Upper basin could not be printed: "_qs +
                                  page->refusal);
            Trigger(form, u"mnuFilePrint"_qs);
            QCOMPARE(page->Text(), QString());
        });
    }

    // A rated channel with a late reading and measured values: cancelled, broken off, printed, and
    // printed as the user turns the page.
    void Prints() {
        LateReading(*station_);
        station_->WithEquation("2000-01-01", 1, 0, 1, 1)
            .WithJournalRow("2002-01-02", 1, 3, 4, true, 7)
            .WithJournalRow("2002-01-03", 1, 3, 4);
        ChannelInfo[1].Conversion = 1;
        ShowMeasured = true;
        doors_->CancelPrinter();
        const auto broken = doors_->ExpectPrint();
        broken->linesUntilFailure = 9;
        doors_->ExpectMessage(
            u"Instantaneous Graph - Upper basin could not be printed: Out of paper"_qs);
        const auto page = doors_->ExpectPrint();
        const auto turned = doors_->ExpectPrint();
        turned->turnedTo = cdlPortrait;
        InGraph(false, [&](QWidget& form) {
            for (int i = 0; i < 4; ++i) {
                doors_->pointers.clear();
                Trigger(form, u"mnuFilePrint"_qs);
                QCOMPARE(doors_->pointers,
                         i == 0 ? std::vector<int>() : std::vector<int>({vbHourglass, vbDefault}));
            }
        });
        QCOMPARE(broken->lines.last(), u"given up"_qs);
        QCOMPARE(page->name, u"Instantaneous Graph - Upper basin"_qs);
        QCOMPARE(QPoint(page->dialogOrientation, page->orientation), QPoint(2, 2));
        QCOMPARE(turned->orientation, static_cast<int>(cdlPortrait));
        // The plot is 11792 by 8364 twips, its corner at 1972, 1628.
        QCOMPARE(GraphText(page->lines),
                 u"line 1972,8319 2003,6646 width 4 (0,0,225)\n"
                 "line 2126,5810 2156,4974 width 4 (0,0,225)\n"
                 "circle 4920,4137 radius 34 black, filled black\n"
                 "circle 12114,1828 radius 34 black, filled black\n"  // of the legend
                 "Kettle Creek - Flow\nUpper basin\nDate\ncfs"_qs);
        QVERIFY(page->Text().contains(u"\ntext 1152,10732 Arial 8 italic black \"station.mdb"_qs));
        QCOMPARE(page->lines.last(), u"end of document"_qs);
    }

    void TellsOnceWhatCantBeRead() {
        LateReading(*station_);
        InGraph(false, [&](QWidget& form) {
            const auto& picture = Child<PictureBox>(form, u"Picture1"_qs);
            const QImage before = picture.Image();
            const auto page = doors_->ExpectPrint();
            RunPlainSql(station_->Path(), "DROP TABLE Calibration");
            MessageLog log;
            Trigger(form, u"mnuEditRefresh"_qs);
            QCOMPARE(log.texts.size(), 1);
            QCOMPARE(picture.Image(), before);
            Trigger(form, u"mnuFilePrint"_qs);
            QCOMPARE(log.texts.size(), 2);
            QCOMPARE(page->Text(), u"given up"_qs);
        });
    }

private:
    std::unique_ptr<GraphForm> MakeForm(bool daily) {
        if (daily) {
            return std::make_unique<frmDailyG>(u"Upper basin"_qs, printer_);
        }
        return std::make_unique<frmInstG>(u"Upper basin"_qs, printer_);
    }
    QStringList Drawing(bool daily) {
        RecordingSurface surface(9600 + 820 + 420, 1000 + 620 + 520);
        MakeForm(daily)->LoadGraph(false, surface);
        return surface.recording.lines;
    }
    // Shows a graph and does this in it.
    void InGraph(bool daily, const std::function<void(QWidget&)>& steps) {
        const std::unique_ptr<GraphForm> form = MakeForm(daily);
        InForm(*form, steps);
    }
    // Since the last time; each sets the hourglass and the normal pointer.
    std::size_t Loadings() {
        const std::size_t loadings = doors_->pointers.size() / 2;
        doors_->pointers.clear();
        return loadings;
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestGraphs)
#include "tst_graphs.moc"
