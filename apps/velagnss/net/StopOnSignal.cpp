#include "apps/velagnss/net/StopOnSignal.h"

#include <fcntl.h>

#include <asio/posix/stream_descriptor.hpp>
#include <memory>

#include "apps/velagnss/os/Signals.h"

namespace Host {

void StopOnSignal(C_Await& await) {
  const int descriptor = ::fcntl(SignalDescriptor(), F_DUPFD_CLOEXEC, 0);  // asio closes its own
  if (descriptor < 0) return;
  const auto signal = std::make_shared<asio::posix::stream_descriptor>(await.Context(), descriptor);
  signal->async_wait(asio::posix::stream_descriptor::wait_read, [&await, signal](const asio::error_code& error) {
    if (!error) await.Stop();
  });
}

}  // namespace Host
