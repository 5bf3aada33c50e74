#include "cli/threads.h"

#include <algorithm>
#include <string>
#include <thread>

namespace carrovan {
namespace {

constexpr unsigned kMostThreads = 64;

// More gain little: one thread writes what the others have packed or unpacked.
constexpr unsigned kMostByDefault = 16;

// 0 for a text that is no number of threads.
unsigned ThreadsOf(const std::string& text) {
  constexpr std::size_t kMostDigits = 2;
  const bool isNumber = text.size() <= kMostDigits && !text.empty() &&
                        text.find_first_not_of("0123456789") == std::string::npos;
  const unsigned long number = isNumber ? std::stoul(text) : 0;
  return number <= kMostThreads ? static_cast<unsigned>(number) : 0;
}

}  // namespace

unsigned DefaultThreads() {
  // 0 where the system does not know.
  return std::clamp(std::thread::hardware_concurrency(), 1U, kMostByDefault);
}

void AddThreads(CLI::App& verb, unsigned& threads) {
  const auto refusalOf = [](const std::string& text) {
    const std::string range = "1 to " + std::to_string(kMostThreads);
    return ThreadsOf(text) > 0 ? std::string() : text + " is not a number from " + range;
  };
  verb.add_option_function<std::string>(
          "--threads", [&threads](const std::string& text) { threads = ThreadsOf(text); },
          "Threads that pack or unpack at a time, 1 to " + std::to_string(kMostThreads) +
              "; as many as there are processor cores if left out")
      ->check(refusalOf)
      ->type_name("N");
}

}  // namespace carrovan
