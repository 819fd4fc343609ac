#include "graphs/Chart.h"

#include <QList>

#include "app/SharedState.h"
#include "platform/text/Numbers.h"

namespace rillbook {

namespace {

constexpr Colour kMajorLine{195, 195, 195};
constexpr Colour kMinorLine{225, 225, 225};
constexpr double kGridLineWidth = 20;  // on paper as on the screen

constexpr std::array<Colour, kMaxSeries> kSeriesColours{
    {{0, 0, 225}, {0, 128, 255}, {0, 140, 0}, {255, 128, 0}}};

const SurfaceFont kTextFont;
const SurfaceFont kTitleFont{.size = 10, .bold = true};
const SurfaceFont kAxisTitleFont{.bold = true};

// One drawing of one graph: the parts of it, each of which covers those before.
class ChartPainter {
public:
    ChartPainter(DrawingSurface& surface, bool toPrinter, DateTime fromDate, DateTime toDate,
                 double yMin, double yMax);

    void DrawGrid();
    void DrawSeries(const ChartTable& data, int series, std::int32_t pointCount);
    void DrawMeasuredValues();
    // Nothing is cut off while drawing: what lies outside the frame is painted out.
    void PaintOutside();
    void DrawFrame();
    void DrawLabels();
    void DrawTitles(const ChartTexts& texts);

private:
    PlotFrame FrameOn(bool toPrinter) const;
    void PrintAt(double x, double y, const QString& text);
    void PrintCentred(double y, const QString& text);
    void DrawMark(double x, double y);
    void DrawHorizontals(double step, Colour colour);
    void DrawVerticals(const std::vector<DateTime>& dates, Colour colour);
    void DrawVerticalText(const QString& text);

