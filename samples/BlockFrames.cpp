#include <algorithm>
#include <bit>

#include "samples/Ephemerides.h"
#include "samples/Frames.h"

namespace {

// Blocks of the binary protocol with the length of their frames, data + 10; block 103 is the only one that varies.
struct S_Block {
  unsigned int id;
  std::size_t length;
};

// clang-format off
constexpr S_Block kBlocks[] = {
    {  1,  62}, {  2,  26}, {  3, 126}, {  5,  82}, {  6,  22}, { 16, 322}, { 19, 386}, { 25, 138},
    { 34,  42}, { 35, 138}, { 36, 346}, { 39, 422}, { 44,  66}, { 45, 138}, { 49, 310}, { 59, 266},
    { 61, 330}, { 62,  50}, { 65,  78}, { 66, 362}, { 69, 310}, { 71, 458}, { 76, 458}, { 80,  50},
    { 89,  90}, { 93,  66}, { 94, 106}, { 95, 138}, { 96, 310}, { 97,  38}, { 98,  78}, { 99, 314},
    {100, 270}, {101, 458}, {102, 354}, {103, 103}, {104, 290}, {122,  90}, {180, 242}, {209, 342},
};
// clang-format on
constexpr unsigned int kVariableBlock = 103;
constexpr std::size_t kVariableLeast = 74;

constexpr unsigned int kObservationBlocks[] = {16, 36, 66, 76};
constexpr unsigned int kStatusBlocks[] = {2,  3,  5,  34, 44, 94, 122, 180, 209, 97, 103, 6,   103, 19,  103, 39,
                                          49, 59, 61, 62, 69, 71, 80,  89,  96,  98, 99,  100, 101, 102, 104};

std::size_t DataLength(unsigned int id) {
  const auto* const row =
      std::find_if(std::begin(kBlocks), std::end(kBlocks), [id](const S_Block& block) { return block.id == id; });
  Require(row != std::end(kBlocks), "no block " + std::to_string(id));
  return row->length - 10;
}

std::string Little16(std::int64_t value) { return LittleEndian(static_cast<std::uint64_t>(value), 2); }
std::string Little32(std::int64_t value) { return LittleEndian(static_cast<std::uint64_t>(value), 4); }

// A block whose layout is not at issue: the time of week as a double, the week, then made-up values.
S_Frame TimedBlock(unsigned int id, std::size_t dataLength, S_Context& context) {
  const auto second = std::bit_cast<std::uint64_t>(static_cast<double>(context.now.gpsSecond));
  std::string data = LittleEndian(second, 8) + Little16(context.now.gpsWeek);
  if (data.size() < dataLength) data += context.random.Bytes(dataLength - data.size());
  return BlockFrame(id, std::string_view(data).substr(0, dataLength));
}

// --- GPS and QZSS: three subframes of ten words ---

using K = S_KeplerNumbers;
constexpr std::int64_t kPreamble = 0x8B;
constexpr std::int64_t kTelemetry = 0x1A3;

// clang-format off
// Data bits of the words 3 to 10 of a subframe, 24 in each: the two bits that settle the parity of word 10 included.
const std::vector<S_BitField<K>> kSubframes[] = {
    {{10, &K::week}, {2, &K::codeOnL2}, {4, &K::ura}, {6, &K::health}, {2, &K::iodc, 8},  // word 3
     {1, &K::l2Flag}, {23, nullptr},                                                       // word 4
     {24, nullptr},
     {24, nullptr},
     {16, nullptr}, {8, &K::tgd},                                                          // word 7
     {8, &K::iodc}, {16, &K::toc},
     {8, &K::af2}, {16, &K::af1},
     {22, &K::af0}, {2, nullptr}},                                                         // word 10
    {{8, &K::iode}, {16, &K::crs},                                                         // word 3
     {16, &K::deltaN}, {32, &K::m0},                                                       // words 4 and 5
     {16, &K::cuc}, {32, &K::eccentricity},
     {16, &K::cus}, {32, &K::sqrtA},
     {16, &K::toe}, {1, &K::fitFlag}, {5, &K::aodo}, {2, nullptr}},                        // word 10
    {{16, &K::cic}, {32, &K::omega0},                                                      // words 3 and 4
     {16, &K::cis}, {32, &K::i0},
     {16, &K::crc}, {32, &K::omega},
     {24, &K::omegaDot},                                                                   // word 9
     {8, &K::iode}, {14, &K::iDot}, {2, nullptr}},                                         // word 10
};
// clang-format on

// IS-GPS-200, table 20-XIV: the data bits that each parity bit D25 to D30 sums, d1 in the top bit of the 24; and
// whether D29 (0) or D30 (1) of the word before is added.
struct S_Parity {
  std::uint32_t mask;
  int before;
};

constexpr S_Parity kParity[] = {
    {0xEC7CD2, 0}, {0x763E69, 1}, {0xBB1F34, 0}, {0x5D8F9A, 1}, {0xAEC7CD, 1}, {0x2DEA27, 0},
};

// The 30-bit word of 24 data bits that follows the word `before`. Its data bits are not inverted, as receivers output
// them.
std::uint32_t NavigationWord(std::uint32_t data, std::uint32_t before) {
  std::uint32_t word = data;
  for (const S_Parity& parity : kParity) {
    const std::uint32_t carried = parity.before == 0 ? before >> 1 & 1U : before & 1U;
    word = word << 1 | (static_cast<std::uint32_t>(std::popcount(data & parity.mask)) + carried) % 2;
  }
  return word;
}

// The same with the data bits 23 and 24 chosen such that the word ends in two zeros, as words 2 and 10 must.
std::uint32_t SettledWord(std::uint32_t data, std::uint32_t before) {
  for (std::uint32_t choice = 0; choice < 4; ++choice) {
    const std::uint32_t word = NavigationWord((data & ~3U) | choice, before);
    if ((word & 3U) == 0) return word;
  }
  Require(false, "no parity ends in zeros");
  return 0;
}

// Subframe 1, 2 or 3 as ten values of 32 bits, low byte first.
std::string Subframe(int number, const S_KeplerNumbers& numbers) {
  C_BitString data;
  data.Put(kPreamble, 8);
  data.Put(kTelemetry, 14 + 2);
  data.Put(numbers.sixSecondCount + number - 1, 17);
  data.Put(0, 2);  // no alert, no anti-spoofing
  data.Put(number, 3);
  data.Put(0, 2);
  PutFields(data, kSubframes[number - 1], numbers);
  Require(data.Size() == 10 * 24, "subframe of other than ten words");

  std::string words;
  std::uint32_t word = 0;
  for (std::size_t index = 0; index < 10; ++index) {
    const std::uint32_t bits = data.Value(24 * index, 24);
    word = index == 1 || index == 9 ? SettledWord(bits, word) : NavigationWord(bits, word);
    words += LittleEndian(word, 4);
  }
  return words;
}

S_Frame KeplerBlock(unsigned int id, eSystem system, S_Context& context) {
  const S_KeplerNumbers numbers = KeplerNumbersOf(SatelliteOfRound(system, context.round), context.now);
  std::string data = Little16(numbers.satellite) + context.random.Bytes(6);
  for (int number = 1; number <= 3; ++number) data += Subframe(number, numbers);
  S_Frame frame = BlockFrame(id, data);
  frame.facts = FactsOf(numbers);
  return frame;
}

// --- GLONASS: five strings of 85 bits ---

void PutCoordinate(C_BitString& bits, const S_GlonassNumbers& numbers, int axis) {
  bits.PutSignMagnitude(numbers.velocity[axis], 24);     // bits 64 to 41
  bits.PutSignMagnitude(numbers.acceleration[axis], 5);  // 40 to 36
  bits.PutSignMagnitude(numbers.position[axis], 27);     // 35 to 9
}

void PutString1(C_BitString& bits, const S_GlonassNumbers& numbers) {
  bits.Put(0, 2);  // bits 80, 79
  bits.Put(numbers.p1, 2);
  bits.Put(numbers.tk, 12);
  PutCoordinate(bits, numbers, 0);
}

void PutString2(C_BitString& bits, const S_GlonassNumbers& numbers) {
  bits.Put(numbers.bn, 3);  // bits 80 to 78
  bits.Put(numbers.p2, 1);
  bits.Put(numbers.tb, 7);
  bits.Put(0, 5);
  PutCoordinate(bits, numbers, 1);
}

void PutString3(C_BitString& bits, const S_GlonassNumbers& numbers) {
  bits.Put(numbers.p3, 1);  // bit 80
  bits.PutSignMagnitude(numbers.gammaN, 11);
  bits.Put(0, 1);
  bits.Put(numbers.p, 2);
  bits.Put(numbers.ln, 1);
  PutCoordinate(bits, numbers, 2);
}

void PutString4(C_BitString& bits, const S_GlonassNumbers& numbers) {
  bits.PutSignMagnitude(numbers.tauN, 22);  // bits 80 to 59
  bits.PutSignMagnitude(numbers.deltaTauN, 5);
  bits.Put(numbers.en, 5);
  bits.Put(0, 14);
  bits.Put(numbers.p4, 1);  // bit 34
  bits.Put(numbers.ft, 4);
  bits.Put(0, 3);
  bits.Put(numbers.nt, 11);  // bits 26 to 16
  bits.Put(numbers.slot, 5);
  bits.Put(numbers.m, 2);
}

void PutString5(C_BitString& bits, const S_GlonassNumbers& numbers) {
  bits.Put(numbers.na, 11);  // bits 80 to 70
  bits.PutSignMagnitude(numbers.tauC, 32);
  bits.Put(0, 1);
  bits.Put(numbers.n4, 5);  // bits 36 to 32
  bits.PutSignMagnitude(numbers.tauGps, 22);
  bits.Put(numbers.ln, 1);
}

using t_PutString = void (*)(C_BitString&, const S_GlonassNumbers&);
constexpr t_PutString kStrings[] = {&PutString1, &PutString2, &PutString3, &PutString4, &PutString5};

// The check bits 8 to 1 of a string whose bits 85 to 9 are there: a Hamming code over bits 9 to 85, which stand at the
// code's positions that are no powers of two (3, 5, 6, 7, 9 ...), and the parity of everything.
unsigned int HammingBits(const C_BitString& bits) {
  unsigned int syndrome = 0;
  unsigned int ones = 0;
  unsigned int position = 2;
  for (std::size_t index = bits.Size(); index-- > 0;) {  // bit 9 first
    ++position;
    if (std::has_single_bit(position)) ++position;
    if (!bits.Bit(index)) continue;
    syndrome ^= position;
    ++ones;
  }
  return (ones + static_cast<unsigned int>(std::popcount(syndrome))) % 2 << 7 | syndrome;
}

std::string GlonassString(int number, const S_GlonassNumbers& numbers) {
  C_BitString bits;
  bits.Put(number, 1 + 4);  // an idle bit and the string's number: bits 85 to 81
  kStrings[number - 1](bits, numbers);
  Require(bits.Size() == 85 - 8, "string of other than 85 bits");
  bits.Put(HammingBits(bits), 8);
  return LittleEndian(bits.Value(0, 32), 4) + LittleEndian(bits.Value(32, 32), 4) + LittleEndian(bits.Value(64, 32), 4);
}

// --- SBAS ---

// Geostationary satellites by their position in units of 0.08 m.
struct S_SbasState {
  int satellite;
  std::int64_t x;
  std::int64_t y;
};

constexpr S_SbasState kSbasStates[] = {{123, 449386130, 275384175}, {136, 525046906, 45935652}};

}  // namespace

