#pragma once

#include <QMap>
#include <QString>
#include <QTemporaryDir>
#include <optional>
#include <vector>

#include "platform/text/DateTime.h"
#include "store/StationPanel.h"

namespace rillbook {

// "2002-01-01" or "2002-01-01 00:15", also with seconds. Any other text ends the process.
DateTime At(const char* text);

// "2002-01-01 00:15:00", whatever the regional settings.
QString MomentText(DateTime moment);

// Stands in for the main window while it lives.
class FakePanel : public StationPanel {
public:
    FakePanel();
    ~FakePanel() override;

    QMap<Item, QString> texts;
    bool visible = false;
    bool menusEnabled = false;
    QString formerPath;

    QString Text(Item item) const override { return texts.value(item); }
    void SetText(Item item, const QString& text) override { texts.insert(item, text); }
    void ShowPanel(bool on) override { visible = on; }
    void EnableStationMenus(bool on) override { menusEnabled = on; }
    void StationRenamed(const QString& former) override { formerPath = former; }
    void SetWindowCaption(const QString&) override {}
};

// A new station's file, made from the template's source, with one row of Information a channel (as
// the template has it) and the columns chan1 to chanN in Records. Replaces what is there.
void CreateStationFile(const QString& path, int channels = 1);

// The rows of a query or of a table (by name) as text, one line a row: "2002-01-01 00:15:00 | 1.2 |
// NULL". Dates and readings by the declared type of their column. Reads past the program's own
// database layer, and sees what another process would see; a failure is the text.
QString DumpTable(const QString& path, const QString& tableOrQuery);

// The message that ends an import.
QString ImportMessage(int readable, int unreadable, int repeated);

// A temporary station, open from birth on, in a program that has just started otherwise. Install
// scripted doors before it. At the end of its life all shared state is back to its start values.
class StationFixture {
public:
    using Reading = std::optional<double>;  // nothing: NULL
    struct RatingPoint {
        double depth;
        double flow;
    };

    explicit StationFixture(int channels = 1);
    ~StationFixture();
    StationFixture(const StationFixture&) = delete;
    StationFixture& operator=(const StationFixture&) = delete;

    QString Folder() const { return folder_.path(); }
    QString Path() const { return folder_.filePath(QStringLiteral("station.mdb")); }

    // Puts a logger file beside the station, in the place of the last one, and gives its path.
    QString LoggerFile(const QByteArray& bytes) const;

    // As the main window does it: the names follow a successful OpenDB; Close writes the header.
    void Open();
    void Close();

    // All of them return the station, so that a story reads as one sentence. Rows are added by way
    // of the open station's recordsets; a failure is an AdoError.

    // A record every `stepMinutes` with the reading in one channel, and NULL in the others.
    StationFixture& WithReadings(const char* begin, double stepMinutes,
                                 const std::vector<Reading>& readings, int chan = 1);
    // One record, its readings from channel 1 on; channels beyond them are NULL.
    StationFixture& WithRecord(const char* time, const std::vector<Reading>& readings);
    StationFixture& WithJournalRow(const char* time, int chan, Reading logger, Reading actual,
                                   bool inUse = true, Reading discharge = {},
                                   const QString& notes = {});
    StationFixture& WithEquation(const char* from, int chan, double A, double r, double c,
                                 const QString& notes = {});
    StationFixture& WithTable(const char* from, int chan, const std::vector<RatingPoint>& points,
                              const QString& notes = {});

    // DumpTable of this station.
    QString Dump(const char* tableOrQuery) const;

    FakePanel panel;

private:
    QTemporaryDir folder_;
};

}  // namespace rillbook