    DrawingSurface& surface_;
    const int pen_;
    double lineHeight_ = 0;  // of the labels' font; the layout counts in it
    PlotFrame frame_;
    AxisSteps steps_;
    DateAxis dates_;
};

ChartPainter::ChartPainter(DrawingSurface& surface, bool toPrinter, DateTime fromDate,
                           DateTime toDate, double yMin, double yMax)
    : surface_(surface), pen_(toPrinter ? 4 : 1) {
    if (!toPrinter) {
        surface_.Clear(kWhite);
    }
    surface_.Font = kTextFont;
    lineHeight_ = surface_.TextHeight(QStringLiteral("X"));
    frame_ = FrameOn(toPrinter);
    frame_.from = fromDate;
    frame_.to = toDate;
    frame_.yMin = yMin;
    frame_.yMax = yMax;
    steps_ = ValueAxisSteps(yMax - yMin);
    dates_ = DateAxisLines(fromDate, toDate);
}

PlotFrame ChartPainter::FrameOn(bool toPrinter) const {
    PlotFrame frame;
    frame.left = 20 + 4 * lineHeight_;
    frame.right = 20 + 2 * lineHeight_;
    frame.top = 20 + 3 * lineHeight_;
    frame.bottom = 20 + 2.5 * lineHeight_;
    if (toPrinter) {
        frame.left += 1152;
        frame.right += 936;
        frame.top += 1008;
        frame.bottom += 1008;
    }
    frame.width = surface_.ScaleWidth() - frame.right - frame.left;
    frame.height = surface_.ScaleHeight() - frame.top - frame.bottom;
    return frame;
}

void ChartPainter::PrintAt(double x, double y, const QString& text) {
    surface_.CurrentX = x;
    surface_.CurrentY = y;
    surface_.Print(text);
}

void ChartPainter::PrintCentred(double y, const QString& text) {
    PrintAt((surface_.ScaleWidth() - surface_.TextWidth(text)) / 2, y, text);
}

void ChartPainter::DrawHorizontals(double step, Colour colour) {
    for (const double v : AxisValues(frame_.yMin, frame_.yMax, step)) {
        surface_.PaintStrip(colour, frame_.left, frame_.ChartY(v), frame_.width, kGridLineWidth);
    }
}

void ChartPainter::DrawVerticals(const std::vector<DateTime>& dates, Colour colour) {
    for (const DateTime t : dates) {
        surface_.PaintStrip(colour, frame_.ChartX(t), frame_.top, kGridLineWidth, frame_.height);
    }
}

void ChartPainter::DrawGrid() {
    DrawHorizontals(steps_.minor, kMinorLine);
    DrawVerticals(dates_.minorLines, kMinorLine);
    DrawVerticals(dates_.majorLines, kMajorLine);
    DrawHorizontals(steps_.major, kMajorLine);
}

void ChartPainter::DrawSeries(const ChartTable& data, int series, std::int32_t pointCount) {
    surface_.ForeColor = kSeriesColours[static_cast<std::size_t>(series - 1)];
    surface_.DrawWidth = pen_;
    for (const ChartSegment& segment : SeriesSegments(data, frame_, series, pointCount)) {
        surface_.Line(frame_.ChartX(segment.t1), frame_.ChartY(segment.v1),
                      frame_.ChartX(segment.t2), frame_.ChartY(segment.v2));
    }
}

void ChartPainter::DrawMark(double x, double y) {
    surface_.Circle(x, y, 0.17 * lineHeight_, kBlack);
}

void ChartPainter::DrawMeasuredValues() {
    surface_.Font = kTextFont;
    surface_.ForeColor = kBlack;
    surface_.FillColor = kBlack;
    surface_.Fill = FillStyle::Solid;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(MeasuredCount); ++i) {
        if (frame_.IsNear(MeasuredDates[i])) {
            DrawMark(frame_.ChartX(MeasuredDates[i]),
                     frame_.ChartY(frame_.HeldValue(MeasuredValues[i])));
        }
    }
    const QString legend = QStringLiteral("Measured Values");
    const double x = frame_.left + frame_.width - 1.1 * surface_.TextWidth(legend);
    const double y = frame_.top + lineHeight_;
    DrawMark(x, y);
    PrintAt(x + 0.5 * lineHeight_, y - 0.5 * lineHeight_, legend);
}

void ChartPainter::PaintOutside() {
    const double width = surface_.ScaleWidth();
    const double height = surface_.ScaleHeight();
    surface_.ForeColor = kWhite;
    surface_.FillColor = kWhite;
    surface_.Fill = FillStyle::Solid;
    surface_.Box(0, 0, width, frame_.top);
    surface_.Box(0, 0, frame_.left, height);
    surface_.Box(0, frame_.top + frame_.height, width, height);
    surface_.Box(frame_.left + frame_.width, 0, width, height);
}

void ChartPainter::DrawFrame() {
    surface_.Fill = FillStyle::Transparent;
    surface_.ForeColor = kBlack;
    surface_.DrawWidth = pen_;
    surface_.Box(frame_.left, frame_.top, frame_.left + frame_.width, frame_.top + frame_.height);
}

void ChartPainter::DrawLabels() {
    surface_.Font = kTextFont;
    surface_.ForeColor = kBlack;
    const double below = frame_.ChartY(frame_.yMin) + 0.1 * lineHeight_;
    for (const DateTime t : dates_.labels) {
        const QString text = DateLabelText(t, dates_.labelsHaveTime);
        PrintAt(frame_.ChartX(t) - surface_.TextWidth(text) / 2, below, text);
    }
    const double rightEnd = frame_.left - surface_.TextWidth(QStringLiteral("X"));
    for (const double v : AxisValues(frame_.yMin, frame_.yMax, steps_.major)) {
        const QString text = RegionalNumberText(v);
        PrintAt(rightEnd - surface_.TextWidth(text), frame_.ChartY(v) - 0.5 * lineHeight_, text);
    }
}

void ChartPainter::DrawTitles(const ChartTexts& texts) {
    surface_.Font = kTitleFont;
    const double secondLine = frame_.top - 1.2 * surface_.TextHeight(texts.title2);
    PrintCentred(secondLine - surface_.TextHeight(texts.title1), texts.title1);
    PrintCentred(secondLine, texts.title2);
    surface_.Font = kAxisTitleFont;
    PrintCentred(frame_.ChartY(frame_.yMin) + surface_.TextHeight(texts.xTitle), texts.xTitle);
    DrawVerticalText(texts.yTitle);
}

// Its lines are closer than the font's, and it is centred on the surface, not on the plot.
void ChartPainter::DrawVerticalText(const QString& text) {
    const double height = surface_.TextHeight(text);
    const QList<uint> letters = text.toUcs4();
    double place = 1 - static_cast<double>(letters.size()) / 2;
    for (const uint code : letters) {
        const auto wide = static_cast<char32_t>(code);
        const QString letter = QString::fromUcs4(&wide, 1);
        PrintAt(frame_.left - 3 * height - surface_.TextWidth(letter) / 2,
                surface_.ScaleHeight() / 2 + 0.7 * height * place, letter);
        ++place;
    }
}

}  // namespace

void DrawChart(const ChartTable& data, DateTime fromDate, DateTime toDate, double yMin, double yMax,
               const ChartTexts& texts, int seriesCount, std::int32_t pointCount, bool toPrinter,
               DrawingSurface& surface) {
    ChartPainter painter(surface, toPrinter, fromDate, toDate, yMin, yMax);
    painter.DrawGrid();
    for (int series = 1; series <= std::min(seriesCount, kMaxSeries); ++series) {
        painter.DrawSeries(data, series, pointCount);
    }
    if (ShowMeasured) {
        painter.DrawMeasuredValues();
    }
    painter.PaintOutside();
    painter.DrawFrame();
    painter.DrawLabels();
    painter.DrawTitles(texts);
}

}  // namespace rillbook
