#pragma once

#include <QObject>
#include <memory>

#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

// Gives each test of a form the scripted doors and an open station of two channels, the first of
// which can be reported, and fails it on any warning. A derived test that adds to init() or
// cleanup() calls these.
class FormTest : public QObject {
    Q_OBJECT

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

}  // namespace rillbook
