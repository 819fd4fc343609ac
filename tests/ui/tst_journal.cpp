#include <QtTest/QtTest>

#include "app/SharedState.h"
#include "forms/reference/frmCalibration.h"
#include "platform/ado/Connection.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/Hardship.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

// Keys that have no character.
const QMap<QChar, Qt::Key> kKeys = {
    {u'→', Qt::Key_Right}, {u'←', Qt::Key_Left},   {u'↑', Qt::Key_Up},     {u'↓', Qt::Key_Down},
    {u'⏎', Qt::Key_Enter}, {u'⎋', Qt::Key_Escape}, {u'⌫', Qt::Key_Delete}, {u'✎', Qt::Key_F2},
};

// Types into whatever has the focus. "®" stands for a row of the journal, "" for one more cell.
void Press(QWidget& form, const QString& keys) {
    for (const QChar key : keys) {
        if (kKeys.contains(key)) {
            QTest::keyClick(form.focusWidget(), kKeys[key]);
        } else {
            QTest::keyClick(form.focusWidget(), key.toLatin1());
        }
    }
}

}  // namespace

}  // namespace rillbook
