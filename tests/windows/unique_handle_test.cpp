#include "platform/windows/handles.h"

#include <gtest/gtest.h>

namespace carrovan {
namespace {

// A handle points to the number of times that it was closed.
struct CountedTraits {
  using Handle = int*;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle closings) { ++*closings; }
};
using CountedHandle = UniqueHandle<CountedTraits>;

TEST(UniqueHandle, ClosesOnceAtTheEnd) {
  int closings = 0;
  { const CountedHandle handle(&closings); }
  EXPECT_EQ(closings, 1);
}

TEST(UniqueHandle, IsEmptyWithTheInvalidValue) {
  EXPECT_FALSE(CountedHandle());
  EXPECT_FALSE(CountedHandle(nullptr));
}

TEST(UniqueHandle, MoveLeavesNothingBehind) {
  int closings = 0;
  {
    CountedHandle first(&closings);
    const CountedHandle second(std::move(first));
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(second.Get(), &closings);
  }
  EXPECT_EQ(closings, 1);
}

TEST(UniqueHandle, MoveAssignmentClosesWhatWasHeld) {
  int oldClosings = 0;
  int newClosings = 0;
  CountedHandle target(&oldClosings);
  target = CountedHandle(&newClosings);
  EXPECT_EQ(oldClosings, 1);
  EXPECT_EQ(newClosings, 0);
  EXPECT_EQ(target.Get(), &newClosings);
}

TEST(UniqueHandle, SelfMoveKeepsTheHandle) {
  int closings = 0;
  CountedHandle handle(&closings);
  CountedHandle& same = handle;
  handle = std::move(same);
  EXPECT_EQ(closings, 0);
  EXPECT_EQ(handle.Get(), &closings);
}

TEST(UniqueHandle, ReleasedHandleIsTheCallersToClose) {
  int closings = 0;
  {
    CountedHandle handle(&closings);
    EXPECT_EQ(handle.Release(), &closings);
  }
  EXPECT_EQ(closings, 0);
}

TEST(UniqueHandle, ReceivingClosesWhatWasHeld) {
  int oldClosings = 0;
  int newClosings = 0;
  CountedHandle handle(&oldClosings);
  *handle.Receive() = &newClosings;
  EXPECT_EQ(oldClosings, 1);
  EXPECT_EQ(handle.Get(), &newClosings);
}

}  // namespace
}  // namespace carrovan
