#pragma once

#include <QString>

namespace rillbook {

class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual void Clear() = 0;
    virtual void SetText(const QString& text) = 0;
    virtual QString GetText() = 0;
};

}  // namespace rillbook
