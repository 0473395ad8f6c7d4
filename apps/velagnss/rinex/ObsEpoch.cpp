#include "apps/velagnss/rinex/ObsEpoch.h"

namespace Host {
namespace {

// RINEX 3.05, tables 4 to 10 and 23.
struct S_Bands {
  char system;
  std::string_view bands;
  std::string_view attributes;
  std::string_view references;  // those to which the phases of the others are aligned
};
// clang-format off
constexpr S_Bands kBands[] = {
    {'G', "1",   "CSLXPWYMN",  "C"},
    {'G', "2",   "CDSLXPWYMN", "PWDN"},
    {'G', "5",   "IQX",        "I"},
    {'R', "12",  "CP",         "C"},
    {'R', "3",   "IQX",        "I"},
    {'R', "46",  "ABX",        "A"},
    {'E', "16",  "ABCXZ",      "B"},
    {'E', "578", "IQX",        "I"},
    {'C', "1",   "DPXSLZ",     "D"},
    {'C', "2",   "IQX",        "I"},
    {'C', "58",  "DPX",        "D"},
    {'C', "6",   "IQXDPZ",     "I"},
    {'C', "7",   "IQXDPZ",     "ID"},
    {'J', "1",   "CESLXZB",    "CE"},
    {'J', "2",   "SLX",        "S"},
    {'J', "5",   "IQXDPZ",     "ID"},
    {'J', "6",   "SLXEZ",      "S"},
    {'I', "59",  "ABCX",       "A"},
    {'S', "1",   "C",          "C"},
    {'S', "5",   "IQX",        "I"},
};
// clang-format on

bool IsIn(std::string_view S_Bands::*column, char system, t_SignalCode code) {
  const auto has = [](std::string_view letters, char letter) { return letters.find(letter) != letters.npos; };
  for (const S_Bands& row : kBands)
    if (row.system == system && has(row.bands, code[0])) return has(row.*column, code[1]);
  return false;
}

}  // namespace

bool IsSignal(char system, t_SignalCode code) { return IsIn(&S_Bands::attributes, system, code); }
bool IsReferenceSignal(char system, t_SignalCode code) { return IsIn(&S_Bands::references, system, code); }

}  // namespace Host
