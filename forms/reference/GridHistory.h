#pragma once

#include <QStringList>
#include <QUndoStack>
#include <functional>

namespace rillbook {

class MSFlexGrid;

// Undo and redo for the texts and the number of rows of a grid; the fixed row is not included. Undo
// and redo make the first cell that they change the current one and bring it into view. The grid
// must outlive it.
class GridHistory : public QUndoStack {
    Q_OBJECT
public:
    explicit GridHistory(MSFlexGrid& grid, QObject* parent = nullptr);

    // Runs `change` and stores the difference that it made to the grid under this name, "Paste",
    // which the menu shows. Without a difference nothing is stored.
    void Record(const QString& name, const std::function<void()>& change);

private:
    QStringList Texts() const;

    MSFlexGrid& grid_;
};

}  // namespace rillbook
