// A reader's connection to a caster: request, answer, and the body of the answer.
#ifndef VELAGNSS_APPS_NTRIP_CLIENT_H
#define VELAGNSS_APPS_NTRIP_CLIENT_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/net/ntrip/Answer.h"
#include "apps/velagnss/net/ntrip/ChunkDecoder.h"
#include "apps/velagnss/net/ntrip/HttpHead.h"
#include "apps/velagnss/net/ntrip/NtripAddress.h"

namespace Host {

// From the beginning of a connection to the end of the answer's head: a caster that sends a byte now and then does not
// get more.
inline constexpr std::chrono::seconds kAnswerTime{15};

// Sends `head` over a connected transport and reads the answer's head.
S_NtripAnswer AskCaster(C_Transport& transport, std::string_view head, C_HeadParser& parser, C_Await::t_Time deadline);

class C_NtripClient {
 public:
  explicit C_NtripClient(C_Await& await) : m_await(await) {}

  // Asks for the mount that the path of `address` is, or for the source table. User and password have been filled in.
  // Follows what is moved, at most 3 times. `gga`: as ReaderHead (Request.h).
  S_NtripAnswer Get(const S_Address& address, unsigned int version, std::string_view gga);

  const S_HttpHead& Head() const { return m_parser.Head(); }

  // The body without its transfer coding.
  C_Transport::S_Read Read(C_Await::t_Time deadline);

  // Appends the body to `text` until that has `limit` bytes, to the body's end, to the deadline, or until `isEnough`.
  void ReadText(std::string& text, std::size_t limit, C_Await::t_Time deadline,
                const std::function<bool(std::string_view)>& isEnough);

  void Send(std::string_view bytes) {
    if (m_transport) m_transport->Send(bytes);
  }
  void Close() { m_transport.reset(); }

  // Whether what came was not in chunks although the head said so.
  bool HasBadChunks() const { return m_chunks.HasFailed(); }

 private:
  S_NtripAnswer GetOnce(const S_Address& address, unsigned int version, std::string_view gga);
  C_Transport::S_Read Decode(std::span<const unsigned char> bytes);

  C_Await& m_await;
  std::unique_ptr<C_Transport> m_transport;
  C_HeadParser m_parser;
  C_ChunkDecoder m_chunks;
  bool m_hasRest = false;             // of the body, with the head
  std::vector<unsigned char> m_data;  // of the last read
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_CLIENT_H
