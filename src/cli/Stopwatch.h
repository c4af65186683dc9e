#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace tintorra::cli {

// Milliseconds since construction or the last lap.
class Stopwatch {
public:
    double lap()
    {
        const auto now = std::chrono::steady_clock::now();
        const double ms = std::chrono::duration<double, std::milli>(now - start_).count();
        start_ = now;
        return ms;
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// The median of a non-empty list (the mean of the middle two for an even count).
inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2.0;
}

} // namespace tintorra::cli
