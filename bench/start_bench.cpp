// From the start of the process to the painted main window, beside an empty window of the toolkit
// in the same run. Wants a display: xvfb-run -a build/release/bin/start_bench

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

namespace {

struct Sample {
  long microseconds = 0;
  long kibibytes = 0;
};

Sample RunOnce(const std::filesystem::path& program) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const long long start = now.tv_sec * 1'000'000'000LL + now.tv_nsec;
  const std::string command =
      "DBKEEPER_BENCH_START=" + std::to_string(start) + " exec '" + program.string() + "'";
  std::FILE* output = popen(command.c_str(), "r");
  Sample sample;
  if (output == nullptr ||
      std::fscanf(output, "%ld %ld", &sample.microseconds, &sample.kibibytes) != 2) {
    std::fprintf(stderr, "%s did not tell its time\n", program.c_str());
  }
  if (output != nullptr) pclose(output);
  return sample;
}

}  // namespace

int main() {
  constexpr int kRuns = 21;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  std::vector<Sample> empty;
  std::vector<Sample> program;
  for (int i = 0; i < kRuns; ++i) {  // by turns, so that both see the same machine
    empty.push_back(RunOnce(folder / "start_empty"));
    program.push_back(RunOnce(folder / "start_program"));
  }
  const auto tell = [](const char* name, std::vector<Sample>& samples) {
    std::sort(samples.begin(), samples.end(), [](const Sample& left, const Sample& right) {
      return left.microseconds < right.microseconds;
    });
    const Sample median = samples[samples.size() / 2];
    std::printf("%-14s %7.1f ms (fastest %.1f, slowest %.1f) %6.1f MiB\n", name,
                median.microseconds / 1e3, samples.front().microseconds / 1e3,
                samples.back().microseconds / 1e3, median.kibibytes / 1024.0);
    return median.microseconds;
  };
  const long without = tell("empty window", empty);
  const long with = tell("main window", program);
  std::printf("ratio          %7.2f\n", static_cast<double>(with) / without);
}
