#pragma once

#include <QString>

namespace rillbook {

// What the store needs of the main window: the panel whose texts are part of the station's header,
// and what shows whether a station is open.
class StationPanel {
public:
    enum class Item {
        Name,       // typed by the user
        Notes,      // typed by the user
        Channels,   // display only
        Records,    // count, or "Empty"
        BeginDate,  // short date, or empty
        EndDate     // short date, or empty
    };

    virtual ~StationPanel() = default;
    virtual QString Text(Item item) const = 0;
    virtual void SetText(Item item, const QString& text) = 0;
    virtual void ShowPanel(bool visible) = 0;
    virtual void EnableStationMenus(bool on) = 0;
    // The open station has another file now, StationPath; it was `former`.
    virtual void StationRenamed(const QString& former) = 0;
    virtual void SetWindowCaption(const QString& caption) = 0;
};

// The main window installs itself; tests install their own. Null before and after.
extern StationPanel* TheStationPanel;

}  // namespace rillbook
