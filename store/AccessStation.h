#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <stdexcept>

#include "platform/access/AccessFile.h"

namespace rillbook {

// Why a database can't become a station; what() is a sentence for the user, without the file's
// name.
class ConversionError : public std::runtime_error {
public:
    explicit ConversionError(const QString& text) : std::runtime_error(text.toStdString()) {}
};

// What a station has no place for: tables by name, columns as "Table.Column".
struct Leftovers {
    QStringList tables;
    QStringList columns;
};

// Gives the five tables of one database to a sink, the same each time it is called.
using TableReader = std::function<void(access::TableSink&)>;

// Fills a copy of the template with what the reader gives, in the columns of the template and one
// for each channel that the readings have. Raises ConversionError, AdoError and what the reader
// raises; the copy is worth nothing then. REQUIRES: nobody else knows of the file.
Leftovers FillStation(const QString& path, const TableReader& read);

// Raises ConversionError where a value, a row or a column of the file isn't what the reader gives
// now. REQUIRES: FillStation has filled it.
void RequireSameStation(const QString& path, const TableReader& read);

}  // namespace rillbook
