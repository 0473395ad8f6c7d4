#include "apps/velagnss/monitor/MessageRates.h"

#include <algorithm>
#include <tuple>

#include "stream/Names.h"

namespace Host {
namespace {

constexpr std::size_t kMaxRows = 256;

}  // namespace

void C_MessageRates::Take(const S_FrameRecord& record, double now) {
  S_Row* const row = RowOf(record.frame);
  if (row == nullptr) {
    ++m_leftOut;
    return;
  }
  ++row->count;
  row->bytes += record.frame.length;
  if (record.decoded.hasDataError) ++row->faults;
  row->rate.Add(now);
  if (now > row->lastAt) row->step = now - row->lastAt;
  row->lastAt = now;
}

C_MessageRates::S_Row* C_MessageRates::RowOf(const velagnss::Frame& frame) {
  const std::string_view unlisted = velagnss::UnlistedName(frame);
  const velagnss::MessageName listed(frame.protocol, frame.message);
  const std::string_view name = unlisted.empty() ? listed.Text() : unlisted;
  const auto key = std::make_tuple(frame.protocol, frame.message, name);
  const auto at = std::lower_bound(m_rows.begin(), m_rows.end(), key, [](const S_Row& row, const auto& wanted) {
    return std::make_tuple(row.protocol, row.message, std::string_view(row.name)) < wanted;
  });
  if (at != m_rows.end() && at->protocol == frame.protocol && at->message == frame.message && at->name == name)
    return &*at;
  // A sentence that is not listed because of its form may have the name of one that is.
  const auto same = std::find_if(m_rows.begin(), m_rows.end(), [&](const S_Row& row) {
    return row.protocol == frame.protocol && row.name == name && !name.empty();
  });
  if (same != m_rows.end()) return &*same;
  if (m_rows.size() >= kMaxRows) return nullptr;
  return &*m_rows.insert(at, {frame.protocol, frame.message, std::string(name)});
}

// A message that comes once in a while is stale when it has missed two of its turns.
S_MessageView C_MessageRates::ViewOf(const S_Row& row, const S_AgeClock& clock) {
  constexpr double kTurns = 3;
  S_MessageView view;
  view.protocol = velagnss::ProtocolName(row.protocol);
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
  for (const S_Row& row : m_rows) view.messages.push_back(ViewOf(row, clock));
  view.messagesLeftOut = m_leftOut;
}

}  // namespace Host