S_Frame BlockFrame(unsigned int id, std::string_view data) {
  const std::size_t most = DataLength(id);
  const std::size_t least = id == kVariableBlock ? kVariableLeast - 10 : most;
  Require(data.size() >= least && data.size() <= most, "length of block " + std::to_string(id));
  const std::string bytes =
      "$BIN" + LittleEndian(id, 2) + LittleEndian(data.size(), 2) + std::string(data) + LittleEndian(ByteSum(data), 2);
  return {eBlock, id, std::to_string(id), bytes, "\r\n", ""};
}

S_Frame MakeGpsBlock(S_Context& context) { return KeplerBlock(95, eGps, context); }

S_Frame MakeQzssBlock(S_Context& context) { return KeplerBlock(25, eQzss, context); }

S_Frame MakeGlonassBlock(S_Context& context) {
  const S_GlonassNumbers numbers = GlonassNumbersOf(SatelliteOfRound(eGlonass, context.round), context.now);
  std::string data = LittleEndian(static_cast<std::uint64_t>(numbers.slot), 1) +
                     LittleEndian(static_cast<std::uint64_t>(numbers.channel + 8), 1) + context.random.Bytes(2 + 4);
  for (int number = 1; number <= 5; ++number) data += GlonassString(number, numbers);
  S_Frame frame = BlockFrame(65, data);
  frame.facts = FactsOf(numbers);
  return frame;
}

