#pragma once

#include <cstddef>
#include <memory>

#include "platform/xml_dom.h"

namespace carrovan {

// A DOM that passes everything on and counts what the nodes are asked for. A call takes a step, and
// one more for each node and each character that it has to look at: the name's, those of a text and
// all nodes above which it stands, those that are copied. Loading and saving are not counted.
class CountingDom : public XmlDom {
 public:
  explicit CountingDom(XmlDom& dom) : dom_(dom) {}

  std::unique_ptr<XmlSession> Begin() override;

  std::size_t Steps() const { return steps_; }

 private:
  XmlDom& dom_;
  std::size_t steps_ = 0;
};

}  // namespace carrovan
