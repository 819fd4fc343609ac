#include "app/SharedState.h"

#include "app/InitialFile.h"
#include "compute/Compute.h"
#include "compute/Summary.h"
#include "graphs/Chart.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "store/RatingStore.h"
#include "store/StationDatabase.h"

namespace rillbook {

ReportMode SettingsMode = ReportMode::AnnualTable;
bool DialogCancelled = false;
bool ShowMeasured = false;
std::int32_t PrinterOrientation = 0;

void ResetSharedState() {
    SettingsMode = ReportMode::AnnualTable;
    DialogCancelled = false;
    ShowMeasured = false;
    PrinterOrientation = 0;
    ResetInitialFile();
    ResetStationDatabase();
    ResetFormStuff();
    ResetProjectFile();
    ResetRatingStore();
    ResetCompute();
    BeginReport();
    ResetSummary();
    ResetChart();
}

}  // namespace rillbook
