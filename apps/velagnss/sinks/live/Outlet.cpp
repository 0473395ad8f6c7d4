#include "apps/velagnss/sinks/live/Outlet.h"

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <utility>

namespace Host {

C_Outlet::C_Outlet(asio::io_context& context, C_FileDescriptor descriptor, t_SinkCounters counters,
                   std::shared_ptr<C_SendQueue> queue)
    : m_descriptor(context, descriptor.Release()), m_counters(std::move(counters)), m_queue(std::move(queue)) {}

void C_Outlet::Put(const t_Piece& piece) {
  if (m_hasEnded || m_isFinishing) return;
  if (!m_queue->Add(piece, t_Clock::now())) return End("does not keep up");
  Send();
}

void C_Outlet::Finish() {
  m_isFinishing = true;
  Send();
}

void C_Outlet::Close() {
  m_onEnd = nullptr;
  End({});
}

void C_Outlet::End(const std::string& why) {
  if (m_hasEnded) return;
  m_hasEnded = true;
  BeforeEnd();
  asio::error_code ignored;
  m_descriptor.close(ignored);
  if (m_onEnd) asio::post(m_descriptor.get_executor(), [onEnd = std::exchange(m_onEnd, nullptr), why] { onEnd(why); });
}

}  // namespace Host
