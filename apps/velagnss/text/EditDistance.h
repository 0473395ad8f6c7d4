// How far a word is from another one: for "did you mean".
#ifndef VELAGNSS_APPS_EDIT_DISTANCE_H
#define VELAGNSS_APPS_EDIT_DISTANCE_H

#include <cstddef>
#include <string_view>

namespace Host {

// The least number of characters to insert, remove or replace that makes one word of the other.
std::size_t EditDistance(std::string_view a, std::string_view b);

}  // namespace Host

#endif  // VELAGNSS_APPS_EDIT_DISTANCE_H
