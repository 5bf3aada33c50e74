#include <gtest/gtest.h>

#ifndef CARROVAN_WIDE_MAIN
#define CARROVAN_WIDE_MAIN 0
#endif

#if CARROVAN_WIDE_MAIN
int wmain(int argc, wchar_t** argv) {
#else
int main(int argc, char** argv) {
#endif
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
