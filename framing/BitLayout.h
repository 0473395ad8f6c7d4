// Bit layouts of broadcast messages, and the one interpreter that reads them.
//
// Internal. A layout is a constexpr table with a row per field, in the order in which the interface document prints the
// fields, reserved ones included. `Tiles` lets the compiler prove that the rows leave no gap and do not overlap, which
// catches nearly every typing error in a position or a width. Where the bits come from is left to a reader, because
// every message numbers and stores them in its own way: GPS words carry parity between them, GLONASS strings count from
// the last bit sent.
//
//   constexpr S_BitField<Record> kLayout[] = {
//       {0,  8, eUnsigned,       1,       Store<&Record::issue>},
//       {8, 16, eTwosComplement, 0x1p-29, Store<&Record::cuc>},  // rad
//   };
//   static_assert(Tiles(kLayout, 0, 24));
//   ApplyLayout(kLayout, reader, record);
#ifndef VELAGNSS_FRAMING_BIT_LAYOUT_H
#define VELAGNSS_FRAMING_BIT_LAYOUT_H

#include <cstddef>
#include <type_traits>

namespace velagnss {

// How the bits of a field make a number. GPS and its relatives send two's complement, GLONASS sends the sign in the
// highest bit and the magnitude below it, so that it has a "minus 0".
enum class eBits : unsigned char {
  eUnsigned,
  eTwosComplement,
  eSignMagnitude,
  ePast,  // not read: reserved bits, parity, what a record has no member for
};

// A double holds every integer of up to 53 bits, so that wider fields could not be stored exactly.
inline constexpr unsigned int kMaxFieldBits = 53;

// One field of a message.
template <class Record>
struct S_BitField {
  unsigned short first;  // bit it starts at, counted as the layout's document counts
  unsigned char count;   // of bits
  eBits kind;
  double lsb = 1;  // value of one unit; exact, as it is a power of two or a power of two times one rounded constant
  void (*store)(Record&, double value) = nullptr;  // takes the number times `lsb`
};

// True when a layout covers the bits [first, end) without gap or overlap, and no field that is read is wider than what
// its reader delivers.
template <class Record, std::size_t N>
consteval bool Tiles(const S_BitField<Record> (&layout)[N], unsigned int first, unsigned int end,
                     unsigned int widest = kMaxFieldBits) {
  for (const S_BitField<Record>& field : layout) {
    if (field.first != first || field.count == 0) return false;
    if (field.kind != eBits::ePast && field.count > widest) return false;
    first += field.count;
  }
  return first == end;
}

// The number that the low `count` bits of `bits` stand for; 1 to 53 bits, those above are 0. "Minus 0" is 0.
constexpr long long NumberOf(unsigned long long bits, unsigned int count, eBits kind) {
  const unsigned long long sign = (1ULL << count) >> 1;
  const bool isNegative = kind != eBits::eUnsigned && (bits & sign) != 0;
  if (!isNegative) return static_cast<long long>(bits);
  const auto rest = static_cast<long long>(bits ^ sign);
  return kind == eBits::eTwosComplement ? rest - static_cast<long long>(sign) : -rest;
}

// Stores every field of a layout. `read(first, count)` gives the bits of a field as an unsigned number.
template <class Record, std::size_t N, class Reader>
void ApplyLayout(const S_BitField<Record> (&layout)[N], const Reader& read, Record& record) {
  for (const S_BitField<Record>& field : layout) {
    if (field.kind == eBits::ePast) continue;
    const long long number = NumberOf(read(field.first, field.count), field.count, field.kind);
    field.store(record, static_cast<double>(number) * field.lsb);
  }
}

// How a value gets into a record. `Store` writes it to one member or to several, where a record repeats a value.
template <auto... Members, class Record>
void Store(Record& record, double value) {
  ((record.*Members = static_cast<std::remove_reference_t<decltype(record.*Members)>>(value)), ...);
}

// Adds to the member: for a value that is sent in two pieces. The member must be 0 before the first one.
template <auto Member, class Record>
void Add(Record& record, double value) {
  record.*Member += static_cast<std::remove_reference_t<decltype(record.*Member)>>(value);
}

}  // namespace velagnss

#endif  // VELAGNSS_FRAMING_BIT_LAYOUT_H
