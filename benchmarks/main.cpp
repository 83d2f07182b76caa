#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

/// Prints the usual table and then, for every "WORK/CASE", how many times the time of
/// "WORK_yardstick/CASE" (or of "WORK_yardstick", where that has no cases) it takes: the machine
/// drops out of a ratio.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      const bool isMedian = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (isMedian || run.repetitions <= 1) {
        // Of another program its processor time is handed over as the time.
        const bool isHandedOver = run.run_name.time_type == "manual_time";
        times_[run.run_name.function_name + "/" + run.run_name.args] =
            isHandedOver ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
      }
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nTimes the yardstick of the same run:\n");
    for (const auto& [name, time] : times_) {
      const std::string work = name.substr(0, name.find('/'));
      auto yardstick = times_.find(work + "_yardstick" + name.substr(work.size()));
      if (yardstick == times_.end()) yardstick = times_.find(work + "_yardstick/");
      if (yardstick != times_.end()) {
        std::printf("%-48s %8.3f\n", name.c_str(), time / yardstick->second);
      }
    }
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
}
