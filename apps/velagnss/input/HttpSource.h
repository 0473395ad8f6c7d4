// Bytes of a file on a web server. A transfer that breaks off is continued where it was.
#ifndef VELAGNSS_APPS_HTTP_SOURCE_H
#define VELAGNSS_APPS_HTTP_SOURCE_H

#include <memory>
#include <string>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/input/live/LiveSource.h"
#include "apps/velagnss/input/live/RetryPauses.h"
#include "apps/velagnss/net/http/HttpTransfer.h"

namespace Host {

// The file must stay as it is while it is read: what the server says about it is compared after each break. `Read`
// waits itself, and returns with a signal.
class C_HttpSource : public C_ByteSource {
 public:
  // False, reported, when `name`, which has been checked, cannot be asked for. Connects with the first `Read`. Of the
  // options, those about time-outs, pauses, tries and accounts count.
  bool Open(const std::string& name, const S_LiveOptions& options);

  const std::string& Name() const override { return m_name; }
  int Descriptor() const override { return -1; }
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override;
  std::uint64_t Size() const override { return m_file.size.value_or(0); }
  std::uint64_t Consumed() const override { return m_offset; }
  std::string Identity() const override;

 private:
  bool IsContinued();
  eRead Take(std::span<const unsigned char> bytes, S_Chunk& chunk);
  eRead TryAgain(const C_HttpTransfer::S_Read& broken);
  eRead Fail(std::string_view why) const;

  std::string m_name;
  S_HttpAddress m_address;
  std::chrono::milliseconds m_idleTimeout{};
  unsigned int m_maxTries = 0;
  std::unique_ptr<C_RetryPauses> m_pauses;
  std::unique_ptr<C_HttpTransfer> m_transfer;
  bool m_hasAnswer = false;     // of the transfer
  std::uint64_t m_offset = 0;   // of the first byte that has not been given out
  std::uint64_t m_skipped = 0;  // bytes of this transfer that were given out before
  S_HttpFile m_file;            // by the first answer
  unsigned int m_failures = 0;  // in a row
};

}  // namespace Host

#endif  // VELAGNSS_APPS_HTTP_SOURCE_H
