#include "bench/fleet/server_load.h"

#include <numeric>

namespace vorlu::fleet {

ServerLoad::ServerLoad(std::int64_t start, std::int64_t seconds) : start_(start) {
  for (Seconds& counts : counts_) counts.resize(static_cast<std::size_t>(seconds));
}

void ServerLoad::count(std::int64_t when, Role role, std::uint32_t amount) {
  Seconds& counts = counts_[static_cast<std::size_t>(role)];
  const std::int64_t second = when - start_;
  if (second >= 0 && second < static_cast<std::int64_t>(counts.size()))
    counts[static_cast<std::size_t>(second)] += amount;
}

std::uint64_t ServerLoad::total(Role role) const {
  const Seconds& counts = counts_[static_cast<std::size_t>(role)];
  return std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
}

std::uint64_t ServerLoad::inHour(Role role, std::int64_t hour) const {
  const Seconds& counts = counts_[static_cast<std::size_t>(role)];
  const auto first = counts.begin() + hour * 3600;
  return std::accumulate(first, first + 3600, std::uint64_t{0});
}

Peak ServerLoad::peak(Role role, std::int64_t span) const {
  return peakOf(counts_[static_cast<std::size_t>(role)], span);
}

Peak ServerLoad::peak(std::int64_t span) const {
  Seconds all(counts_.front().size());
  for (const Seconds& counts : counts_)
    for (std::size_t second = 0; second < all.size(); ++second) all[second] += counts[second];
  return peakOf(all, span);
}

Peak ServerLoad::peakOf(const Seconds& seconds, std::int64_t span) const {
  const auto width = static_cast<std::size_t>(span);
  std::uint64_t inSpan = 0;
  std::uint64_t most = 0;
  std::size_t end = 0;
  for (std::size_t second = 0; second < seconds.size(); ++second) {
    inSpan += seconds[second];
    if (second >= width) inSpan -= seconds[second - width];
    if (inSpan <= most) continue;
    most = inSpan;
    end = second + 1;
  }
  const auto begin = static_cast<std::int64_t>(end) - span;
  return {static_cast<double>(most) / static_cast<double>(span), start_ + (begin > 0 ? begin : 0)};
}

}  // namespace vorlu::fleet
