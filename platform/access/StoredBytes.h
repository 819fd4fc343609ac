#pragma once

#include <QByteArrayView>
#include <QtEndian>

#include "platform/access/AccessProtocol.h"

namespace rillbook::access {

// What an Access file can't hold, unless it is damaged.
inline void Require(bool holds) {
    if (!holds) {
        Raise(ReadError::Cause::Damaged);
    }
}

// A number of the file, which is little-endian. Raises Damaged where it runs over the end.
template <typename Number>
Number Read(QByteArrayView bytes, qsizetype offset = 0) {
    Require(offset >= 0 && offset + qsizetype{sizeof(Number)} <= bytes.size());
    return qFromLittleEndian<Number>(bytes.data() + offset);
}

}  // namespace rillbook::access
