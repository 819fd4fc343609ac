#include "platform/ado/AdoError.h"

namespace rillbook {

AdoError::AdoError(int number, const QString& description)
    : number_(number), description_(description), utf8_(description.toUtf8()) {}

}  // namespace rillbook
