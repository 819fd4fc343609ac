#include "forms/main/StationTree.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMouseEvent>

namespace rillbook {

namespace {

// A key that is held down would repeat the message about a station that can't be opened.
bool IsChoice(const QKeyEvent& event) {
    const bool isChoosingKey = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter ||
                               event.key() == Qt::Key_Space;
    return isChoosingKey && !event.isAutoRepeat();
}

}  // namespace

StationTree::StationTree(QWidget* parent) : QTreeWidget(parent) {
    // Long descriptions scroll into view.
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void StationTree::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        inDoubleClick_ = false;
        QTreeWidget::mousePressEvent(event);
    }
}

void StationTree::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        QTreeWidget::mouseReleaseEvent(event);
        if (inDoubleClick_) {
            return;
        }
        Q_EMIT NodeClick();
        Q_EMIT Click();
    } else if (event->button() == Qt::RightButton) {
        Q_EMIT MenuAsked(event->globalPosition().toPoint());
    }
}

void StationTree::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        // Until the next press, and not until its release: that one doesn't get here where a
        // window comes up on the double click.
        inDoubleClick_ = true;
        QTreeWidget::mouseDoubleClickEvent(event);
        Q_EMIT DblClick();
    }
}

void StationTree::keyPressEvent(QKeyEvent* event) {
    const QTreeWidgetItem* before = currentItem();
    QTreeWidget::keyPressEvent(event);
    if (currentItem() != before || (before != nullptr && IsChoice(*event))) {
        Q_EMIT NodeClick();
        Q_EMIT Click();
    }
}

void StationTree::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard && currentItem() != nullptr) {
        Q_EMIT MenuAsked(viewport()->mapToGlobal(visualItemRect(currentItem()).center()));
    }
}

}  // namespace rillbook
