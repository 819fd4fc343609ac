#pragma once

#include "platform/ado/AdoError.h"

namespace rillbook {

// The number of the error that a step raises; 0 where it raises none.
template <typename Step>
int ErrorOf(const Step& step) {
    try {
        step();
        return 0;
    } catch (const AdoError& error) {
        return error.Number();
    }
}

}  // namespace rillbook
