#pragma once

#include <memory>

#include "forms/reports/ReportForm.h"
#include "graphs/Chart.h"

namespace rillbook {

class CommonDialog;
class DrawingSurface;

namespace Ui {
class GraphForm;
}

// What the two graph windows share: a picture that fills them, the menus, the page on paper, and
// one remembered place on the screen. The graph is of the open station's output channel over the
// report period, and is read and drawn again after each change of the window's size.
class GraphForm : public ReportForm {
    Q_OBJECT
public:
    ~GraphForm() override;

    // Reads the readings and the journal's values and draws the graph, with the margins and pens of
    // paper or of the screen. Returns false and leaves the surface as it was if the period has no
    // reading (LoadSeries reports it) or the value axis has no span. Raises PrinterError, and
    // AdoError if the journal cannot be read although the readings could.
    bool LoadGraph(bool toPrinter, DrawingSurface& surface);

    void done(int result) override;

protected:
    struct Kind {
        QString name;         // of the form
        QString captionHead;  // what stands before the project's name
        ReportMode mode;
        int seriesCount;
    };

    GraphForm(const Kind& kind, const QString& projectName, CommonDialog& printerDialog,
              QWidget* parent);

    // Draws on the picture, or reports why it cannot.
    void Rebuild() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    virtual void LoadValues(DateTime from, DateTime to, int chan) = 0;
    virtual ChartPoints Points(int chan) const = 0;
    // Between the channel's own description and that of its quantity.
    virtual QString TitleWords(int chan) const = 0;

    void FitPicture();
    void RebuildSoon();
    void PrintGraph();

    const int seriesCount_;
    const QString projectName_;
    std::unique_ptr<Ui::GraphForm> ui_;
    bool rebuildsSoon_ = false;
    bool hasReadings_ = true;  // the picture's latest load found some
};

}  // namespace rillbook
