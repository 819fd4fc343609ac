#include "platform/qt/UpDown.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/text/Numbers.h"

namespace rillbook {

UpDown::UpDown(QWidget* parent) : QWidget(parent) {
    auto* stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(0);
    const auto addButton = [&](const QString& name, Qt::ArrowType arrow, int direction) {
        auto* button = new QToolButton(this);
        button->setObjectName(name);
        button->setArrowType(arrow);
        button->setAutoRepeat(true);
        button->setFocusPolicy(Qt::NoFocus);
        button->setMinimumSize(1, 1);
        button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
        connect(button, &QToolButton::clicked, this, [this, direction] { Step(direction); });
        stack->addWidget(button);
    };
    addButton(QStringLiteral("up"), Qt::UpArrow, 1);
    addButton(QStringLiteral("down"), Qt::DownArrow, -1);
}

void UpDown::SetBuddy(QLineEdit* buddy) {
    if (buddy_) {
        buddy_->removeEventFilter(this);
    }
    buddy_ = buddy;
    if (buddy_) {
        buddy_->installEventFilter(this);
    }
}

int UpDown::Value() const {
    const double number = buddy_ ? ReadLeadingNumber(buddy_->text()) : 0;
    return qRound(std::clamp(number, -1e9, 1e9));
}

void UpDown::Step(int direction) {
    if (!buddy_) {
        Q_EMIT Pressed(direction);
        return;
    }
    const int value = Value();
    const int next = std::max(min_, std::min(max_, value + direction));
    if (next != value) {
        buddy_->setText(QString::number(next));
        Q_EMIT Change();
    }
}

bool UpDown::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && isEnabled()) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            Step(key == Qt::Key_Up ? 1 : -1);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace rillbook
