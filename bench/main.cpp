// Times every operation of the store for one size of store, or the codecs, and compares it with the
// same work written by hand. Accepts Google Benchmark's options after its own:
//   --size=N            tasks in the store; 0: the codecs (default 10000)
//   --data-dir=DIR      directory for the stores, on a disk
//   --quick             fewer and shorter repetitions

#include "ical_text.h"
#include "pairs.h"
#include "ulo/log_sink.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sys/vfs.h>
#include <unistd.h>

namespace {

constexpr long tmpfsMagic = 0x01021994;
constexpr long ramfsMagic = 0x858458f6;

bool isInMemory(const std::string& directory) {
  struct statfs status {};
  return statfs(directory.c_str(), &status) == 0 &&
         (status.f_type == tmpfsMagic || status.f_type == ramfsMagic);
}

// Removes one of our options from the front of the arguments and returns its value.
std::optional<std::string> take(int& count, char** arguments, std::string_view option) {
  if (count < 2 || !std::string_view(arguments[1]).starts_with(option))
    return std::nullopt;
  std::string value = arguments[1] + option.size();
  for (int i = 1; i + 1 < count; ++i)
    arguments[i] = arguments[i + 1];
  --count;
  return value;
}

}  // namespace

int main(int count, char** arguments) {
  int size = 10000;
  std::string place = ULO_BENCH_DATA_DIR;
  for (bool found = true; found;) {
    found = false;
    if (const auto value = take(count, arguments, "--size=")) {
      size = std::atoi(value->c_str());
      found = true;
    }
    if (const auto value = take(count, arguments, "--data-dir=")) {
      place = *value;
      found = true;
    }
    // For bench/report, which passes the text to other programs.
    if (const auto value = take(count, arguments, "--print-ical=")) {
      std::fputs(bench::icalText(std::atoi(value->c_str())).constData(), stdout);
      return EXIT_SUCCESS;
    }
    if (take(count, arguments, "--quick")) {
      bench::shortenEfforts();
      found = true;
    }
  }
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments))
    return EXIT_FAILURE;

  std::filesystem::create_directories(place);
  if (isInMemory(place)) {
    std::fprintf(stderr,
                 "%s is in memory, where a durable write costs nothing; choose a disk "
                 "with --data-dir\n",
                 place.c_str());
    return EXIT_FAILURE;
  }
  // Local time with daylight saving, as users have it; no log.
  setenv("TZ", "Europe/Berlin", 1);
  setenv("ULO_LOG", "none", 1);
  ulo::openLogSink("ulo_bench");

  const std::string own = place + "/" + std::to_string(getpid());
  std::unique_ptr<bench::Workbench> workbench;
  if (size > 0) {
    workbench = std::make_unique<bench::Workbench>(own, size);
    bench::registerStoreReading(*workbench);
    bench::registerStoreWriting(*workbench);
  } else {
    std::filesystem::create_directories(own);
    bench::registerCodec(own);
    bench::registerIcal();
  }
  benchmark::RunSpecifiedBenchmarks();
  workbench.reset();
  std::filesystem::remove_all(own);
  return EXIT_SUCCESS;
}
