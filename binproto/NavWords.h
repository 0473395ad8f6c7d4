// The navigation data of GPS, QZSS and GLONASS satellites as bit layouts, and the one interpreter that reads them.
#ifndef VELAGNSS_BINPROTO_NAV_WORDS_H
#define VELAGNSS_BINPROTO_NAV_WORDS_H

#include <cstddef>
#include <type_traits>

// What the bits of a field are. How a signed number is sent, in two's complement (GPS) or as sign and magnitude
// (GLONASS), is the business of the reader of the bits.
enum class eBits { eUnsigned, eSigned, ePast };  // ePast: not read

// One field of a navigation message.
template <class Record>
struct S_NavField {
  unsigned short first;  // bit it starts at, counted as the layout's document counts
  unsigned char bits;
  eBits kind;
  double lsb = 1;  // what one unit is worth; times the number sent it is the value stored
  void (*store)(Record&, double value) = nullptr;
};

// True when a layout covers the bits [first, end) without gap or overlap, and reads no field of more than 32 bits.
template <class Record, std::size_t N>
consteval bool Tiles(const S_NavField<Record> (&layout)[N], unsigned int first, unsigned int end) {
  for (const S_NavField<Record>& field : layout) {
    if (field.first != first || field.bits == 0) return false;
    if (field.kind != eBits::ePast && field.bits > 32) return false;
    first += field.bits;
  }
  return first == end;
}

// Stores every field of a layout. `read` gives the number in the bits of a field.
template <class Record, std::size_t N, class Reader>
void ApplyLayout(const S_NavField<Record> (&layout)[N], const Reader& read, Record& record) {
  for (const S_NavField<Record>& field : layout)
    if (field.kind != eBits::ePast) field.store(record, static_cast<double>(read(field)) * field.lsb);
}

// How a value gets into a record: into one member or several, or added to what stands there.
template <auto... Members, class Record>
void Store(Record& record, double value) {
  ((record.*Members = static_cast<std::remove_reference_t<decltype(record.*Members)>>(value)), ...);
}

template <auto Member, class Record>
void Add(Record& record, double value) {
  record.*Member += static_cast<std::remove_reference_t<decltype(record.*Member)>>(value);
}

#endif  // VELAGNSS_BINPROTO_NAV_WORDS_H
