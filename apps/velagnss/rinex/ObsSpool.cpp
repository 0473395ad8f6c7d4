#include "apps/velagnss/rinex/ObsSpool.h"

#include <cstring>
#include <type_traits>

namespace Host {
namespace {

// What comes before the signals of an epoch, or before the label and the content of a change.
struct S_Head {
  std::uint32_t size;       // bytes that follow
  std::uint32_t labelSize;  // 0 for an epoch
  std::int64_t time;
  std::uint32_t input;
  S_ObsEpoch::eDate date;
};

template <class T>
std::string_view BytesOf(const T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

void ReadEpoch(const S_Head& head, std::string_view bytes, S_ObsEpoch& epoch) {
  epoch.time = head.time;
  epoch.date = head.date;
  epoch.input = head.input;
  epoch.signals.resize(bytes.size() / sizeof(S_ObsSignal));
  std::memcpy(epoch.signals.data(), bytes.data(), bytes.size());
}

}  // namespace

void C_ObsSpool::Add(const S_ObsEpoch& epoch) {
  static_assert(std::is_trivially_copyable_v<S_ObsSignal>);
  const std::size_t size = epoch.signals.size() * sizeof(S_ObsSignal);
  m_bytes.Append(BytesOf(S_Head{static_cast<std::uint32_t>(size), 0, epoch.time, epoch.input, epoch.date}));
  m_bytes.Append({reinterpret_cast<const char*>(epoch.signals.data()), size});
}

void C_ObsSpool::Add(const S_Change& change) {
  const auto labelSize = static_cast<std::uint32_t>(change.label.size());
  m_bytes.Append(BytesOf(S_Head{static_cast<std::uint32_t>(labelSize + change.content.size()), labelSize, 0, 0, {}}));
  m_bytes.Append(change.label);
  m_bytes.Append(change.content);
}

void C_ObsSpool::ForEach(const t_OnEpoch& onEpoch, const t_OnChange& onChange) {
  std::string bytes;  // of items that are not complete yet
  m_bytes.ForEach([&](std::string_view piece) {
    bytes += piece;
    std::string_view rest = bytes;
    S_Head head;
    while (rest.size() >= sizeof head) {
      std::memcpy(&head, rest.data(), sizeof head);
      if (rest.size() < sizeof head + head.size) break;
      const std::string_view body = rest.substr(sizeof head, head.size);
      rest.remove_prefix(sizeof head + head.size);
      if (head.labelSize > 0) {
        onChange({body.substr(0, head.labelSize), body.substr(head.labelSize)});
        continue;
      }
      ReadEpoch(head, body, m_epoch);
      onEpoch(m_epoch);
    }
    bytes.erase(0, bytes.size() - rest.size());
  });
}

}  // namespace Host
