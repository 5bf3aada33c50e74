#pragma once

#include <functional>

#include "environment/wizard_state.h"
#include "package/paced_registry_tool.h"
#include "package/run_report.h"
#include "platform/console.h"
#include "platform/machine.h"
#include "platform/xml_dom.h"
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

// What the wizard works with; everything outlives the flow.
struct WizardParts {
  ProductContext& context;
  WizardState& state;
  Machine machine;
  PacedRegistryTool& registryTool;
  XmlDom& dom;
  LineLog& log;  // of merges and rewrites
  WizardFrame& frame;
};

// The import that the user is about to make.
struct WizardImport {
  RunReport report;
  CategorySet offered;  // on the page of its categories
};

// What each button of the wizard does. Every message, check and page change happens before a
// function returns. A button that is pressed while a step is in progress, which a message box makes
// possible, does nothing.
class WizardFlow {
 public:
  explicit WizardFlow(const WizardParts& parts) : parts_(parts) {}

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

  // The button of the path page: asks for a package and takes it as the one to import. A legacy
  // package is unpacked at once, since its document names the version that it is for. Whoever
  // cancels, or chooses a package that is refused, goes on with what was chosen before: its path,
  // what was unpacked of it, and the versions on the page.
  void SelectFile(PathPageView& page);

 private:
  void RunAlone(const std::function<void()>& step);

  WizardParts parts_;
  WizardImport import_;
  bool inStep_ = false;
};

}  // namespace carrovan
