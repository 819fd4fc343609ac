#pragma once

#include "platform/ado/AdoError.h"

namespace rillbook {

constexpr AdoErrorNumber noError{};

// The error that a step raises.
template <typename Step>
AdoErrorNumber ErrorOf(const Step& step) {
    try {
        step();
        return noError;
    } catch (const AdoError& error) {
        return static_cast<AdoErrorNumber>(error.Number());
    }
}

}  // namespace rillbook
