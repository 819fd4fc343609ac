#include "tests/support/FormTest.h"

#include "platform/text/Regional.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

void FormTest::init() {
    FailOnAnyWarning();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>(2);
    DescribeReportedChannel();
}

void FormTest::cleanup() {
    station_.reset();
    doors_.reset();
    RegionalSettings() = Regional();
}

}  // namespace rillbook
