#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/value/Currency.h"

namespace host {

// Without blanks and tabs at both ends.
std::string_view Trimmed(std::string_view zvText);

// ASCII letters only: for the names of properties, keys and columns. Item numbers are compared by OrderItems.
std::string LowerCase(std::string_view zvText);
bool SameName(std::string_view zvLeft, std::string_view zvRight);

bool IsUtf8(std::string_view zvText);

// A decimal integer of 32 bits and nothing else.
std::optional<std::int32_t> ParseInteger(std::string_view zvText);
// true, false, 1 or 0, in any letter case.
std::optional<bool> ParseBoolean(std::string_view zvText);

// The text for a person to read on one line: control characters as \n, \t, \x1b, broken bytes as U+FFFD. Data
// must not move the cursor of a terminal.
std::string Shown(std::string_view zvText);

// The columns that a text takes on a terminal.
std::size_t DisplayWidth(std::string_view zvText);

// The text in lines of at most lvWidth columns, broken at blanks where there are any.
std::vector<std::string> Wrapped(std::string_view zvText, std::size_t lvWidth);

// The text lvTimes times.
std::string Repeated(std::string_view zvText, std::size_t lvTimes);

// "a, b and c".
std::string Listed(const std::vector<std::string>& zvTexts, const char* zvLastSeparator = " and ");

// "1 line", "2 lines".
std::string Counted(std::size_t lvCount, const std::string& zvNoun);

// The decimals that show the amount in full: two, or four where two are not enough.
int DecimalsOf(qm_ordering::Currency cvAmount);
std::string MoneyText(qm_ordering::Currency cvAmount, int lvDecimals);
std::string MoneyText(qm_ordering::Currency cvAmount);

}  // namespace host
