// What an interception costs on the real runtime: a plain typed send, the
// same send plus one indirect call (the floor any interception can reach),
// and a send to an intercepted method whose replacement calls its saved
// implementation. Prints the medians and both ratios.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "platform/hook.h"

namespace {

using kv::platform::Hook;
using kv::platform::send;

int plainValue(id, SEL, int x) {
  return x + 1;
}
int interceptedValue(id, SEL, int x) {
  return x + 1;
}
int passThrough(id self, SEL cmd, int x) {
  return Hook<&passThrough>::original(self, cmd, x);
}

__attribute__((noinline)) void emptyFunction() {
  benchmark::ClobberMemory();
}
void (*volatile indirect)() = &emptyFunction;

id instance = nullptr;
SEL plainSel = nullptr;
SEL interceptedSel = nullptr;

void setUp() {
  if (instance != nullptr) return;
  Class cls = objc_allocateClassPair(kv::platform::classNamed("NSObject"), "BenchTarget", 0);
  plainSel = kv::platform::selector("plainValue:");
  interceptedSel = kv::platform::selector("interceptedValue:");
  class_addMethod(cls, plainSel, reinterpret_cast<IMP>(plainValue), "i@:i");
  class_addMethod(cls, interceptedSel, reinterpret_cast<IMP>(interceptedValue), "i@:i");
  objc_registerClassPair(cls);
  static const kv::platform::Row row =
      kv::platform::replaced<&passThrough>("BenchTarget", "-interceptedValue:");
  kv::platform::installRow(row);
  instance = send<id>(send<id>(kv::platform::asId(cls), kv::platform::selector("alloc")),
                      kv::platform::selector("init"));
}

void BM_PlainSend(benchmark::State& state) {
  setUp();
  int x = 0;
  for (auto _ : state) {
    x = send<int>(instance, plainSel, x);
    benchmark::DoNotOptimize(x);
  }
}

void BM_PlainSendPlusCall(benchmark::State& state) {
  setUp();
  int x = 0;
  for (auto _ : state) {
    x = send<int>(instance, plainSel, x);
    indirect();
    benchmark::DoNotOptimize(x);
  }
}

void BM_InterceptedPassThrough(benchmark::State& state) {
  setUp();
  int x = 0;
  for (auto _ : state) {
    x = send<int>(instance, interceptedSel, x);
    benchmark::DoNotOptimize(x);
  }
}

BENCHMARK(BM_PlainSend)->Repetitions(9)->ReportAggregatesOnly(true);
BENCHMARK(BM_PlainSendPlusCall)->Repetitions(9)->ReportAggregatesOnly(true);
BENCHMARK(BM_InterceptedPassThrough)->Repetitions(9)->ReportAggregatesOnly(true);

// Collects the medians so that the run ends with the two ratios.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
        std::string name = run.run_name.function_name;
        double ns = run.GetAdjustedRealTime();
        if (name == "BM_PlainSend") plain_ = ns;
        if (name == "BM_PlainSendPlusCall") plus_ = ns;
        if (name == "BM_InterceptedPassThrough") hooked_ = ns;
      }
    }
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    if (plain_ > 0 && plus_ > 0 && hooked_ > 0) {
      std::printf("\nmedians: plain %.2f ns, plain+call %.2f ns, intercepted %.2f ns\n", plain_,
                  plus_, hooked_);
      std::printf("intercepted / plain+call = %.3f (goal <= 1.10)\n", hooked_ / plus_);
      std::printf("intercepted / plain      = %.3f\n", hooked_ / plain_);
    }
  }

 private:
  double plain_ = 0, plus_ = 0, hooked_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
