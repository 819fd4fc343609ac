#pragma once

#include <QDialog>
#include <QString>
#include <functional>

#include "store/RatingStore.h"

class QLineEdit;

namespace rillbook {

// What the editors of one rating, the output channel's at RatingEditDate, have in common.
// DialogCancelled is true afterwards unless the rating was stored; the title bar and Esc cancel.
class RatingEditor : public QDialog {
    Q_OBJECT
public:
    void reject() override;

    // From when the rating applies, as typed; nothing if that is not a date-time.
    virtual RatingTime Time() const = 0;

protected:
    explicit RatingEditor(QWidget* parent) : QDialog(parent) {}

    // Runs one step of loading, whose failure is passed over for the moment.
    void Read(const std::function<void()>& step);
    // To be asked after loading: false, having told the user, where a step failed. Such a rating
    // mustn't be stored: what couldn't be read would be lost.
    bool TellWhetherRead() const;

    // Shows the time of the rating that was read in the box of the date.
    void ShowTime(QLineEdit& box, RatingTime time);
    // The time in that box. If the user left its text alone, the one that it shows, with its part
    // of a second. Nothing if the text is not a date.
    RatingTime TypedTime(const QLineEdit& box) const;

    // Closes the window if the input is sound and stored.
    void Confirm();
    // Tells the user what is wrong.
    virtual bool Check() = 0;
    // Raises AdoError, having changed nothing. REQUIRES: Check.
    virtual void Save() = 0;

private:
    QString fault_;  // the last that Read passed over
    RatingTime shownTime_;
};

}  // namespace rillbook
