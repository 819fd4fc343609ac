#include "platform/qt/PictureBox.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>

#include "platform/qt/PainterSurface.h"
#include "platform/qt/Twips.h"

namespace rillbook {

namespace {

constexpr double kPixelsPerInch = 1440.0 / kTwipsPerPixel;

// White, with the fonts' dots to the inch of a screen of this pixel ratio.
QImage EmptyImage(const QSize& pixels, double ratio) {
    QImage image(pixels, QImage::Format_RGB32);
    const int dotsPerMetre = qRound(kPixelsPerInch * ratio / 0.0254);
    image.setDotsPerMeterX(dotsPerMetre);
    image.setDotsPerMeterY(dotsPerMetre);
    image.fill(Qt::white);
    return image;
}

}  // namespace

class PictureBox::PictureSurface : public PainterSurface {
public:
    explicit PictureSurface(PictureBox& box) : box_(box) { Prepare(); }

    void Prepare() {
        EndPainting();
        size_ = box_.size();
        ratio_ = box_.devicePixelRatioF();
        measure_ = EmptyImage(QSize(1, 1), ratio_);
    }

    double ScaleWidth() const override { return ToTwips(size_.width()); }
    double ScaleHeight() const override { return ToTwips(size_.height()); }

    void Clear(Colour background) override {
        Paint([colour = ColorOf(background)](QPainter& painter) {
            painter.fillRect(painter.viewport(), colour);
        });
    }

    // Ends the painting of what was drawn so far; more may follow.
    void EndPainting() {
        if (painter_.isActive()) {
            painter_.end();
        }
    }

    void Show(QPainter& painter) {
        EndPainting();
        painter.fillRect(QRect(QPoint(0, 0), box_.size()), Qt::white);
        if (!drawing_.isNull()) {
            const QSizeF shown = drawing_.size() / drawingRatio_;
            painter.drawImage(QRectF(QPointF(0, 0), shown), drawing_);
        }
    }

protected:
    const QPaintDevice& Device() const override { return measure_; }
    double DotsPerInch() const override { return kPixelsPerInch * ratio_; }
    double DotsPerPen() const override { return ratio_; }

    void Paint(Step step) override {
        if (size_.isEmpty()) {
            return;
        }
        if (!painter_.isActive()) {
            BeginPainting();
        }
        if (painter_.isActive()) {
            step(painter_);
        }
    }

private:
    void BeginPainting() {
        const QSize pixels = (QSizeF(size_) * ratio_).toSize();
        if (drawing_.size() != pixels || drawingRatio_ != ratio_) {
            drawing_ = EmptyImage(pixels, ratio_);
            drawingRatio_ = ratio_;
        }
        // Null where the memory doesn't suffice.
        if (!drawing_.isNull()) {
            painter_.begin(&drawing_);
            box_.update();
        }
    }

    PictureBox& box_;
    QSize size_;  // in logical pixels, when the surface was last asked for
    double ratio_ = 1;
    QImage measure_;
    QImage drawing_;
    double drawingRatio_ = 1;
    QPainter painter_;  // must go before the image
};

PictureBox::PictureBox(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    surface_ = std::make_unique<PictureSurface>(*this);
}

PictureBox::~PictureBox() = default;

DrawingSurface& PictureBox::Surface() {
    surface_->Prepare();
    return *surface_;
}

QImage PictureBox::Image() const {
    if (size().isEmpty()) {
        return {};
    }
    const double ratio = devicePixelRatioF();
    QImage image = EmptyImage((QSizeF(size()) * ratio).toSize(), ratio);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    surface_->Show(painter);
    return image;
}

void PictureBox::CopyToClipboard() const {
    QGuiApplication::clipboard()->setImage(Image());
}

void PictureBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    surface_->Show(painter);
}

}  // namespace rillbook
