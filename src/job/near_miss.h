// Names as people type them.
#pragma once

#include <string>
#include <vector>

namespace weld {

// What is left of a name when its spelling does not matter: "Butt-Gap" gives "buttgap".
std::string bareName(const std::string& text);

// Whether a name that is not known may stand for this one: but for case, '-', '_' and '.', it differs by two
// letters at most or is its beginning. Digits have to be the same, since names that differ in them are different
// ones.
bool isNearMiss(const std::string& typed, const std::string& name);

// "a, b, c".
std::string listOf(const std::vector<std::string>& names);

}  // namespace weld
