// The recognizer and the literal second one get the same use, as the input's bytes choose it: pieces of streams
// (starts, frames good and damaged, any bytes), calls with and without data, and everything a host may do between two
// calls. After every step result, message, counters and free space agree.
#include "fuzz/Fuzz.h"
#include "tests/RecognizerTwins.h"

using namespace RecognizerTwins;

namespace {

constexpr std::size_t kLongestStream = 1 << 16;
constexpr unsigned kLongestPump = 100000;

// The bytes on their way to the port.
class C_Port {
 public:
  void Add(const std::string& bytes) {
    if (m_bytes.size() + bytes.size() <= kLongestStream) m_bytes += bytes;
  }
  std::string_view Next(std::size_t count) {
    const std::string_view next = std::string_view(m_bytes).substr(m_at, count);
    m_at += next.size();
    return next;
  }

 private:
  std::string m_bytes;
  std::size_t m_at = 0;
};

void Operate(Fuzz::C_Input& input, Random& random, C_Port& port, Twins& twins) {
  const unsigned operation = random.Below(8);
  if (operation < 2) port.Add(random.Piece());
  if (operation == 2) port.Add(input.Take(random.Below(100)));
  if (operation == 3) twins.Step(port.Next(twins.GetFreeSpace() + random.Below(4)));  // up to the brim and over
  if (operation == 4 || operation == 5) twins.Step(port.Next(1 + random.Below(operation == 4 ? 16 : 2000)));
  if (operation == 6) twins.Pump(random.OneIn(3) ? random.Below(4) : kLongestPump);
  if (operation == 7) Meddle(random, twins);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::C_Input input(data, size);
  Random random([&input](std::size_t limit) { return input.Below(limit); });
  const std::vector<eProtocols> list = random.List();
  const eProtocols* const named = random.OneIn(2) ? nullptr : list.data();
  const unsigned policy = random.OneIn(9) ? 7 : random.Below(3);
  const bool keepsStatistics = !random.OneIn(5);
  Twins twins(named, policy, keepsStatistics, random.OneIn(5) ? random.Below(40) : 2048);
  if (random.OneIn(2)) twins.Both([](auto& one) { one.SetAcceptUnlisted(true); });
  C_Port port;
  while (!input.IsEmpty()) {
    Operate(input, random, port, twins);
    Fuzz::Require(twins.Agree(), "both recognizers agree");
  }
  twins.Feed(port.Next(kLongestStream), 1 + random.Below(600));
  Fuzz::Require(twins.Agree(), "both recognizers agree to the end");
  return 0;
}
