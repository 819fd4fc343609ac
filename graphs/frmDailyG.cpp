#include "graphs/frmDailyG.h"

#include "compute/Summary.h"
#include "store/FormStuff.h"

namespace rillbook {

frmDailyG::frmDailyG(const QString& projectName, CommonDialog& printerDialog, QWidget* parent)
    : GraphForm({.name = QStringLiteral("frmDailyG"),
                 .captionHead = QStringLiteral("Daily Values Graph - "),
                 .mode = ReportMode::DailyGraph,
                 .seriesCount = kMaxSeries},
                projectName, printerDialog, parent) {}

void frmDailyG::LoadValues(DateTime from, DateTime to, int chan) {
    LoadDailySeries(from, to, chan);
}

ChartPoints frmDailyG::Points(int chan) const {
    return DailyPoints(ShownSeries(ChannelInfo[chan].OutputSeries));
}

QString frmDailyG::TitleWords(int chan) const {
    static const std::array<QString, kMaxSeries> words{QStringLiteral("Mean"),
                                                       QStringLiteral("Min"), QStringLiteral("Max"),
                                                       QStringLiteral("Total")};
    const std::array<bool, kMaxSeries> shown = ShownSeries(ChannelInfo[chan].OutputSeries);
    QStringList shownWords;
    for (std::size_t series = 0; series < shown.size(); ++series) {
        if (shown[series]) {
            shownWords << words[series];
        }
    }
    return QStringLiteral(" - Daily ") + shownWords.join(QStringLiteral(", ")) + u' ';
}

}  // namespace rillbook
