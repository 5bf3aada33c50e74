#pragma once

#include "package/staging_folder.h"

namespace carrovan {

// A staging folder that goes away however the run ends.
class StagingFolder {
 public:
  StagingFolder(ProductContext& context, const Machine& machine)
      : context_(context), machine_(machine), made_(RenewStagingFolder(context, machine)) {}
  ~StagingFolder() {
    if (made_) DeleteStagingFolder(context_, machine_);
  }
  StagingFolder(const StagingFolder&) = delete;
  StagingFolder& operator=(const StagingFolder&) = delete;

  bool IsMade() const { return made_; }

 private:
  ProductContext& context_;
  const Machine& machine_;
  bool made_;
};

}  // namespace carrovan
