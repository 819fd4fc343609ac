#include "graphs/frmInstG.h"

#include "compute/Compute.h"
#include "store/FormStuff.h"

namespace rillbook {

frmInstG::frmInstG(const QString& projectName, CommonDialog& printerDialog, QWidget* parent)
    : GraphForm({.name = QStringLiteral("frmInstG"),
                 .captionHead = QStringLiteral("Instantaneous Graph - "),
                 .mode = ReportMode::InstantaneousGraph,
                 .seriesCount = 1},
                projectName, printerDialog, parent) {}

void frmInstG::LoadValues(DateTime from, DateTime to, int chan) {
    LoadSeries(from, to, chan);
}

ChartPoints frmInstG::Points(int) const {
    return InstantaneousPoints(StationInfo.TimeIncrement);
}

QString frmInstG::TitleWords(int) const {
    return QStringLiteral(" - ");
}

}  // namespace rillbook
