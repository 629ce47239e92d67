// The byte kernels' choice of vector instructions: the processor's, once, and a limit.
#include "store/VectorWidth.h"

#include <atomic>

namespace {

std::atomic<VectorWidth> limit{VectorWidth::Widest};

bool processorHasAvx2() {
#if defined(__x86_64__)
  static const bool present = __builtin_cpu_supports("avx2");
  return present;
#else
  return false;
#endif
}

} // namespace

void limitVectorWidth(VectorWidth width) {
  limit.store(width, std::memory_order_relaxed);
}

bool useAvx2() {
  return limit.load(std::memory_order_relaxed) == VectorWidth::Widest && processorHasAvx2();
}

bool useSse2() {
#if defined(__x86_64__)
  return limit.load(std::memory_order_relaxed) != VectorWidth::None;
#else
  return false;
#endif
}
