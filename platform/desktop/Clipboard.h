#pragma once

#include <QString>

namespace rillbook {

// Lines of text end with a carriage return, or with that and a line feed; the text of other
// programs comes with both.
class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual void Clear() = 0;
    virtual void SetText(const QString& text) = 0;
    virtual QString GetText() = 0;
};

}  // namespace rillbook