// The reference time lies up to a minute ahead: before the week's end it belongs to the next week.
S_Frame MakeSbasBlock(S_Context& context) {
  const S_SbasState& state = kSbasStates[context.round % std::size(kSbasStates)];
  const int ahead = (context.now.gpsSecond / 64 + 1) * 64;
  const std::int64_t week = context.now.gpsWeek + ahead / 604800;
  const std::int64_t issue = context.round % 256;
  const std::int64_t motion[] = {state.x, state.y, -1250, 96, -48, 15, 2, -1, 0};
  const std::int64_t clock[] = {-37, 4};
  std::string data = Little16(state.satellite) + Little16(week) + Little32(context.now.gpsSecond) + Little16(issue) +
                     Little16(3) + Little32(ahead % 604800);
  for (const std::int64_t value : motion) data += Little32(value);
  for (const std::int64_t value : clock) data += Little16(value);
  S_Frame frame = BlockFrame(93, data);
  std::string list;
  for (const std::int64_t value : motion) list += (list.empty() ? "" : ", ") + std::to_string(value);
  frame.facts = "\"satellite\": " + std::to_string(state.satellite) + ", \"week\": " + std::to_string(week) +
                ", \"second\": " + std::to_string(context.now.gpsSecond) + ", \"issue\": " + std::to_string(issue) +
                ", \"accuracy\": 3, \"reference\": " + std::to_string(ahead % 604800) + ", \"motion\": [" + list +
                "], \"clock\": [-37, 4]";
  return frame;
}

S_Frame MakeRawWordsBlock(S_Context& context) {
  const bool first = context.round % 2 == 0;
  const S_Satellite satellite = SatelliteOfRound(first ? eBeidou : eGalileo, context.round / 2);
  std::string data = Little16(satellite.number) + context.random.Bytes(6);
  for (int word = 0; word < 30; ++word) data += LittleEndian(context.random.Next() >> 1, 4);
  return BlockFrame(first ? 35 : 45, data);
}

S_Frame MakePositionBlock(S_Context& context) { return TimedBlock(1, DataLength(1), context); }

S_Frame MakeObservationBlock(S_Context& context) {
  const unsigned int id = kObservationBlocks[context.round % std::size(kObservationBlocks)];
  return TimedBlock(id, DataLength(id), context);
}

// The three rows of the block without a fixed length give its greatest, its least and one other.
S_Frame MakeStatusBlock(S_Context& context) {
  const std::size_t row = context.round % std::size(kStatusBlocks);
  const unsigned int id = kStatusBlocks[row];
  const std::size_t less = id != kVariableBlock ? 0 : row % 3 * (DataLength(id) + 10 - kVariableLeast) / 2;
  return TimedBlock(id, DataLength(id) - less, context);
}
