#pragma once

#include <QTreeWidget>

namespace rillbook {

// The list of a project's stations, each with its channels beneath. Its signals report what the
// user does, never what the program changes. They concern the selected node.
class StationTree : public QTreeWidget {
    Q_OBJECT
public:
    explicit StationTree(QWidget* parent = nullptr);

Q_SIGNALS:
    // Both come, in this order, when the left button is released, when the keyboard has moved the
    // selection, and when Enter or the space bar is pressed. They don't come at the release that
    // ends a double click.
    void NodeClick();
    void Click();
    void DblClick();
    // The right button was released, or the menu key pressed. The selection stays where it is,
    // wherever the pointer.
    void MenuAsked(const QPoint& globalPosition);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool inDoubleClick_ = false;
};

}  // namespace rillbook
