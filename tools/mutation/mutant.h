// The switch in front of every mutation point. It is included by the copies that tools/mutate makes
// of the sources and by nothing else. CARROVAN_MUTANT is the number of the one mutant that is
// alive; without it the copies do what the sources do. CARROVAN_MUTANT_HITS names a file that
// receives the numbers of all points that were reached.
#ifndef CARROVAN_TOOLS_MUTATION_MUTANT_H_
#define CARROVAN_TOOLS_MUTATION_MUTANT_H_

#include <concepts>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace mutant {

inline int alive = -1;
inline bool chosen = false;
inline unsigned char hits[1 << 20];

inline bool Alive(int point) {
  hits[point] = 1;
  return point == alive;
}

// A condition turned.
template <typename T>
bool Turned(int point, T&& condition) {
  return static_cast<bool>(condition) != Alive(point);
}

// What depends on a condition left out.
template <typename T>
bool Never(int point, T&& condition) {
  return static_cast<bool>(condition) && !Alive(point);
}

template <typename A, typename B>
bool Less(int point, A&& a, B&& b) {
  return Alive(point) ? a <= b : a < b;
}
template <typename A, typename B>
bool LessOrEqual(int point, A&& a, B&& b) {
  return Alive(point) ? a < b : a <= b;
}
template <typename A, typename B>
bool Greater(int point, A&& a, B&& b) {
  return Alive(point) ? a >= b : a > b;
}
template <typename A, typename B>
bool GreaterOrEqual(int point, A&& a, B&& b) {
  return Alive(point) ? a > b : a >= b;
}

template <std::integral T>
T Constant(int point, T value) {
  return Alive(point) ? static_cast<T>(value + 1) : value;
}
template <typename Char>
std::basic_string_view<Char> Constant(int point, std::basic_string_view<Char> value) {
  return Alive(point) ? value.substr(0, value.size() - 1) : value;
}

template <typename Char, std::size_t n>
const Char* Text(int point, const Char (&text)[n]) {
  return Alive(point) ? text + 1 : text;
}

inline void WriteHits() {
  std::FILE* const file = std::fopen(std::getenv("CARROVAN_MUTANT_HITS"), "w");
  if (file == nullptr) return;
  for (std::size_t point = 0; point < sizeof hits; ++point) {
    if (hits[point] != 0) std::fprintf(file, "%zu\n", point);
  }
  std::fclose(file);
}

// Before the initialisers of all files, which may reach a point.
[[gnu::constructor(101)]] static void Choose() {
  if (chosen) return;
  chosen = true;
  if (const char* const point = std::getenv("CARROVAN_MUTANT")) alive = std::atoi(point);
  if (std::getenv("CARROVAN_MUTANT_HITS") != nullptr) std::atexit(WriteHits);
}

}  // namespace mutant

#endif  // CARROVAN_TOOLS_MUTATION_MUTANT_H_
