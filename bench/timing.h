#pragma once
#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <vector>

namespace orvalo::bench {

inline double SecondsFor(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Of processor time, all threads: for work that waits for nothing, on a machine that is shared.
inline double CpuSecondsFor(const std::function<void()>& work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

inline double Median(std::vector<double>& seconds) {
  const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
  std::nth_element(seconds.begin(), middle, seconds.end());
  return *middle;
}

}  // namespace orvalo::bench
