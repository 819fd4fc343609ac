#pragma once

// What the tests of the core have in common, for all of them to include.
#include <QtTest/QtTest>
#include <memory>

#include "app/Application.h"
#include "app/InitialFile.h"
#include "app/SharedState.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/text/Regional.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "store/StationDatabase.h"
#include "tests/support/AdoErrors.h"
#include "tests/support/CompareEach.h"
#include "tests/support/DataRows.h"
#include "tests/support/Hardship.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"
