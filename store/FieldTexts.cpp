#include "store/FieldTexts.h"

#include "platform/text/Numbers.h"

namespace rillbook {

QString TextOrEmpty(const Field& field) {
    return field.IsNull() ? QString() : field.Text();
}

void SetTextOrNull(Field field, const QString& text) {
    if (text.isEmpty()) {
        field.SetValue(Null{});
    } else {
        field.SetValue(text);
    }
}

std::optional<double> ShownNumber(const Field& field) {
    if (!field.IsNumeric()) {
        return std::nullopt;
    }
    return ReadLeadingNumber(field.Text());
}

}  // namespace rillbook
