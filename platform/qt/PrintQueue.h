#pragma once

#include <QString>

namespace rillbook {

// Why the queue of this printer does not take a document, as a sentence; empty if it does. A
// stopped queue takes documents and prints them later. Qt reports a queue that rejects jobs as
// idle, and drops the document without an error.
QString QueueFault(const QString& printer);

QString PrinterIsGone(const QString& printer);

}  // namespace rillbook
