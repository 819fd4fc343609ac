#pragma once

#include <memory>

#include "forms/reference/RatingEditor.h"

namespace rillbook {

namespace Ui {
class frmConversionEq;
}

// Edits one equation rating: from when it applies, its constants and its notes. REQUIRES: an open
// station.
class frmConversionEq : public RatingEditor {
    Q_OBJECT
public:
    explicit frmConversionEq(QWidget* parent = nullptr);
    ~frmConversionEq() override;

    RatingTime Time() const override;

protected:
    bool Check() override { return CheckValues(); }
    void Save() override { SaveValues(); }

private:
    void LoadValues();
    bool CheckValues() const;
    void SaveValues() const;

    std::unique_ptr<Ui::frmConversionEq> ui_;
};

}  // namespace rillbook
