#pragma once

namespace carrovan {

// The process: loads what it needs and runs the wizard's window.
class CCarrovanApp {
 public:
  // Runs the wizard from its opening to its end, or tells the user why it cannot open. Always
  // false: when it returns nothing is left to run.
  bool InitInstance();
};

}  // namespace carrovan
