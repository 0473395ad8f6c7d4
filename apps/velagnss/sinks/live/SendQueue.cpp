#include "apps/velagnss/sinks/live/SendQueue.h"

#include <utility>

namespace Host {

bool C_SendQueue::Add(t_Piece piece, t_Clock::time_point now) {
  SetBytes(m_bytes + piece->bytes.size());
  m_counters->waiting += piece->ends.size();
  m_pieces.push_back({std::move(piece), now});
  if (m_limits.policy == ePolicy::Wait) return true;
  if (m_limits.policy == ePolicy::Close) return !IsOverLimits(now);
  while (m_pieces.size() > 1 && IsOverLimits(now)) DropOldest();
  return true;
}

t_Piece C_SendQueue::Take(t_Clock::time_point now) {
  while (m_limits.policy == ePolicy::Drop && !m_pieces.empty() && IsTooOld(now)) DropOldest();
  return m_pieces.empty() ? nullptr : PopOldest();
}

void C_SendQueue::PutBack(const t_Piece& piece, std::size_t unitsSent, t_Clock::time_point now) {
  auto rest = std::make_shared<S_Piece>();
  for (std::size_t i = unitsSent; i < piece->ends.size(); ++i) {
    rest->bytes += piece->Unit(i);
    rest->EndUnit();
  }
  if (rest->ends.empty()) return;
  SetBytes(m_bytes + rest->bytes.size());
  m_counters->waiting += rest->ends.size();
  m_pieces.push_front({std::move(rest), now});
}

void C_SendQueue::Clear() {
  while (!m_pieces.empty()) DropOldest();
}

bool C_SendQueue::IsOverLimits(t_Clock::time_point now) const { return m_bytes > m_limits.bytes || IsTooOld(now); }

bool C_SendQueue::IsTooOld(t_Clock::time_point now) const { return now - m_pieces.front().since > m_limits.age; }

t_Piece C_SendQueue::PopOldest() {
  t_Piece piece = std::move(m_pieces.front().piece);
  m_pieces.pop_front();
  SetBytes(m_bytes - piece->bytes.size());
  m_counters->waiting -= piece->ends.size();
  return piece;
}

void C_SendQueue::SetBytes(std::size_t bytes) {
  const bool wasFull = m_bytes > m_limits.bytes;
  const bool isFull = bytes > m_limits.bytes;
  m_bytes = bytes;
  if (isFull && !wasFull) ++m_counters->full;
  if (wasFull && !isFull) --m_counters->full;
}

}  // namespace Host
