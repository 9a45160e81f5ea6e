#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The candidates that a misspelt name may have meant, nearest first, at most three. A candidate with points
// in it is also compared by its last part alone, so that "City" finds "DeliveryInformation.City".
std::vector<std::string> NearestNames(std::string_view zvName, const std::vector<std::string>& zvCandidates);

// " Did you mean A or B?", or nothing.
std::string DidYouMean(std::string_view zvName, const std::vector<std::string>& zvCandidates);

}  // namespace host
