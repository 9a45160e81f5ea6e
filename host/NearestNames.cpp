#include "host/NearestNames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "host/Text.h"

namespace host {

namespace {

constexpr std::size_t kMostSuggestions = 3;

// The number of letters to be changed, added, taken away or swapped with their neighbour to get from one text
// to the other; some number beyond lvFarthest where it is beyond that.
std::size_t Distance(std::string_view zvLeft, std::string_view zvRight, std::size_t lvFarthest) {
  const std::size_t lApart =
      std::max(zvLeft.size(), zvRight.size()) - std::min(zvLeft.size(), zvRight.size());
  if (lApart > lvFarthest) {
    // Not worth the walk, which takes long where a whole file stands for a name.
    return lApart;
  }
  std::vector<std::size_t> beforeLast(zvRight.size() + 1);
  std::vector<std::size_t> last(zvRight.size() + 1);
  std::vector<std::size_t> row(zvRight.size() + 1);
  std::iota(last.begin(), last.end(), std::size_t{0});
  for (std::size_t i = 1; i <= zvLeft.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= zvRight.size(); ++j) {
      const std::size_t lChange = zvLeft[i - 1] == zvRight[j - 1] ? 0 : 1;
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + lChange});
      if (i > 1 && j > 1 && zvLeft[i - 1] == zvRight[j - 2] && zvLeft[i - 2] == zvRight[j - 1]) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
    beforeLast.swap(last);
    last.swap(row);
  }
  return last[zvRight.size()];
}

}  // namespace

std::vector<std::string> NearestNames(std::string_view zvName, const std::vector<std::string>& zvCandidates) {
  const std::string zName = LowerCase(zvName);
  const std::size_t lFarthest = std::max<std::size_t>(2, zName.size() / 3);
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const std::string& zCandidate : zvCandidates) {
    const std::string zLower = LowerCase(zCandidate);
    const std::string zLastPart = zLower.substr(zLower.rfind('.') + 1);
    std::size_t lDistance =
        std::min(Distance(zName, zLower, lFarthest), Distance(zName, zLastPart, lFarthest));
    if (zName.size() > 2 && zLower.find(zName) != std::string::npos) {
      lDistance = std::min<std::size_t>(lDistance, 1);
    }
    if (lDistance <= lFarthest && lDistance < zName.size()) {
      near.emplace_back(lDistance, zCandidate);
    }
  }
  std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string>::first);
  std::vector<std::string> nearest;
  for (const auto& [lDistance, zCandidate] : near) {
    if (nearest.size() == kMostSuggestions) {
      break;
    }
    nearest.push_back(zCandidate);
  }
  return nearest;
}

std::string DidYouMean(std::string_view zvName, const std::vector<std::string>& zvCandidates) {
  const std::vector<std::string> nearest = NearestNames(zvName, zvCandidates);
  return nearest.empty() ? std::string() : " Did you mean " + Listed(nearest, " or ") + "?";
}

}  // namespace host
