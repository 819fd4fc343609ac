#include <QClipboard>
#include <QGuiApplication>
#include <QLocale>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest/QTest>
#include <algorithm>
#include <set>

#include "platform/desktop/Desktop.h"
#include "platform/qt/PictureBox.h"
#include "platform/qt/QtDoors.h"
#include "platform/qt/QtPrinter.h"
#include "tests/support/Hardship.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

constexpr Colour kBlue{0, 0, 225};
constexpr Colour kGrey{195, 195, 195};

// "10w 2k 5b": the dots along a line of a picture, white, black, blue, grey or another.
QString Runs(const QImage& image, QPoint at, QPoint step) {
    QStringList runs;
    int length = 0;
    for (; image.valid(at); at += step) {
        const QColor colour = image.pixelColor(at);
        ++length;
        if (image.valid(at + step) && image.pixelColor(at + step) == colour) {
            continue;
        }
        const char16_t name = colour == Qt::white               ? u'w'
                              : colour == Qt::black             ? u'k'
                              : colour == QColor(0, 0, 225)     ? u'b'
                              : colour == QColor(195, 195, 195) ? u'g'
                                                                : u'?';
        runs += QString::number(length) + QChar(name);
        length = 0;
    }
    return runs.join(u' ');
}

// Where the picture isn't white, in twips.
QRectF InkOf(const QImage& image, double ratio) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Qt::white) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    const double twips = 15 / ratio;
    return {ink.x() * twips, ink.y() * twips, ink.width() * twips, ink.height() * twips};
}

// What the first page of a PDF file draws, one step a line: places, lengths, pens and sizes of
// fonts.
QString Steps(const QByteArray& pdf) {
    static const QRegularExpression wanted(u"^(.* (?:cm|re|m|l)$|\\S+ w(?= ))|(\\S+ Tf)"_qs);
    const QByteArray stream = pdf.sliced(pdf.indexOf("stream\n") + 7);
    QStringList found;
    for (const QByteArray& line : qUncompress(QByteArray("\0\x10\0\0", 4) + stream).split('\n')) {
        found += wanted.match(QString::fromLatin1(line).trimmed()).captured();
    }
    found.removeAll(QString());
    return found.join(u'\n');
}

}  // namespace

