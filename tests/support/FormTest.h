#pragma once

// What the tests of windows have in common, for all of them to include.

#include <QDialog>
#include <functional>

#include "platform/desktop/CommonDialog.h"
#include "platform/qt/DTPicker.h"
#include "platform/qt/MSFlexGrid.h"
#include "tests/support/CoreTest.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

// Gives each test of a form the scripted doors and an open station of two channels, and fails it on
// any warning. A report can be shown: channel 1 is the stage of Kettle Creek in ft, flow in cfs
// where it is rated, two decimals; a reading each half day; the period is the year 2002. Regional
// settings are those of the start. A derived test that adds to init() or cleanup() calls these.
class FormTest : public QObject {
    Q_OBJECT

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
    CommonDialog printer_;
};

// Shows a form that holds the user, does this in it once it is active, and closes it.
void InForm(QDialog& form, const std::function<void(QWidget& form)>& steps);

// A decimal comma, dates with the day first, and a day of 24 hours.
void UseOtherRegion();

}  // namespace rillbook
