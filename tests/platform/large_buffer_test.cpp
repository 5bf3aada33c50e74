#include "platform/large_buffer.h"

#include <gtest/gtest.h>

#include <string>

namespace carrovan {
namespace {

TEST(LargeBuffer, KeepsWhatItHoldsAtEverySize) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, std::size_t{5000}, std::size_t{20} << 20}) {
    std::string buffer(size, 'x');
    ExpectToFill(buffer.data(), buffer.size());
    EXPECT_EQ(buffer.find_first_not_of('x'), std::string::npos) << size;
  }
}

}  // namespace
}  // namespace carrovan
