#pragma once

#include <QFont>

namespace rillbook {

// The face by which the sizes on forms were measured: a plain sans serif 11 pixels high, which
// is 8.25 points. Sized in pixels, as the forms are, so that texts fit their places on any screen.
QFont FormFont();

}  // namespace rillbook
