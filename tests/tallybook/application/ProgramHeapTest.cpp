// The program's memory in large pages: what the system was asked for, and where it must not be asked.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "tallybook/application/ProgramHeap.h"
#include "tests/support/InChild.h"

namespace tallybook {

namespace {

// Fails unless the system was asked for large pages for the heap as it must be, or must not.
void ExpectLargePages(bool expected) {
  std::ifstream maps("/proc/self/smaps");
  bool in_heap = false;
  bool large = false;
  for (Text line; std::getline(maps, line);) {
    if (line.find('-') < line.find(' ')) in_heap = line.ends_with("[heap]");
    if (in_heap && line.starts_with("VmFlags:")) large = large || line.find(" hg") != Text::npos;
  }
  if (large != expected) throw Failure(FailureNumber::kInternal, large ? "in large pages" : "in small pages");
}

void Limit(__rlimit_resource_t resource) {
  constexpr rlim_t kEnough = rlim_t{4} << 30;
  const rlimit limit = {.rlim_cur = kEnough, .rlim_max = kEnough};
  if (::setrlimit(resource, &limit) != 0) throw Failure(FailureNumber::kInternal, "no limit");
}

bool SystemHasLargePages() {
  return std::filesystem::exists("/sys/kernel/mm/transparent_hugepage");
}

}  // namespace

TEST(ProgramHeap, IsInLargePagesFromThenOnWhereTheSystemHasThem) {
  EXPECT_EQ(testing::InChild([] {
              ExpectLargePages(false);
              application::KeepHeapInLargePages();
              ExpectLargePages(SystemHasLargePages());
            }),
            "done");
}

TEST(ProgramHeap, StaysAsItIsWhereMemoryOrAddressesAreLimited) {
  for (const auto resource : {RLIMIT_AS, RLIMIT_DATA}) {
    EXPECT_EQ(testing::InChild([&] {
                Limit(resource);
                application::KeepHeapInLargePages();
                ExpectLargePages(false);
              }),
              "done");
  }
}

}  // namespace tallybook
