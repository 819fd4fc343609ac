#pragma once

#include <QString>
#include <optional>

#include "platform/ado/Recordset.h"

namespace rillbook {

// NULL stands for the empty text.
QString TextOrEmpty(const Field& field);
void SetTextOrNull(Field field, const QString& text);

// The number as its column shows it: a 32-bit 1.2 is 1.2, and goes back as it came. Missing for
// NULL and for a text that is no number.
std::optional<double> ShownNumber(const Field& field);

}  // namespace rillbook
