#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace rillbook {

// Texts of grid cells and their form on the clipboard.

// The text on one line: each run of line breaks and tabs is one blank; none at the end.
QString OneLine(const QString& text);

// The text, or the empty text if it consists of blanks.
QString EmptyIfBlank(const QString& text);

// Splits the text of the clipboard into rows of cells, each cell on one line. Tabs separate cells;
// any kind of line end separates rows, and one at the very end adds no row. A cell in quotes can
// hold line breaks, tabs and doubled quotes, as spreadsheets write it; quotes around any other text
// belong to the text. No rows for the empty text; rows can differ in length.
QList<QStringList> SplitCells(QStringView text);

}  // namespace rillbook
