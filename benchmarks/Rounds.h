#pragma once

#include <cstddef>
#include <vector>

namespace Tovra::Benchmarks
{

/** Whether to show only that the figures can be taken. */
bool IsSmoke();

/** Whether the figures are held to their bars: in what is shipped. */
bool IsHeld();

/** So many, or next to none. */
std::size_t Rounds(std::size_t nRounds);

/** Of a list that is not empty; in milliseconds, as they come. */
double GetMedian(std::vector<double> vecTimes);
double GetWorst(const std::vector<double>& vecTimes);

} // namespace Tovra::Benchmarks
