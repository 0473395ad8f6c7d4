#include "apps/velagnss/monitor/MessageRates.h"

#include "stream/Names.h"

namespace Host {

void C_MessageRates::Take(const S_FrameRecord& record, double now) {
  const std::size_t rows = m_rows.All().size();
  S_Row* const row = m_rows.Of(record.frame);
  row == nullptr ? static_cast<void>(++m_leftOut) : Take(*row, record, now);
  if (m_rows.All().size() > rows) m_rows.Sort();
}

void C_MessageRates::Take(S_Row& row, const S_FrameRecord& record, double now) {
  ++row.count;
  row.bytes += record.frame.length;
  if (record.decoded.hasDataError) ++row.faults;
  row.rate.Add(now);
  if (now > row.lastAt) row.step = now - row.lastAt;
  row.lastAt = now;
}

// A message that comes once in a while is stale when it has missed two of its turns.
S_MessageView C_MessageRates::ViewOf(const S_Row& row, const S_AgeClock& clock) {
  constexpr double kTurns = 3;
  S_MessageView view;
  view.protocol = velagnss::ProtocolName(row.key.protocol);
  view.name = row.name;
  view.count = row.count;
  view.bytes = row.bytes;
  view.faults = row.faults;
  view.rate = row.rate.PerSecond(clock.now);
  view.age = clock.AgeOf(row.lastAt);
  view.isStale = clock.IsStale(row.lastAt) && view.age > kTurns * row.step;
  return view;
}

void C_MessageRates::Show(S_SourceView& view, const S_AgeClock& clock) const {
  for (const S_Row& row : m_rows.All()) view.messages.push_back(ViewOf(row, clock));
  view.messagesLeftOut = m_leftOut;
}

}  // namespace Host
