#include "platform/qt/PrintQueue.h"

#include <cups/cups.h>

namespace rillbook {

QString QueueFault(const QString& printer) {
    const QByteArray queue = printer.section(u'/', 0, 0).toUtf8();
    const QByteArray instance = printer.section(u'/', 1).toUtf8();
    cups_dest_t* const found = cupsGetNamedDest(
        CUPS_HTTP_DEFAULT, queue.constData(), instance.isEmpty() ? nullptr : instance.constData());
    if (found == nullptr) {
        return PrinterIsGone(printer);
    }
    const QByteArray accepts(
        cupsGetOption("printer-is-accepting-jobs", found->num_options, found->options));
    cupsFreeDests(1, found);
    return accepts == "false"
               ? QStringLiteral("The printer %1 does not accept documents.").arg(printer)
               : QString();
}

QString PrinterIsGone(const QString& printer) {
    return QStringLiteral("The printer %1 is not available any more.").arg(printer);
}

}  // namespace rillbook
