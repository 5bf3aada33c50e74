#pragma once

#include "environment/wizard_state.h"
#include "package/registry_tool.h"
#include "wizard/wizard_frame.h"

namespace carrovan {

// A flag that is up while this exists.
class RaisedFlag {
 public:
  explicit RaisedFlag(bool& flag) : flag_(flag) { flag_ = true; }
  ~RaisedFlag() { flag_ = false; }
  RaisedFlag(const RaisedFlag&) = delete;
  RaisedFlag& operator=(const RaisedFlag&) = delete;

 private:
  bool& flag_;
};

// The import's work behind the wizard's steps.
class ImportSteps {
 public:
  virtual ~ImportSteps() = default;

  // From the path page to the categories: opens and checks the package, mends what it holds and
  // fills the tree.
  enum class Entry {
    kReady,
    kRefused,  // the user was told why and stays on the path page
    kEnded,    // the user was told why; the program has to end
  };
  virtual Entry EnterCategories(EditableCategoryTree& tree) = 0;

  // Applies the package by the user's choice and sets the finish text.
  virtual void Apply(EditableCategoryTree& tree) = 0;

  // The import of a legacy package, which has no categories; sets the finish text.
  virtual void ApplyLegacy() = 0;
};

// The reset's work behind the wizard's steps.
class ResetSteps {
 public:
  virtual ~ResetSteps() = default;

  // Resets the checked categories and sets the finish text.
  virtual void Apply(EditableCategoryTree& tree) = 0;
};

// What the wizard works with; everything outlives the flow.
struct WizardParts {
  ProductContext& context;
  WizardState& state;
  Machine machine;
  RegistryTool& registryTool;
  WizardFrame& frame;
  ImportSteps& importSteps;
  ResetSteps& resetSteps;
};

// What each button of the wizard does. Every message, check and page change happens before a
// function returns. A button that is pressed while a step is in progress, which a message box makes
// possible, does nothing.
class WizardFlow {
 public:
  explicit WizardFlow(WizardParts parts) : parts_(parts) {}

  // Fills the context when the window opens: staging folder, product, installed versions. False
  // when the product is not one that this program knows; the frame has then been asked to close.
  bool Open();

  // Shows the start page once the frame has its pages.
  void Start();

  void Next();
  void Back();
  void Finish();

  // Exports every category that the version offers and stays on the reset page.
  void OneClickBackup();

 private:
  void RunAlone(void (*step)(const WizardParts&));

  WizardParts parts_;
  bool inStep_ = false;
};

}  // namespace carrovan
