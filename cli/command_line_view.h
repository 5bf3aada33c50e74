#pragma once

#include "cli/session.h"
#include "wizard/wizard_view.h"

namespace carrovan {

// The face of a run on the command line: messages go to standard error, the save-file question is
// answered by the command line, the finish text is kept until the run is known to have worked.
class CommandLineView : public WizardView {
 public:
  CommandLineView(const Session& session, std::wstring outputPath)
      : session_(session), outputPath_(std::move(outputPath)) {}

  void ShowMessage(const std::wstring& text) override { session_.Complain(text); }
  void ShowApplicationMessage(const std::wstring& text) override { ShowMessage(text); }

  std::optional<std::wstring> ChooseSaveFile(const SaveFileQuestion&) override {
    return outputPath_;
  }

  void SetFinishText(const std::wstring& text) override { finishText_ = text; }

  void CloseWizard() override {}

  const std::wstring& FinishText() const { return finishText_; }

 private:
  const Session& session_;
  std::wstring outputPath_;
  std::wstring finishText_;
};

}  // namespace carrovan
