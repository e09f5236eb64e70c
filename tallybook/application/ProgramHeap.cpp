#include "tallybook/application/ProgramHeap.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

#if defined(__GLIBC__)
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace tallybook::application {

#if defined(__GLIBC__) && defined(MADV_HUGEPAGE)

namespace {

constexpr int kReserve = 64 << 20;
constexpr int kStep = 1 << 20;  // by which the heap grows beyond it
constexpr int kMappedApart = 32 << 20;

bool IsUnlimited(__rlimit_resource_t resource) {
  rlimit limit{};
  return ::getrlimit(resource, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY;
}

char* HeapEnd() {
  return static_cast<char*>(::sbrk(0));
}

char* NextLargePage(char* from) {
  constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
  return from + (kLargePage - reinterpret_cast<std::uintptr_t>(from) % kLargePage) % kLargePage;
}

// Allocates more than a heap has at first; as many addresses besides as M_TOP_PAD tells are taken with it. Not by a new
// expression, which a compiler may leave out.
void GrowHeap() {
  constexpr std::size_t kMore = std::size_t{4} << 20;
  ::operator delete(::operator new(kMore, std::nothrow));
}

}  // namespace

// The allocator has a setting for this, but takes it from the environment alone.
void KeepHeapInLargePages() {
  if (!IsUnlimited(RLIMIT_AS) || !IsUnlimited(RLIMIT_DATA)) return;
  char* const before = HeapEnd();
  ::mallopt(M_MMAP_THRESHOLD, kMappedApart);
  ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  ::mallopt(M_TOP_PAD, kReserve);
  GrowHeap();
  ::mallopt(M_TOP_PAD, kStep);
  const char* const end = HeapEnd();
  char* const first = NextLargePage(before);
  if (end <= first) return;
  // Where this fails, all comes in small pages, as ever.
  static_cast<void>(::madvise(first, static_cast<std::size_t>(end - first), MADV_HUGEPAGE));
}

#else

void KeepHeapInLargePages() {}

#endif

}  // namespace tallybook::application
