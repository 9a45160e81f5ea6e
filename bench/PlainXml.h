#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>

#include "bench/Line.h"

namespace bench {

// What the documents of a program without the library are made of.

void Set(pugi::xml_node& element, const char* zvName, const std::string& zvValue);
void Set(pugi::xml_node& element, const char* zvName, std::int64_t lvValue);

// Two decimals, half away from zero, with commas between the thousands.
std::string Amount(std::int64_t lvScaled);

// The line's element, with the library's attributes.
void AppendItem(pugi::xml_node& parent, const Line& line);

std::string TextOf(const pugi::xml_document& document);

}  // namespace bench
