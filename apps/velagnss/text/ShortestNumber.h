// The shortest decimal text of a number.
#ifndef VELAGNSS_APPS_SHORTEST_NUMBER_H
#define VELAGNSS_APPS_SHORTEST_NUMBER_H

#include <cstddef>

namespace Host {

// Room that `WriteShortest` needs. Its texts have at most 24 characters: sign, 17 digits, point, exponent.
inline constexpr std::size_t kShortestSize = 32;

// Writes what std::to_chars writes: the shortest text that reads back as the same number, of several of the same
// length the one nearest to it. The number must be finite. Gives back the end of the text.
char* WriteShortest(char* out, double value);

}  // namespace Host

#endif  // VELAGNSS_APPS_SHORTEST_NUMBER_H
