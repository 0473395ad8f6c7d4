// Field lists of RTCM 3 messages, and the one interpreter that reads them.
//
// Internal. A list is a constexpr table with a row for each data field, in the order in which RTCM 10403 prints them,
// reserved bits included. It says how many bits the field has, how they make a number, what one unit is worth, and
// where the value goes.
//
//   constexpr Field<R> kFields[] = {
//       {  3, 12, kUnsigned, {},        Store<&R::station>},
//       { 25, 38, kSigned,   Per(10000), Store<&R::x>},  // m
//   };
//   if (!ReadFields<kFields>(reader, record)) return eResultPastEnd;
#ifndef VELAGNSS_RTCM3_FIELDS_H
#define VELAGNSS_RTCM3_FIELDS_H

#include <cstdint>
#include <type_traits>

#include "rtcm3/BitReader.h"

namespace velagnss::rtcm3 {

// How the bits of a field make a number. Fields of GLONASS ephemerides have the sign in the highest bit and the
// magnitude below it, as the GLONASS ICD has them; minus zero is zero.
enum class Kind : unsigned char { Unsigned, TwosComplement, SignMagnitude, Reserved };
inline constexpr Kind kUnsigned = Kind::Unsigned;
inline constexpr Kind kSigned = Kind::TwosComplement;
inline constexpr Kind kSignMagnitude = Kind::SignMagnitude;
inline constexpr Kind kReserved = Kind::Reserved;

// Value of one unit. Multiplying by a power of two is exact. A decimal fraction is not representable as a double, but
// its inverse is: dividing by that rounds only once.
struct Scale {
  double number = 1;
  bool divides = false;

  constexpr double operator()(std::int64_t raw) const {
    return divides ? static_cast<double>(raw) / number : static_cast<double>(raw) * number;
  }
};
constexpr Scale Times(double unit) { return {unit, false}; }
constexpr Scale Per(double unitsInOne) { return {unitsInOne, true}; }

template <class Record>
struct Field {
  unsigned short number;  // of the data field (DF) in RTCM 10403; 0 for reserved bits
  unsigned char bits;
  Kind kind;
  Scale scale{};
  void (*store)(Record& record, std::int64_t raw, double value) = nullptr;
};

constexpr std::int64_t NumberOf(std::uint64_t bits, unsigned int count, Kind kind) {
  const std::uint64_t sign = std::uint64_t{1} << (count - 1);
  if (kind == Kind::Unsigned || (bits & sign) == 0) return static_cast<std::int64_t>(bits);
  const auto rest = static_cast<std::int64_t>(bits ^ sign);
  return kind == Kind::TwosComplement ? rest - static_cast<std::int64_t>(sign) : -rest;
}

// Reads one field. The caller has checked that its bits are there.
template <class Record>
void ReadField(const Field<Record>& field, BitReader& reader, Record& record) {
  if (field.kind == Kind::Reserved) return reader.Skip(field.bits);
  const std::int64_t raw = NumberOf(reader.Read(field.bits), field.bits, field.kind);
  field.store(record, raw, field.scale(raw));
}

template <const auto& Fields>
consteval unsigned int BitsOf() {
  unsigned int bits = 0;
  for (const auto& field : Fields) {
    if (field.bits == 0 || (field.kind != Kind::Reserved && field.bits > BitReader::kMaxBits)) throw "width";
    bits += field.bits;
  }
  return bits;
}

// Reads all fields of a list. False, and nothing read, if fewer bits are left than they have.
template <const auto& Fields, class Record>
[[nodiscard]] bool ReadFields(BitReader& reader, Record& record) {
  if (reader.BitsLeft() < BitsOf<Fields>()) return false;
  for (const auto& field : Fields) ReadField(field, reader, record);
  return true;
}

// --- Where a value goes ---------------------------------------------------------------------------------------------

// Members that are doubles take the scaled value, all others the number as sent.
template <class Member>
void Assign(Member& member, std::int64_t raw, double value) {
  if constexpr (std::is_floating_point_v<Member>) {
    member = value;
  } else {
    member = static_cast<Member>(raw);
  }
}

// Into one member or several, where a record repeats a value.
template <auto... Members, class Record>
void Store(Record& record, std::int64_t raw, double value) {
  (Assign(record.*Members, raw, value), ...);
}

// Leaves the marker that the member was preset to if the number means "not available".
template <auto Member, std::int64_t NotAvailable, class Record>
void StoreUnless(Record& record, std::int64_t raw, double value) {
  if (raw != NotAvailable) Assign(record.*Member, raw, value);
}

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_FIELDS_H
