#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include "support/zip/zip_reader.h"
#include "support/zip/zip_writer.h"

// Throughput of the zip library by kind and size of content. The state's first argument is the size
// of a file in kilobytes.

namespace carrovan {
namespace {

namespace fs = std::filesystem;

// Many short runs that repeat, as XML and registry text have.
std::string SettingsText(std::size_t sizeBytes) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < sizeBytes) {
    text += "<Command id=\"" + std::to_string(random() % 5000) + "\" key=\"Ctrl+" +
            std::to_string(random() % 100) + "\" visible=\"true\"/>\r\n";
  }
  text.resize(sizeBytes);
  return text;
}

// Bytes of which some are more likely than others, as part files have.
std::string PartData(std::size_t sizeBytes) {
  std::mt19937 random(1);
  std::string data(sizeBytes, '\0');
  for (char& byte : data) byte = static_cast<char>(random() % 3 == 0 ? random() & 0xFF : 0);
  return data;
}

using Generator = std::string (*)(std::size_t sizeBytes);

// A folder of one file and one archive that holds it.
class Fixture {
 public:
  Fixture(Generator generate, std::int64_t kilobytes)
      : sizeBytes_(static_cast<std::size_t>(kilobytes) * 1024) {
    std::random_device random;
    folder_ = fs::temp_directory_path() / ("carrovan-bench-" + std::to_string(random()));
    fs::create_directory(folder_);
    std::ofstream(Source(), std::ios::binary) << generate(sizeBytes_);
    const auto writer = ZipWriter::Create(Archive());
    if (!writer || writer->Add(L"file", Source()) != ArchiveResult::kDone ||
        writer->Close() != ArchiveResult::kDone) {
      throw std::runtime_error("the archive cannot be written");
    }
  }
  ~Fixture() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  Fixture(const Fixture&) = delete;
  Fixture& operator=(const Fixture&) = delete;

  fs::path Source() const { return folder_ / "source"; }
  fs::path Archive() const { return folder_ / "archive.zip"; }
  fs::path Target() const { return folder_ / "target"; }

  void CountBytes(benchmark::State& state) const {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sizeBytes_));
  }

 private:
  std::size_t sizeBytes_;
  fs::path folder_;
};

// Reads and packs a file; the archive is not written.
void Add(benchmark::State& state, Generator generate) {
  const Fixture fixture(generate, state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    const auto writer = ZipWriter::Create(fixture.Archive());
    state.ResumeTiming();
    benchmark::DoNotOptimize(writer->Add(L"file", fixture.Source()));
  }
  fixture.CountBytes(state);
}

// Unpacks an item and compares its checksum, without a file.
void Check(benchmark::State& state, Generator generate) {
  const Fixture fixture(generate, state.range(0));
  const auto reader = ZipReader::Open(fixture.Archive());
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(reader->Check(0));
  fixture.CountBytes(state);
}

void Extract(benchmark::State& state, Generator generate) {
  const Fixture fixture(generate, state.range(0));
  const auto reader = ZipReader::Open(fixture.Archive());
  for ([[maybe_unused]] auto _ : state)
    benchmark::DoNotOptimize(reader->Extract(0, fixture.Target()));
  fixture.CountBytes(state);
}

// A small file, one that is packed in one call, and one that is packed as a stream.
void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(16)->Arg(4096)->Arg(32768)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Add, text, SettingsText)->Apply(Sizes);
BENCHMARK_CAPTURE(Add, parts, PartData)->Apply(Sizes);
BENCHMARK_CAPTURE(Check, text, SettingsText)->Apply(Sizes);
BENCHMARK_CAPTURE(Check, parts, PartData)->Apply(Sizes);
BENCHMARK_CAPTURE(Extract, text, SettingsText)->Apply(Sizes);
BENCHMARK_CAPTURE(Extract, parts, PartData)->Apply(Sizes);

}  // namespace
}  // namespace carrovan

BENCHMARK_MAIN();
