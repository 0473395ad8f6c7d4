#include "apps/velagnss/sinks/live/Readers.h"

#include <utility>

#include "apps/velagnss/sinks/live/Connection.h"

namespace Host {

C_Admission::t_Pass C_Admission::Admit(const std::string& address) {
  S_State& state = *m_state;
  if (state.all >= m_limits.all) return nullptr;
  if (!address.empty() && state.byAddress[address] >= m_limits.perAddress) return nullptr;
  ++state.all;
  if (!address.empty()) ++state.byAddress[address];
  return t_Pass(this, [shared = m_state, address](void*) {
    --shared->all;
    if (!address.empty() && --shared->byAddress[address] == 0) shared->byAddress.erase(address);
  });
}

void C_Readers::Add(S_Newcomer newcomer) {
  const std::uint64_t number = m_counters->accepted++;
  ++m_counters->readers;
  auto connection = std::make_shared<C_Connection>(m_context, std::move(newcomer.socket), m_limits, m_counters,
                                                   std::make_shared<C_SendQueue>(m_limits, m_counters));
  if (newcomer.usesChunks) connection->UseChunks();
  m_readers[number] = {connection, std::move(newcomer.name), std::move(newcomer.pass)};
  connection->Begin(std::move(newcomer.head), [this, number](const std::string& why) { OnEnd(number, why); });
}

void C_Readers::Dismiss(S_Newcomer newcomer) {
  const std::uint64_t number = m_counters->accepted;
  Add(std::move(newcomer));
  m_readers.at(number).outlet->Finish();
}

void C_Readers::OnEnd(std::uint64_t number, const std::string& why) {
  const auto reader = m_readers.extract(number);
  --m_counters->readers;
  m_onLeave(reader.mapped().name, why);
}

void C_Readers::Put(const t_Piece& piece) {
  for (const auto& [number, reader] : m_readers) reader.outlet->Put(piece);
}

void C_Readers::CheckProgress(t_Clock::time_point now) {
  for (const auto& [number, reader] : m_readers) reader.outlet->CheckProgress(now);
}

void C_Readers::Finish() {
  for (const auto& [number, reader] : m_readers) reader.outlet->Finish();
}

}  // namespace Host
