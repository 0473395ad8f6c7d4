#include "apps/velagnss/rinex/ObsEpoch.h"

namespace Host {
namespace {

// RINEX 3.05, tables 4 to 10 and 23.
struct S_Band {
  char system;
  char band;
  std::string_view attributes;
  std::string_view references;  // those to which the phases of the others are aligned
};
constexpr S_Band kBands[] = {
    {'G', '1', "CSLXPWYMN", "C"}, {'G', '2', "CDSLXPWYMN", "PWDN"},
    {'G', '5', "IQX", "I"},       {'R', '1', "CP", "C"},
    {'R', '2', "CP", "C"},        {'R', '3', "IQX", "I"},
    {'R', '4', "ABX", "A"},       {'R', '6', "ABX", "A"},
    {'E', '1', "ABCXZ", "B"},     {'E', '5', "IQX", "I"},
    {'E', '7', "IQX", "I"},       {'E', '8', "IQX", "I"},
    {'E', '6', "ABCXZ", "B"},     {'C', '1', "DPXSLZ", "D"},
    {'C', '2', "IQX", "I"},       {'C', '5', "DPX", "D"},
    {'C', '6', "IQXDPZ", "I"},    {'C', '7', "IQXDPZ", "ID"},
    {'C', '8', "DPX", "D"},       {'J', '1', "CESLXZB", "CE"},
    {'J', '2', "SLX", "S"},       {'J', '5', "IQXDPZ", "ID"},
    {'J', '6', "SLXEZ", "S"},     {'I', '5', "ABCX", "A"},
    {'I', '9', "ABCX", "A"},      {'S', '1', "C", "C"},
    {'S', '5', "IQX", "I"},
};

bool IsIn(std::string_view S_Band::*column, char system, t_SignalCode code) {
  for (const S_Band& row : kBands)
    if (row.system == system && row.band == code[0]) return (row.*column).find(code[1]) != std::string_view::npos;
  return false;
}

}  // namespace

bool IsSignal(char system, t_SignalCode code) { return IsIn(&S_Band::attributes, system, code); }
bool IsReferenceSignal(char system, t_SignalCode code) { return IsIn(&S_Band::references, system, code); }

}  // namespace Host
