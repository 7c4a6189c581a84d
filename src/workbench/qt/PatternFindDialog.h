// The dialog that asks what to find among names, and how they are compared. Main thread.
#pragma once

#include <functional>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/FindRequest.h"
#include "workbench/qt/FormDialog.h"

class QCheckBox;
class QLineEdit;

namespace kalvex::window {

// Made by new; it destroys itself when it closes.
class CFindDlg final : public FormDialog {
  public:
    // Opens with that request; `accepted` takes what OK has.
    CFindDlg(const platform::Translator& translator, const workbench::FindRequest& request,
             std::function<void(const workbench::FindRequest&)> accepted, QWidget* parent);

    void accept() override;

  private:
    const std::function<void(const workbench::FindRequest&)> m_accepted;
    QLineEdit* const m_text;
    std::vector<QCheckBox*> m_options;  // in the order of their table
};

}  // namespace kalvex::window
