// The main of the unit-test binaries: every test in a process of its own.
// Interceptions and simulated profiles are process-wide, as on a device, so
// tests that ran in one process would see each other's hooks. ctest already
// runs each test alone (with --gtest_filter); run by hand without a filter,
// the binary starts itself once per test and sums up.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* kChildVariable = "KAVELIN_TEST_CHILD";

// True iff the arguments choose tests or ask gtest for something else: then
// gtest runs as usual, in this process.
bool gtestDecides(int argc, char** argv) {
  if (std::getenv(kChildVariable) != nullptr) return true;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--gtest_", 8) == 0) return true;
  }
  return false;
}

// Runs one test in a child process of this binary; true iff it passed.
bool runAlone(const char* self, const std::string& name) {
  pid_t pid = fork();
  if (pid == 0) {
    setenv(kChildVariable, "1", 1);
    std::string filter = "--gtest_filter=" + name;
    execl(self, self, filter.c_str(), "--gtest_brief=1", static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid) return false;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  bool direct = gtestDecides(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  if (direct) return RUN_ALL_TESTS();
  std::vector<std::string> names;
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  for (int s = 0; s < all.total_test_suite_count(); ++s) {
    const testing::TestSuite& suite = *all.GetTestSuite(s);
    for (int t = 0; t < suite.total_test_count(); ++t) {
      names.push_back(std::string(suite.name()) + "." + suite.GetTestInfo(t)->name());
    }
  }
  std::vector<std::string> failed;
  for (const auto& name : names) {
    if (!runAlone("/proc/self/exe", name)) failed.push_back(name);
  }
  std::printf("%zu tests, each in its own process: %zu passed, %zu failed\n", names.size(),
              names.size() - failed.size(), failed.size());
  for (const auto& name : failed) std::printf("  FAILED %s\n", name.c_str());
  return failed.empty() ? 0 : 1;
}
