#pragma once

#include <QImage>
#include <QWidget>
#include <memory>

namespace rillbook {

class DrawingSurface;

// A picture on a form that keeps what is drawn on it, for repaints and for the clipboard. It has
// the pixels of the widget at the screen's pixel ratio; a resize empties it (white) once something
// new is drawn, and until then shows the old drawing at its old size.
class PictureBox : public QWidget {
    Q_OBJECT
public:
    explicit PictureBox(QWidget* parent = nullptr);
    ~PictureBox() override;

    // To draw on now, at the present size; good until the next call. Asking for it changes nothing
    // on the picture yet.
    DrawingSurface& Surface();

    // Exactly what the picture shows, at the screen's pixels; null where it has no size.
    QImage Image() const;

    // Puts Image() on the clipboard in place of what was there.
    void CopyToClipboard() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    class PictureSurface;
    std::unique_ptr<PictureSurface> surface_;
};

}  // namespace rillbook
