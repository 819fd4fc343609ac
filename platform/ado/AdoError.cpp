#include "platform/ado/AdoError.h"

namespace rillbook {

AdoError::AdoError(int number, const QString& description, AdoCause cause)
    : number_(number), cause_(cause), description_(description), utf8_(description.toUtf8()) {}

}  // namespace rillbook