class tst_surface : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        doors_ = std::make_unique<ScriptedDoors>();
        folder_ = std::make_unique<QTemporaryDir>();
        picture_ = std::make_unique<PictureBox>();
        picture_->resize(200, 100);
        picture_->show();
        QVERIFY(QTest::qWaitForWindowExposed(picture_.get()));
        ratio_ = picture_->devicePixelRatioF();
    }
    void cleanup() {
        picture_.reset();
        doors_.reset();
    }

    // At 150 twips a frame's line is the dot that a strip of one dot there would be.
    void boxesAreSharp() {
        DrawingSurface& surface = picture_->Surface();
        QCOMPARE(QSizeF(surface.ScaleWidth(), surface.ScaleHeight()), QSizeF(3000, 1500));
        surface.FillColor = kBlue;
        surface.Fill = FillStyle::Solid;
        surface.Box(600, 300, 150.4, 154);
        const QString across = ratio_ == 1   ? u"10w 1k 29b 1k 159w"_qs
                               : ratio_ == 2 ? u"19w 2k 58b 2k 319w"_qs
                                             : u"a ratio without an expectation"_qs;
        const QString down = ratio_ == 1 ? u"10w 1k 9b 1k 79w"_qs : u"20w 2k 17b 2k 159w"_qs;
        QCOMPARE(Across(15 * ratio_), across);
        QCOMPARE(Down(15 * ratio_), down);

        surface.Fill = FillStyle::Transparent;
        surface.ForeColor = kBlue;
        surface.Box(1500, 150, 1650, 300);
        QCOMPARE(
            Across(15 * ratio_),
            across.chopped(4) + (ratio_ == 1 ? u"59w 1b 9w 1b 89w"_qs : u"118w 2b 18w 2b 179w"_qs));
    }

    void stripsAreEquallyThick() {
        DrawingSurface& surface = picture_->Surface();
        for (int i = 0; i < 20; ++i) {
            surface.PaintStrip(kGrey, i * 137.3, 0, 20, 1500);
        }
        surface.PaintStrip(kGrey, 0, 0, -20, 1500);
        std::set<QString> thickness;
        for (const QString& run : Across(0).split(u' ')) {
            if (run.endsWith(u'g')) {
                thickness.insert(run);
            }
        }
        QCOMPARE(thickness, std::set<QString>({ratio_ == 1 ? u"1g"_qs : u"3g"_qs}));
        QCOMPARE(Down(0), QStringLiteral("%1g").arg(100 * ratio_));
    }

    // A year of readings makes a line as thin as a day's.
    void denseLinesAreThin() {
        DrawingSurface& surface = picture_->Surface();
        for (int i = 0; i < 20000; ++i) {
            surface.Line(i * 0.15, 200 + i * 0.05, i * 0.15 + 0.15, 200.05 + i * 0.05);
        }
        int thickest = 0;
        const QImage image = picture_->Image();
        for (int x = 0; x < image.width(); ++x) {
            int dots = 0;
            for (int y = 0; y < image.height(); ++y) {
                dots += image.pixelColor(x, y) == Qt::black ? 1 : 0;
            }
            thickest = std::max(thickest, dots);
        }
        // A wider pen is taller where the line steps down.
        QCOMPARE(thickest, ratio_ == 1 ? 2 : 3);
    }

    void linesKeepTheirSlopeFarOff_data() {
        QTest::addColumn<QLineF>("line");
        QTest::addColumn<QLineF>("seen");
        QTest::newRow("to far above")
            << QLineF(0, 1500, 2e6, -2e6 + 1500) << QLineF(0, 1500, 1500, 0);
        QTest::newRow("through") << QLineF(-1e8, -1e8, 1e8, 1e8) << QLineF(0, 0, 1500, 1500);
        QTest::newRow("past") << QLineF(-1e8, 1600, 1e8, 1600) << QLineF();
        QTest::newRow("upright, past") << QLineF(-50, -1e8, -50, 1e8) << QLineF();
        QTest::newRow("no number") << QLineF(0, 0, qQNaN(), 100) << QLineF();
        QTest::newRow("without end") << QLineF(0, 0, 100, qInf()) << QLineF();
    }
    void linesKeepTheirSlopeFarOff() {
        QFETCH(const QLineF, line);
        QFETCH(const QLineF, seen);
        DrawingSurface& surface = picture_->Surface();
        surface.Line(line.x1(), line.y1(), line.x2(), line.y2());
        const QImage drawn = picture_->Image();
        surface.Clear(kWhite);
        if (!seen.isNull()) {
            surface.Line(seen.x1(), seen.y1(), seen.x2(), seen.y2());
        }
        QCOMPARE(InkOf(drawn, ratio_), InkOf(picture_->Image(), ratio_));
        QCOMPARE(drawn.pixelColor(drawn.rect().center()),
                 picture_->Image().pixelColor(drawn.rect().center()));
    }

    void circlesLieAroundTheirCentre() {
        DrawingSurface& surface = picture_->Surface();
        surface.Fill = FillStyle::Solid;
        surface.FillColor = kBlue;
        surface.Circle(1500, 750, 150, kBlack);
        surface.Circle(1500, qQNaN(), 150, kBlack);
        const QRectF ink = InkOf(picture_->Image(), ratio_);
        QVERIFY2(
            QRectF(1330, 580, 345, 345).contains(ink) && ink.contains(QRectF(1350, 600, 300, 300)),
            qPrintable(QDebug::toString(ink)));
        QCOMPARE(picture_->Image().pixelColor(QPointF(100 * ratio_, 50 * ratio_).toPoint()),
                 QColor(0, 0, 225));
    }

    // The nought of Arial is 0.556 of its size wide, so a hundred of them at 8 points 8896 twips.
    void textsHaveTheWidthsOfArial() {
        const QString noughts(100, u'0');
        const std::unique_ptr<Printer> page = BeginPdf(u"page.pdf"_qs);
        DrawingSurface& surface = picture_->Surface();
        for (DrawingSurface* drawn : {static_cast<DrawingSurface*>(page.get()), &surface}) {
            const double tolerance = drawn == &surface ? 0.04 : 0.005;
            for (const double size : {8.0, 10.0}) {
                drawn->Font.size = size;
                const double ratio = drawn->TextWidth(noughts) / (size * 20 * 55.6);
                QVERIFY2(qAbs(ratio - 1) < tolerance, qPrintable(QString::number(ratio)));
                const double height = drawn->TextHeight(u"X"_qs) / (size * 20);
                QVERIFY2(height > 1.05 && height < 1.25, qPrintable(QString::number(height)));
            }
            const double plain = drawn->TextWidth(u"Measured Values"_qs);
            drawn->Font.bold = true;
            QVERIFY(drawn->TextWidth(u"Measured Values"_qs) > plain * 1.03);
        }
    }

    void textsStandBelowAndRightOfTheirPlace() {
        DrawingSurface& surface = picture_->Surface();
        surface.ForeColor = kBlue;
        surface.CurrentX = 300;
        surface.CurrentY = 150;
        surface.PrintOn(u"&X<b>"_qs);
        const double end = surface.CurrentX;
        QCOMPARE(end, 300 + surface.TextWidth(u"&X<b>"_qs));
        const QRectF place(300, 150, end - 300, surface.TextHeight(u"X"_qs));
        const QRectF ink = InkOf(picture_->Image(), ratio_);
        QVERIFY2(place.adjusted(-15, 0, 15, 0).contains(ink) && ink.width() > place.width() * 0.9,
                 qPrintable(QDebug::toString(ink)));
        surface.Print(u"X"_qs);
        QCOMPARE(QPointF(surface.CurrentX, surface.CurrentY),
                 QPointF(0, 150 + surface.TextHeight(u"X"_qs)));
    }

    void keepsItsDrawingUntilTheNext() {
        picture_->Surface().PaintStrip(kGrey, 0, 0, 3000, 1500);
        picture_->resize(300, 80);
        const QString old = ratio_ == 1 ? u"200g 100w"_qs : u"400g 200w"_qs;
        QCOMPARE(Across(0), old);
        QCOMPARE(picture_->Surface().ScaleWidth(), 4500.0);
        QCOMPARE(Across(0), old);
        QCOMPARE(picture_->grab().toImage().convertToFormat(QImage::Format_RGB32),
                 picture_->Image());

        picture_->Surface().PaintStrip(kBlue, 0, 0, 150, 150);
        QCOMPARE(Across(0), ratio_ == 1 ? u"10b 290w"_qs : u"20b 580w"_qs);
        QCOMPARE(picture_->Image().size(), QSize(300, 80) * ratio_);
        picture_->CopyToClipboard();
        QCOMPARE(QGuiApplication::clipboard()->image(), picture_->Image());
    }

    void nothingIsDrawnWithoutSize() {
        const auto child = std::make_unique<PictureBox>(picture_.get());
        child->resize(0, 50);
        DrawingSurface& surface = child->Surface();
        surface.Clear(kWhite);
        surface.Line(0, 0, 100, 100);
        surface.Print(u"X"_qs);
        QVERIFY(surface.CurrentY > 100);
        QVERIFY(child->Image().isNull());
    }

    void pagesHaveTheirPapersSize_data() {
        QTest::addColumn<QPageSize::PageSizeId>("paper");
        QTest::addColumn<int>("orientation");
        QTest::addColumn<QSizeF>("twips");
        QTest::addColumn<QByteArray>("box");
        QTest::newRow("Letter") << QPageSize::Letter << 1 << QSizeF(12240, 15840)
                                << QByteArray("[0 0 612.000000 792.000000]");
        QTest::newRow("Letter, landscape") << QPageSize::Letter << 2 << QSizeF(15840, 12240)
                                           << QByteArray("[0 0 792.000000 612.000000]");
        QTest::newRow("A4, landscape") << QPageSize::A4 << 2 << QSizeF(16840, 11900)
                                       << QByteArray("[0 0 842.000000 595.000000]");
    }
    void pagesHaveTheirPapersSize() {
        QFETCH(const QPageSize::PageSizeId, paper);
        QFETCH(const int, orientation);
        QFETCH(const QByteArray, box);
        const QString path = folder_->filePath(u"page.pdf"_qs);
        QtPrinterDoor printers{QPageSize(paper)};
        doors_->AnswerFileDialog(path);
        const std::unique_ptr<Printer> page = printers.BeginDoc(u"Journal"_qs, orientation);
        QTEST(QSizeF(page->Width(), page->Height()), "twips");
        page->Print(u"one"_qs);
        page->NewPage();
        QCOMPARE(QPointF(page->CurrentX, page->CurrentY), QPointF(0, 0));
        page->NewPage();
        page->EndDoc();
        const QByteArray pdf = ReadBytes(path);
        QCOMPARE(pdf.count("/MediaBox " + box), 3);
    }

    // From the corner of the paper, an inch is 1440 twips or 1200 dots or 72 points; a pen of 4 is
    // as wide as on a printer of 600 dots to the inch. The first outline is what can be drawn on.
    void pagesAreMeasuredInTwips() {
        const std::unique_ptr<Printer> page = BeginPdf(u"page.pdf"_qs);
        page->Clear(kGrey);
        page->PaintStrip(kGrey, 1440, 2880, 20, 720);
        page->DrawWidth = 4;
        page->Line(1440, 1440, 2880, 1440);
        page->Box(720, 720, 1440, 2160);
        page->Font.italic = true;
        page->Print(u"Weir"_qs);
        page->EndDoc();
        const QByteArray pdf = ReadBytes(folder_->filePath(u"page.pdf"_qs));
        QCOMPARE(Steps(pdf),
                 u"0.060000000 0 0 -0.060000000 0 792 cm\n"
                 "0 0 m\n"
                 "9600 0 l\n"
                 "9600 12600 l\n"
                 "0 12600 l\n"
                 "0 0 l\n"
                 "1200 2400 17 600 re\n"
                 "8 w\n"
                 "1200 1200 m\n"
                 "2400 1200 l\n"
                 "8 w\n"
                 "600 600 600 1200 re\n"
                 "1 w\n"
                 "133 Tf"_qs);
        // Texts are texts, in a face that the file brings along.
        QVERIFY(pdf.contains("LiberationSans-Italic") && pdf.contains("/FontFile2") &&
                pdf.contains("/ToUnicode"));
    }

    void documentsAreWrittenWholeOrNotAtAll_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no such folder") << u"none/page.pdf"_qs << u"No such file or directory"_qs;
        QTest::newRow("a folder has the name") << u"sub"_qs << u"Filename refers to a directory"_qs;
        QTest::newRow("disk full") << u"old.pdf"_qs << u"The disk is full"_qs;
    }
    void documentsAreWrittenWholeOrNotAtAll() {
        QFETCH(const QString, name);
        QFETCH(const QString, reason);
        WriteBytes(folder_->filePath(u"old.pdf"_qs), "the old graph");
        QVERIFY(QDir(folder_->path()).mkdir(u"sub"_qs));
        const QString before = FolderText(folder_->path());
        {
            const std::unique_ptr<Printer> page = BeginPdf(name);
            page->Print(u"never ended"_qs);
        }
        QCOMPARE(FolderText(folder_->path()), before);
        const std::unique_ptr<Printer> page = BeginPdf(name);
        page->Print(u"Weir"_qs);
        QString told;
        try {
            const FullDisk full(1000);
            page->EndDoc();
        } catch (const PrinterError& failure) {
            told = failure.Reason();
        }
        QCOMPARE(told, QStringLiteral("Can't write %1: %2").arg(folder_->filePath(name), reason));
        QCOMPARE(FolderText(folder_->path()), before);
    }

    void filesAreAskedForAndServeOneDocument() {
        QtPrinterDoor printers{QPageSize(QPageSize::A4)};
        doors_->CancelFileDialog();
        QVERIFY(!printers.Choose(u"Print"_qs, cdlLandscape));
        doors_->CancelFileDialog();
        QVERIFY_EXCEPTION_THROWN(printers.BeginDoc(u"Weir / Stage"_qs, cdlPortrait),
                                 DialogCancelledError);
        doors_->AnswerFileDialog(folder_->filePath(u"a.pdf"_qs));
        QVERIFY(printers.Choose(u"Print the graph"_qs, cdlLandscape));
        printers.BeginDoc(u"first"_qs, cdlLandscape)->EndDoc();
        doors_->AnswerFileDialog(folder_->filePath(u"b.pdf"_qs));
        printers.BeginDoc(u"second"_qs, cdlPortrait)->EndDoc();
        // What a choice had left is void once another is cancelled.
        doors_->AnswerFileDialog(folder_->filePath(u"c.pdf"_qs));
        QVERIFY(printers.Choose(u"Print"_qs, cdlPortrait));
        doors_->CancelFileDialog();
        QVERIFY(!printers.Choose(u"Print"_qs, cdlPortrait));

        QCOMPARE(QDir(folder_->path()).entryList(QDir::Files).join(u' '), u"a.pdf b.pdf"_qs);
        QStringList asked;
        for (const FileRequest& request : doors_->fileRequests) {
            QVERIFY(request.save && request.confirmOverwrite);
            QCOMPARE(request.filter, u"PDF Files (*.pdf)|*.pdf|All Files (*.*)|*.*"_qs);
            asked += request.title + u'|' + request.fileName +
                     (request.folder == folder_->path() ? u"|there"_qs : request.folder);
        }
        QCOMPARE(asked.join(u'\n'),
                 u"Print|\n"
                 "Print|Weir - Stage.pdf\n"
                 "Print the graph|\n"
                 "Print|second.pdf|there\n"
                 "Print||there\n"
                 "Print||there"_qs);
    }

    void paperFollowsTheLocale() {
        QCOMPARE(PaperOf(QLocale(u"en_US"_qs)).id(), QPageSize::Letter);
        QCOMPARE(PaperOf(QLocale(u"en_GB"_qs)).id(), QPageSize::A4);
        QCOMPARE(PaperOf(QLocale(u"de_DE"_qs)).id(), QPageSize::A4);
    }

    void theDesktopHasAPrinterDoor() {
        const Desktop scripted = TheDesktop();
        {
            const QtDoors doors(u"Rillbook"_qs);
            QVERIFY(TheDesktop().printers != nullptr);
        }
        TheDesktop() = scripted;
    }

private:
    // Along a row or a column of device dots.
    QString Across(double y) const {
        return Runs(picture_->Image(), QPoint(0, qRound(y)), QPoint(1, 0));
    }
    QString Down(double x) const {
        return Runs(picture_->Image(), QPoint(qRound(x), 0), QPoint(0, 1));
    }

    // A portrait page of Letter.
    std::unique_ptr<Printer> BeginPdf(const QString& name) {
        QtPrinterDoor printers{QPageSize(QPageSize::Letter)};
        doors_->AnswerFileDialog(folder_->filePath(name));
        return printers.BeginDoc(u"Weir"_qs, cdlPortrait);
    }

    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<PictureBox> picture_;
    double ratio_ = 1;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_surface)
#include "tst_surface.moc"
